#include "Support.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <sys/wait.h>
#include <unistd.h>

namespace expgen {
namespace {

/// A release under any name but that of a real one.
Target target() {
    return {readRelease("release.txt", "name TOY\nmodule VnToy\npackage toy\ntitle Toy\nversion kIfc4 kZero\n"),
            "schemas/toy"};
}

Files emitText(std::string_view body, std::string_view order = "") {
    return emit(test::resolveText(body, order), target());
}

bool contains(const std::string& text, std::string_view part) { return text.find(part) != std::string::npos; }

TEST(Emit, GivesTheSameBytesForTheSameInput) {
    const Files first = emit(test::resolveProjectSchema(), target());
    EXPECT_EQ(first, emit(test::resolveProjectSchema(), target()));
    EXPECT_EQ(first.size(), 880u + 242u + 66u + 5u + 21u);
    for (const auto& [name, text] : first)
        EXPECT_TRUE(text.starts_with("// Made by expgen from schemas/toy")) << name;
}

// The set of files must not depend on how many entities and selects there are: the build names them beforehand.
TEST(Emit, MakesAllUnitsOfASmallSchema) {
    const Files files = emitText("ENTITY A; END_ENTITY;");
    EXPECT_TRUE(files.contains("src/Entities_15.cpp"));
    EXPECT_TRUE(files.contains("src/Selects_1.cpp"));
}

TEST(Emit, HoldsEachKindInItsMember) {
    const Files files = emitText(R"(
TYPE Id = STRING(22) FIXED; END_TYPE;
TYPE Colour = ENUMERATION OF (red); END_TYPE;
TYPE Angles = LIST [3:4] OF INTEGER; END_TYPE;
TYPE Any = SELECT (E, Id); END_TYPE;
ENTITY E; id : Id; text : STRING; raw : BINARY; number : NUMBER; count : INTEGER; yes : BOOLEAN; maybe : LOGICAL;
  colour : Colour; any : Any; ref : Other; angles : Angles; all : SET OF Other; some : SET [1:?] OF Any;
  row : ARRAY [1:2] OF REAL; list : LIST OF STRING; table : LIST [1:?] OF LIST [3:3] OF REAL;
INVERSE one : SET [0:1] OF Other FOR back; many : SET [1:?] OF Other FOR back; END_ENTITY;
ENTITY Other; back : E; END_ENTITY;)",
                                 "Id\nAny\nAngles");
    const std::string& header = files.at("include/TOY/E.h");
    const char* const members[] = {
        "VN_SDAI::VnIfcGUID m_id;",
        "VN_SDAI::VnAnsiString m_text{VN_SDAI::VnUnsetText};",
        "VN_SDAI::VnAnsiString m_raw{VN_SDAI::VnUnsetText};",
        "double m_number = VN_SDAI::Consts::VnRealUnset;",
        "int m_count = VN_SDAI::Consts::VnIntUnset;",
        "VN_SDAI::VnIfcBoolean m_yes;",
        "VN_SDAI::VnIfcLogical m_maybe;",
        "Colour m_colour;",
        "Any m_any;",
        "VN_SDAI::VnDbObjectId m_ref;",
        "VN_SDAI::VnIfcListAggrBounded<int, 3, 4> m_angles;",
        "VN_SDAI::VnIfcSetAggr<VN_SDAI::VnDbObjectId> m_all;",
        "VN_SDAI::VnIfcSetAggrBounded<Any, 1, 65536> m_some;",
        "VN_SDAI::VnIfcListAggrBounded<double, 1, 2> m_row;",
        "VN_SDAI::VnIfcListAggr<VN_SDAI::VnAnsiString> m_list;",
        "VN_SDAI::VnIfcListAggrCompound<VN_SDAI::VnIfcListAggr<double>> m_table;",
        "VN_SDAI::VnDbObjectId m_one;",
        "VN_SDAI::VnIfcSetAggr<VN_SDAI::VnDbObjectId> m_many;",
    };
    std::size_t position = 0; // members stand in the order of the declaration
    for (const char* member : members) {
        const std::size_t found = header.find(std::string("    ") + member + "\n", position);
        ASSERT_NE(found, std::string::npos) << member;
        position = found;
    }
    EXPECT_TRUE(contains(header, "#include <TOY/Any.h>\n#include <TOY/Colour.h>\n"));
    EXPECT_TRUE(contains(header, "class Other;"));
    EXPECT_FALSE(contains(header, "#include <TOY/Other.h>"));
    EXPECT_TRUE(contains(header, "void settable(const VN_SDAI::VnIfcArray<VN_SDAI::VnIfcArray<double>>& value)"));

