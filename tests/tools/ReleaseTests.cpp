// Each file in its own release: what is shown, what is edited, and what is said where a release is missing.
#include "Process.h"
#include "support/Declarations.h"
#include "support/Releases.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace vnifc::test {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::IsSubstring;

constexpr std::string_view kOldInstances =
    "#1=IFCWALL('0YvctVUKr0kugbFTf53O9L',$,'Wall',$,'type',$,$,'tag');\n"
    "#2=IFCTASK('0YvctVUKr0kugbFTf53O9Q',$,'Task',$,$,'T1','(done, nearly)','by hand',.F.,7);\n";
constexpr std::string_view kNewInstances = "#1=IFCALIGNMENT('0YvctVUKr0kugbFTf53O9L',$,'A',$,$,$,$,.NOTDEFINED.);\n";

TEST(FileOfItsRelease, IsShownByItsOwnAttributes) {
    if (!isBuilt("IFC2X3"))
        GTEST_SKIP() << "this build lacks IFC2X3";
    const std::string file = makeModel("task.ifc", kOldInstances, "IFC2X3");
    const json task = json::parse(runTool({"show", "--json", file, "2"}).out)["attributes"];
    EXPECT_EQ(task["TaskId"], "T1");
    EXPECT_EQ(task["Status"], "(done, nearly)");
    EXPECT_EQ(task["WorkMethod"], "by hand");
    EXPECT_EQ(task["IsMilestone"], false);
    EXPECT_EQ(task["Priority"], 7);
    EXPECT_FALSE(task.contains("LongDescription"));
}

/// A change to a file and what is to come of it.
struct Edit {
    std::string file;
    const char* change;
    const char* release; ///< that is insisted on; empty for the file's own
    const char* line;    ///< of the result; null when the change is refused
    const char* message;
};

void expectEdit(const Edit& edit) {
    SCOPED_TRACE(std::string(edit.change) + " of " + edit.file + " as " + edit.release);
    const fs::path target = scratch() / "edited.ifc";
    fs::remove(target);
    std::vector<std::string> arguments{"edit", "--quiet", edit.file, target.string(), "--set", edit.change};
    if (*edit.release)
        arguments.insert(arguments.end(), {"--schema", edit.release});
    const Outcome outcome = runTool(arguments);
    EXPECT_EQ(outcome.exitCode, edit.line ? 0 : 2) << outcome.err;
    EXPECT_EQ(fs::exists(target), edit.line != nullptr);
    if (edit.line) {
        EXPECT_PRED_FORMAT2(IsSubstring, std::string("\n") + edit.line + '\n', contents(target));
    } else
        EXPECT_PRED_FORMAT2(IsSubstring, edit.message, outcome.err);
}

TEST(FileOfItsRelease, GetsNoParametersThatItsReleaseLacks) {
    const std::string old = makeModel("wall.ifc", kOldInstances, "IFC2X3");
    const std::string fresh = makeModel("alignment.ifc", kNewInstances);
    const std::string draft = makeModel("draft.ifc", kNewInstances, "IFC4X1");
    const std::string nameless = makeModel("nameless.ifc", kOldInstances, "AP214");
    const char* const beyond = "the file is of another release, whose instances have no such parameter";
    const Edit cases[] = {
        {old, "#1.PredefinedType=SOLIDWALL", "", nullptr, "IFCWALL has no attribute \"PredefinedType\""},
        {old, "#1.PredefinedType=SOLIDWALL", "IFC4X3_ADD2", nullptr, beyond},
        {old, "#1.PredefinedType=$", "IFC4", nullptr, beyond},
        {old, "#1.Name=N", "IFC4X3_ADD2", "#1=IFCWALL('0YvctVUKr0kugbFTf53O9L',$,'N',$,'type',$,$,'tag');", ""},
        {old, "#2.Status=done", "", "#2=IFCTASK('0YvctVUKr0kugbFTf53O9Q',$,'Task',$,$,'T1','done','by hand',.F.,7);",
         ""},
        {fresh, "#1.PredefinedType=USERDEFINED", "",
         "#1=IFCALIGNMENT('0YvctVUKr0kugbFTf53O9L',$,'A',$,$,$,$,.USERDEFINED.);", ""},
        {fresh, "#1.PredefinedType=USERDEFINED", "IFC4X3", nullptr, beyond},
        {draft, "#1.PredefinedType=USERDEFINED", "", nullptr, beyond},
        {nameless, "#1.PredefinedType=SOLIDWALL", "",
         "#1=IFCWALL('0YvctVUKr0kugbFTf53O9L',$,'Wall',$,'type',$,$,'tag',.SOLIDWALL.);", ""},
    };
    for (const Edit& each : cases) {
        const std::string own = each.file == old ? "IFC2X3" : each.file == draft ? "IFC4X3" : "IFC4X3_ADD2";
        if (isBuilt(*each.release ? each.release : own))
            expectEdit(each);
    }
    const std::string unset = (scratch() / "unset.ifc").string();
    if (isBuilt("IFC4")) {
        EXPECT_EQ(runTool({"edit", "--quiet", "--schema", "IFC4", old, unset, "--unset", "#1.PredefinedType"}).exitCode,
                  2);
    }
}

