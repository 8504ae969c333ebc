// Files of other programs, foreign and broken ones too: what goes in comes out. They are no part of this project;
// without them there is nothing to test.
#include "support/Corpus.h"
#include "support/Files.h"
#include "support/Releases.h"

#include <VnIfcCore/VnIfcFile.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace VN_SDAI;
using namespace vnifc::test;
namespace fs = std::filesystem;

namespace {

/// The files of a release, read and written by the classes of a release.
class Corpus : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (!fs::exists(corpus()))
            GTEST_SKIP() << "no files of other programs here";
    }

    /// Reads and writes twice; `insisted` is the release that is asked for, if not the file's own.
    static void comesBack(const std::string& text, const plain::File& before, const std::string& insisted) {
        const VnModule kept = vnLoadModule(*vnFindRelease(GetParam()));
        VnIfcOpenOptions options;
        options.release = insisted;
        const VnIfcFile file = vnOpenText(text, options);
        ASSERT_TRUE(file) << file.result().message;
        EXPECT_EQ(file.release()->name, GetParam());
        EXPECT_EQ(file.model().schema(), kept.schema());
        const std::string written = file.model().writeText();
        const plain::File after = plain::read(written);
        EXPECT_EQ(after.header, before.header);
        EXPECT_EQ(before.doubles, 0u);
        EXPECT_EQ(lossesOf(before, after, declared::schemaNamed(GetParam())), "");
        EXPECT_EQ(vnOpenText(written, options).model().writeText(), written) << "the second time";
    }
};

TEST(PlainReader, TakesApartWhatTheLibraryMustKeep) {
    const plain::File file = plain::read(
        fileOf("IFC4", "#1= IFCX ( 'a''b\\S\\'',$$,/* ) */ (1.,.T.),,IFCLABEL ('x'),#12,\"0F\",);\n#2=(A(1)B());\n"));
    EXPECT_EQ(file.header.size(), 3u);
    ASSERT_EQ(file.instances.size(), 2u);
    std::vector<std::string> texts;
    for (const plain::Value& each : file.instances.at(1).parameters)
        texts.push_back(each.text);
    EXPECT_EQ(texts,
              (std::vector<std::string>{"'a''b\\S\\''", "$", "$", "(1.,.T.)", "", "IFCLABEL", "#12", "\"0F\"", ""}));
    EXPECT_EQ(file.instances.at(2).text, "(A(1)B())");

    const declared::Schema& release = declared::schemaNamed("IFC4");
    const auto losses = [&](std::string_view data) {
        return lossesOf(file, plain::read(fileOf("IFC4", data)), release);
    };
    EXPECT_EQ(losses("#1=IFCX('a''b\\S\\'',$,$,(1.0,.t.),,IFCLABEL('x'),#12,\"0F\",);\n#2=(A(1)B());\n"), "");
    EXPECT_EQ(losses("#1=IFCX('a''b\\S\\'',$,$,(1.0,.T.),$,IFCLABEL('x'),#12,\"0F\",);\n"),
              "#1=IFCX has other parameters\n#2= is missing\nother instances have come in\n");
    const plain::File sets = plain::read(fileOf("IFC4", "#1=IFCUNITASSIGNMENT((#2,#3));\n#2=IFCPOLYLINE((#4,#5));\n"));
    EXPECT_EQ(lossesOf(sets, plain::read(fileOf("IFC4", "#1=IFCUNITASSIGNMENT((#3,#2));\n#2=IFCPOLYLINE((#5,#4));\n")),
                       release),
              "#2=IFCPOLYLINE has other parameters\n");
}

TEST_P(Corpus, EveryInstanceAndParameterComesBackInItsOwnRelease) {
    for (const fs::path& path : corpusFiles()) {
        const std::string text = contents(path);
        const plain::File before = plain::read(text);
        if (releaseOf(before) != GetParam())
            continue;
        SCOPED_TRACE(path.filename());
        comesBack(text, before, "");
    }
}

// What the classes do not fit is kept.
TEST_P(Corpus, EveryInstanceAndParameterComesBackInAnyRelease) {
    for (const fs::path& path : corpusFiles()) {
        SCOPED_TRACE(path.filename());
        const std::string text = contents(path);
        comesBack(text, plain::read(text), GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(Releases, Corpus, testing::ValuesIn(builtReleases()), nameOfRelease);

} // namespace
