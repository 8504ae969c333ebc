#include <VnRx/VrString.h>

#include <gtest/gtest.h>

#include <string>

using namespace std::string_view_literals;

TEST(VrString, TakesNullAndKeepsNulsAndItsOwnText) {
    VrString text("abc");
    EXPECT_EQ(text, "abc");
    text.assign(static_cast<const char*>(nullptr));
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(text, static_cast<const char*>(nullptr));
    EXPECT_EQ(VrString(static_cast<const char*>(nullptr)), "");

    text.assign("a\0b"sv).append(text).append("\xFF");
    EXPECT_EQ(text, "a\0ba\0b\xFF"sv);
    EXPECT_EQ(text.length(), 7u);
    text.assign(text.view().substr(3));
    EXPECT_EQ(text, "a\0b\xFF"sv);
    EXPECT_EQ(text.constUtf8()[text.length()], '\0');
}

TEST(VrString, IsOrderedByItsBytesAsUnsignedNumbers) {
    EXPECT_LT(VrString("z"), VrString("\u00E9"));
    EXPECT_LT(VrString("\uFFFF"), VrString("\U00010000"));
    EXPECT_LT(VrString("a"), VrString("a\0"sv));
}

// One U+FFFD for each longest beginning of a character, as the Unicode standard recommends (chapter 3.9, table 3-8).
TEST(VrString, KeepsBytesThatAreNoUtf8AndConvertsThemToReplacements) {
    const struct {
        std::string_view bytes;
        std::u32string_view characters;
    } cases[] = {
        {"\x80", U"\uFFFD"},
        {"\xC0\xAF", U"\uFFFD\uFFFD"},
        {"\xE0\x9F\xBF", U"\uFFFD\uFFFD\uFFFD"},
        {"\xE0\xA0", U"\uFFFD"},
        {"\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD"},
        {"\xED\x9F\xBF\xEE\x80\x80", U"\uD7FF\uE000"},
        {"\xF0\x8F\xBF\xBF", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x8F\xBF\xBF", U"\U0010FFFF"},
        {"\xF4\x90\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF5\xFF", U"\uFFFD\uFFFD"},
        {"\xF0\x9F\x98", U"\uFFFD"},
        {"\xF0\x9F\x98@", U"\uFFFD@"},
        {"\xE2\x82\xC3\xA9", U"\uFFFD\u00E9"},
    };
    for (const auto& [bytes, characters] : cases) {
        const VrString text(bytes);
        EXPECT_EQ(text.view(), bytes);
        EXPECT_EQ(text.toUtf32(), characters) << testing::PrintToString(bytes);
    }
}

TEST(VrString, ConvertsEveryCharacterBothWays) {
    std::u32string all;
    for (char32_t character = 0; character <= 0x10FFFF; ++character)
        if (character < 0xD800 || character > 0xDFFF)
            all += character;
    const VrString text = VrString::fromUtf32(all);
    EXPECT_EQ(text.length(), 0x80u + 2 * 0x780u + 3 * (0xF800u - 0x800u) + 4 * 0x100000u);
    EXPECT_TRUE(text.toUtf32() == all);
    EXPECT_TRUE(VrString::fromUtf16(text.toUtf16()) == text);
    EXPECT_EQ(VrString::fromUtf32(U"\x110000\xD800\xDFFF\xFFFFFFFF"), "\uFFFD\uFFFD\uFFFD\uFFFD");
}

TEST(VrString, TakesPairsOfSurrogatesAndReplacesLoneOnes) {
    EXPECT_EQ(VrString("\U0001F600").toUtf16(), std::u16string({0xD83D, 0xDE00}));
    const char16_t units[] = {0xD83D, 'a', 0xDE00, 0xD83D, 0xD83D, 0xDE00, 0xD83D};
    EXPECT_EQ(VrString::fromUtf16({units, std::size(units)}), "\uFFFDa\uFFFD\uFFFD\U0001F600\uFFFD");
}