/// Every message that offers literals offers those that are taken.
class OfferedLiterals : public testing::TestWithParam<std::string> {};

TEST_P(OfferedLiterals, AreTaken) {
    const declared::Schema& release = declared::schemaNamed(GetParam());
    std::string instances, expected;
    std::vector<std::string> arguments{"edit", "--quiet", "--schema", GetParam(), "", "-"};
    std::set<std::string> done;
    std::vector<std::string> changes;
    std::size_t number = 0;
    for (const declared::Entity& entity : release.entities()) {
        const std::vector<declared::Parameter> parameters = release.parameters(entity);
        for (std::size_t i = 0; i < parameters.size() && !entity.isAbstract; ++i) {
            const declared::Named* type = release.type(parameters[i].attribute->type.name);
            const bool isEnumeration = type && type->kind == declared::Named::kEnumeration &&
                                       parameters[i].attribute->type.layers.empty() && !parameters[i].isDerived;
            if (!isEnumeration || !done.insert(type->name).second)
                continue;
            const std::string id = '#' + std::to_string(++number);
            instances += id + '=' + declared::upper(entity.name) + '(';
            for (std::size_t j = 0; j < parameters.size(); ++j)
                instances += std::string(j > 0 ? "," : "") + (parameters[j].isDerived ? "*" : "$");
            instances += ");\n";
            const std::string place = id + '.' + parameters[i].attribute->name;
            arguments.insert(arguments.end(), {"--set", place + "=NO_SUCH_LITERAL"});
            expected += "vnifc: " + id + ' ' + declared::upper(entity.name) + '.' + parameters[i].attribute->name +
                        ": expected one of ";
            for (const std::string& literal : type->items) {
                expected += (&literal == &type->items[0] ? "" : ", ") + declared::upper(literal);
                if (changes.size() < number)
                    changes.push_back(place + '=' + declared::upper(type->items.back()));
            }
            expected += ", found NO_SUCH_LITERAL\n";
        }
    }
    arguments[4] = makeModel("literals.ifc", instances, GetParam());
    const Outcome refused = runTool(arguments);
    EXPECT_GT(number, 100u);
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.err.substr(0, expected.size()), expected);
    arguments.resize(6);
    for (const std::string& change : changes)
        arguments.insert(arguments.end(), {"--set", change});
    EXPECT_EQ(runTool(arguments).exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(Releases, OfferedLiterals, testing::ValuesIn(builtReleases()), nameOfRelease);

/// The tool and the core beside it, but only the module of one release.
fs::path installedWithOnly(const std::string& module) {
    const fs::path tool = VNIFC_TOOL;
    const fs::path prefix = scratch() / "installed";
    fs::create_directories(prefix / "bin");
    fs::create_directories(prefix / "lib");
    fs::copy_file(tool, prefix / "bin" / tool.filename());
    for (const auto& entry : fs::directory_iterator(tool.parent_path().parent_path() / "lib")) {
        const std::string name = entry.path().filename().string();
        const bool isModule = name.starts_with("libVnIfc") && !name.starts_with("libVnIfcCore");
        if (entry.is_regular_file() && (!isModule || name == "lib" + module + ".so"))
            fs::copy_file(entry.path(), prefix / "lib" / name);
    }
    return prefix / "bin" / tool.filename();
}

TEST(ReleaseThatIsNotInstalled, IsSaidWithItsPackage) {
    const fs::path tool = installedWithOnly("VnIfc4x3Add2");
    const Outcome version = run(tool, {"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_PRED_FORMAT2(IsSubstring, "\nIFC2X3       not installed (package vnifc-ifc2x3)", version.out);
    EXPECT_PRED_FORMAT2(IsSubstring, "\nIFC4         not installed (package vnifc-ifc4)", version.out);
    EXPECT_PRED_FORMAT2(IsSubstring, "\nIFC4X3_ADD2  version 4.3", version.out);

    const std::string old = makeModel("old.ifc", kOldInstances, "IFC2X3");
    const std::vector<std::string> cases[] = {
        {"info", old}, {"rewrite", old, (scratch() / "x.ifc").string()}, {"schema", "--schema", "ifc2x3"}};
    for (const std::vector<std::string>& arguments : cases) {
        const Outcome outcome = run(tool, arguments);
        EXPECT_EQ(outcome.exitCode, 3) << outcome.err;
        EXPECT_PRED_FORMAT2(IsSubstring, "the classes of IFC2X3 are not installed (package vnifc-ifc2x3)", outcome.err);
    }
    EXPECT_FALSE(fs::exists(scratch() / "x.ifc"));
    EXPECT_EQ(run(tool, {"info", "--quiet", "--schema", "IFC4X3_ADD2", old}).exitCode, 0);
    EXPECT_EQ(run(tool, {"info", makeModel("new.ifc", kNewInstances)}).exitCode, 0);
}

} // namespace

} // namespace vnifc::test
