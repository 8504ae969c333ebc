// Strings and identifiers of the core.
#include <VnIfcCore/VnAnsiString.h>
#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcDiagnostic.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcLogical.h>

#include <gtest/gtest.h>

#include <set>

using namespace VN_SDAI;

TEST(AnsiString, HoldsAnyBytesAndEndsWithNul) {
    const VnAnsiString text(std::string_view("a\0\xFF", 3));
    EXPECT_EQ(text.length(), 3u);
    EXPECT_EQ(text.constStr()[3], '\0');
    EXPECT_EQ(text.view(), std::string_view("a\0\xFF", 3));
    EXPECT_FALSE(text.isUnset());
    const VnAnsiString none(static_cast<const char*>(nullptr));
    EXPECT_TRUE(none.isEmpty());
    EXPECT_STREQ(none.constStr(), "");
    EXPECT_TRUE(VnAnsiString("\xFF").isUnset() && VnAnsiString(VnUnsetText).isUnset());
    EXPECT_EQ(VnAnsiString(VnUnsetText), Consts::VnStringUnset);
    EXPECT_FALSE(VnAnsiString("\xFF\xFF").isUnset() || VnAnsiString().isUnset());
}

TEST(AnsiString, CopiesMovesAndAssignsAlsoFromItself) {
    VnAnsiString text("first");
    const VnAnsiString copy(text);
    EXPECT_NE(copy.constStr(), text.constStr());
    const VnAnsiString& same = text;
    text = same;
    EXPECT_EQ(text, "first");
    text = text.view().substr(2);
    EXPECT_EQ(text, "rst") << "from a part of itself";
    VnAnsiString moved(std::move(text));
    EXPECT_EQ(moved, "rst");
    EXPECT_TRUE(text.isEmpty());
    text = "x";
    moved = VnUnsetText;
    moved.swap(text);
    EXPECT_TRUE(text.isUnset() && moved == "x");
    text.clear();
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(copy, "first");
}

TEST(AnsiString, ComparesBytesWithOrWithoutCase) {
    const struct {
        const char* left;
        const char* right;
        int order;
        int noCase;
    } cases[] = {
        {"a", "a", 0, 0},   {"a", "A", 1, 0},         {"IfcWall", "IFCWALLS", 1, -1}, {"", "a", -1, -1},
        {"[", "a", -1, -1}, {"\xC4", "\xE4", -1, -1}, {"z\xFF", "Z", 1, 1},           {"@", "`", -1, -1},
    };
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const auto& test : cases) {
        EXPECT_EQ(sign(VnAnsiString(test.left).compare(test.right)), test.order) << test.left << ' ' << test.right;
        EXPECT_EQ(sign(VnAnsiString(test.left).compareNoCase(test.right)), test.noCase)
            << test.left << ' ' << test.right;
        EXPECT_EQ(sign(VnAnsiString(test.right).compareNoCase(test.left)), -test.noCase)
            << test.left << ' ' << test.right;
        EXPECT_EQ(VnAnsiString(test.left) < VnAnsiString(test.right), test.order < 0);
    }
}

TEST(Guid, IsCheckedAndConvertedTo128BitsAndBack) {
    VnIfcGUID::Bytes ones;
    ones.fill(0xFF);
    EXPECT_EQ(VnIfcGUID::fromBytes({}).view(), "0000000000000000000000");
    EXPECT_EQ(VnIfcGUID::fromBytes(ones).view(), "3$$$$$$$$$$$$$$$$$$$$$");
    const VnIfcGUID::Bytes bytes = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF,
                                    0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};
    EXPECT_EQ(VnIfcGUID::fromBytes(bytes).view(), "018qLdYQlDx$xSkfXsL38G");
    for (const char* text : {"0YvctVUKr0kugbFTf53O9L", "3$$$$$$$$$$$$$$$$$$$$$", "2_$_$_$_$_$_$_$_$_$_$z"}) {
        const VnIfcGUID id(text);
        ASSERT_TRUE(id.isValid() && id.toBytes()) << text;
        EXPECT_EQ(VnIfcGUID::fromBytes(*id.toBytes()), id);
    }
    for (const char* text : {"", "4YvctVUKr0kugbFTf53O9L", "0YvctVUKr0kugbFTf53O9", "0YvctVUKr0kugbFTf53O9-",
                             "0YvctVUKr0kugbFTf53O9\xC4"}) {
        const VnIfcGUID id(text);
        EXPECT_FALSE(id.isValid() || id.toBytes()) << text;
        EXPECT_EQ(id.view(), text) << "kept as it is";
    }
    EXPECT_EQ(VnIfcGUID("0YvctVUKr0kugbFTf53O9LX").view(), "0YvctVUKr0kugbFTf53O9L");
    EXPECT_TRUE(VnIfcGUID().isUnset() && VnIfcGUID(Consts::VnStringUnset).isUnset() && !VnIfcGUID("").isUnset());
}

TEST(Guid, NewOnesAreRandomAndOfTheirVersion) {
    std::set<VnIfcGUID> ids;
    for (int i = 0; i < 1000; ++i) {
        const VnIfcGUID id = VnIfcGUID::create();
        ASSERT_TRUE(id.toBytes());
        EXPECT_EQ((*id.toBytes())[6] >> 4, 4);
        EXPECT_EQ((*id.toBytes())[8] >> 6, 2);
        ids.insert(id);
    }
    EXPECT_EQ(ids.size(), 1000u);
}

TEST(Logical, CodesAreTheOnesOfTheStandardKinds) {
    EXPECT_TRUE(VnIfcLogical().isUnset() && VnIfcBoolean().isUnset());
    EXPECT_EQ(VnIfcLogical(true).code(), 1u);
    EXPECT_FALSE(VnIfcLogical(VnIfcLogical::Unknown).isUnset());
    EXPECT_EQ(VnIfcBoolean(false).code(), 0u);
    EXPECT_EQ(VnIfcLogical::Unset + 0, 3);
    EXPECT_EQ(VnIfcBoolean::Unset + 0, 2);
}

TEST(Diagnostic, MakesOneLineOfWhateverIsKnown) {
    VnIfcDiagnostic diagnostic;
    diagnostic.code = "c";
    diagnostic.expected = "x";
    EXPECT_EQ(diagnostic.text(), "error: expected x [c]");
    diagnostic.instance = 5;
    diagnostic.found = "y";
    EXPECT_EQ(diagnostic.text(), "error: #5: expected x, found y [c]");
    diagnostic.severity = VnIfcDiagnostic::kInfo;
    diagnostic.file = "f";
    diagnostic.keyword = "K";
    diagnostic.attribute = "A";
    diagnostic.expected = "";
    EXPECT_EQ(diagnostic.text(), "f: info: #5 K.A: found y [c]");
}
