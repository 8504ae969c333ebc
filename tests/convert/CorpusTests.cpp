// Files of other programs, where they are there: nothing is wrong with the result that was not wrong before, and who
// uses only what two releases share gets the same file back.
#include "Support.h"
#include "support/Corpus.h"

#include <VnIfcCore/VnIfcGUID.h>

#include <fstream>
#include <sstream>

using namespace convert_tests;
using namespace vnifc::test;

namespace {

std::set<std::string> globalIds(const VN_SDAI::VnIfcModel& model) {
    std::set<std::string> all;
    model.forEach([&](VN_SDAI::VnIfcEntityBase& each) {
        if (const VN_SDAI::VnIfcGUID* id = each.globalId())
            all.emplace(id->view());
    });
    return all;
}

/// The instances as text, without the header.
std::string dataOf(const std::string& file) { return file.substr(file.find("\nDATA;")); }

} // namespace

TEST(Corpus, ResultHasNoFaultThatTheFileDoesNotHave) {
    const std::vector<std::filesystem::path> files = readableCorpusFiles();
    if (files.empty())
        GTEST_SKIP() << "the files are not there";
    for (const std::filesystem::path& path : files)
        for (const std::string& to : builtReleases()) {
            SCOPED_TRACE(path.filename().string() + " to " + to);
            const Converted converted(contents(path), {}, to);
            EXPECT_EQ(added(converted.before, converted.after), "");
            const vnifc::ConvertResult& result = converted.result;
            EXPECT_EQ(result.carried + result.changed + result.reduced + result.lost, converted.source.model().count());
        }
}

TEST(Corpus, UpwardsKeepsEveryObject) {
    const std::vector<std::filesystem::path> files = readableCorpusFiles();
    if (files.empty())
        GTEST_SKIP() << "the files are not there";
    for (const std::filesystem::path& path : files) {
        SCOPED_TRACE(path.filename().string());
        const Converted converted(contents(path), {}, builtReleases().back());
        const std::set<std::string> before = globalIds(converted.source.model());
        const std::set<std::string> after = globalIds(converted.target.model());
        EXPECT_TRUE(std::includes(after.begin(), after.end(), before.begin(), before.end()));
        for (const vnifc::ConvertFinding& each : converted.findings)
            if (each.kind == vnifc::ConvertKind::kLostInstance) {
                EXPECT_EQ(each.entity, "IfcStyledItem") << "not one that says that there is no style: " << each.text();
            }
    }
}

TEST(Corpus, ThereAndBackAgainGivesTheSame) {
    const std::vector<std::filesystem::path> files = readableCorpusFiles();
    if (files.empty() || builtReleases().size() < 2)
        GTEST_SKIP() << "the files, or a second release, are not there";
    unsigned same = 0;
    for (const std::filesystem::path& path : files)
        for (const std::string& to : builtReleases()) {
            SCOPED_TRACE(path.filename().string() + " to " + to);
            const Converted there(contents(path), {}, to);
            if (!there.before.empty() || there.result.carried != there.source.model().count() ||
                there.source.release()->name == to)
                continue;
            const Converted back(there.text, to, there.source.release()->name);
            EXPECT_TRUE(dataOf(back.text) == dataOf(there.source.model().writeText()));
            ++same;
        }
    EXPECT_GT(same, 0u);
}