    const std::string& source = files.at("src/Entities_00.cpp");
    EXPECT_TRUE(contains(source, R"(binaryRow("raw", "BINARY", offsetof(E, m_raw), kMandatory))"));
    EXPECT_TRUE(contains(source, R"("many", "other", "back", 1, kUnbounded, offsetof(E, m_many)))"));
}

TEST(Emit, KeepsDerivedPositionsAndCountsInheritedOnes) {
    const Files files = emitText(R"(
ENTITY Base; a : REAL; b : OPTIONAL REAL; END_ENTITY;
ENTITY Middle SUBTYPE OF (Base); END_ENTITY;
ENTITY Leaf SUBTYPE OF (Middle); c : REAL; DERIVE dim : INTEGER := 3; SELF\Base.b : REAL := 1; END_ENTITY;)");
    EXPECT_TRUE(contains(files.at("include/TOY/Leaf.h"), "touched(2);"));
    EXPECT_FALSE(contains(files.at("include/TOY/Middle.h"), "s_fields"));

    const std::string& middle = files.at("src/Entities_01.cpp");
    EXPECT_TRUE(contains(middle, ".fields = Base::s_fields,"));
    EXPECT_TRUE(contains(middle, ".properties = &collectNothing,"));

    const std::string& leaf = files.at("src/Entities_02.cpp");
    EXPECT_TRUE(contains(leaf, "    &Base::s_rows[0],\n    &Leaf::s_derived[1].field,\n    &Leaf::s_rows[0],\n"));
    EXPECT_TRUE(contains(leaf, R"(redeclaredRow("base_b", "REAL", "b"))"));
    EXPECT_TRUE(contains(leaf, ".properties = &collectProperties<LeafcProperty, LeafbProperty>,"));
    EXPECT_TRUE(contains(leaf, "    &Leaf::g_pEntityType,\n    &Base::g_pEntityType,\n    &Middle::g_pEntityType,\n"));
}

TEST(Output, LeavesUnchangedFilesAlone) {
    const std::filesystem::path directory =
        std::filesystem::temp_directory_path() / ("expgen_output_" + std::to_string(::getpid()));
    std::filesystem::remove_all(directory);
    EXPECT_EQ(writeChanged({{"a/one.h", "1"}, {"two.h", "2"}}, directory), 2u);
    EXPECT_EQ(writeChanged({{"a/one.h", "1"}, {"two.h", "3"}}, directory), 1u);
    EXPECT_EQ(readFile(directory / "two.h"), "3");
    EXPECT_THROW(writeChanged({{"two.h/inside.h", ""}}, directory), std::system_error);
    EXPECT_THROW(readFile(directory / "none.h"), std::system_error);
    std::filesystem::remove_all(directory);
}

#if defined(VNIFC_EXPGEN)
TEST(Program, TellsWrongUseWrongTotalsAndAFullDisk) {
    namespace fs = std::filesystem;
    const fs::path directory = fs::temp_directory_path() / ("expgen_program_" + std::to_string(::getpid()));
    fs::create_directories(directory / "wrong");
    fs::copy_file(VNIFC_TOY "/declarations.exp", directory / "wrong" / "declarations.exp");
    std::ofstream(directory / "wrong" / "release.txt")
        << readFile(VNIFC_TOY "/release.txt") << "total inverse attributes 4\n"
        << "total selects 1\ntotal gnomes 1\n";
    const std::string toy = VNIFC_TOY, wrong = (directory / "wrong").string(), out = (directory / "out").string();
    const struct {
        std::string arguments;
        int exitCode;
        std::string said;
    } cases[] = {
        {"", 2, "usage: expgen classes"},
        {"bake " + toy, 2, "expected classes, list, totals or catalogue"},
        {"list", 2, "usage: "},
        {"classes " + toy, 2, "usage: "},
        {"list " + directory.string(), 1, "release.txt"},
        {"list " + wrong, 1, "inverse attributes: expected 4, found 3\n"},
        {"list " + wrong, 1, "selects: expected 1, found "},
        {"list " + wrong, 1, "\"gnomes\" is nothing that is counted"},
        {"classes " + wrong + ' ' + out, 1, "inverse attributes"},
        {"list " + toy + " > /dev/full", 1, ""},
        {"totals " + toy + " > /dev/full", 1, ""},
        {"totals " + wrong, 0, "total inverse attributes 3\n"},
        {"list " + toy, 0, "include/TOY/ToyPlant.h\n"},
        {"catalogue " + out + "/c.h " + toy, 0, ""},
        {"classes " + toy + ' ' + (directory / "wrong" / "release.txt").string(), 1, "expgen: "},
    };
    for (const auto& each : cases) {
        const fs::path said = directory / "said";
        const bool isRedirected = each.arguments.find('>') != each.arguments.npos;
        const std::string command = VNIFC_EXPGEN " " + each.arguments + (isRedirected ? " 2> " : " > ") +
                                    said.string() + (isRedirected ? "" : " 2>&1");
        const int status = std::system(command.c_str());
        EXPECT_EQ(WEXITSTATUS(status), each.exitCode) << each.arguments;
        EXPECT_TRUE(contains(readFile(said), each.said)) << each.arguments << '\n' << readFile(said);
    }
    EXPECT_TRUE(contains(readFile(directory / "out" / "c.h"), "\"TOY\""));
    EXPECT_FALSE(fs::exists(directory / "out" / "include")) << "nothing is written when totals are wrong";
    fs::remove_all(directory);
}
#endif

} // namespace
} // namespace expgen
