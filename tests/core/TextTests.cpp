// Strings of the exchange structure against the texts that they stand for.
#include <VnIfcCore/VnIfcText.h>
#include <VnRx/VrString.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iconv.h>
#include <random>
#include <string>

using namespace VN_SDAI;
using namespace std::string_literals;
using Fault = VnIfcDecodedText::Fault;
using Kind = VnIfcDecodedText::FaultKind;

namespace {

void expectDecoded(const std::string& exchange, const std::string& text, const std::vector<Fault>& faults = {}) {
    SCOPED_TRACE(exchange);
    const VnIfcDecodedText decoded = vnDecodeText(exchange);
    EXPECT_EQ(decoded.text, text);
    ASSERT_EQ(decoded.faults.size(), faults.size());
    for (std::size_t i = 0; i < faults.size(); ++i)
        EXPECT_TRUE(decoded.faults[i] == faults[i])
            << "fault " << i << " at " << decoded.faults[i].offset << ", length " << decoded.faults[i].length;
    std::string buffer = "left over";
    EXPECT_EQ(vnDecodeText(exchange, buffer), text);
}

} // namespace

TEST(Text, DecodesDirectivesWholeFromTheLeft) {
    const struct {
        std::string exchange, text;
    } cases[] = {
        {"", ""},
        {"it's; /* #1=( */", "it's; /* #1=( */"},
        {"C:\\\\Win\\\\ALG\\\\", "C:\\Win\\ALG\\"},
        {"\\\\X2\\\\0041\\\\X0\\\\", "\\X2\\0041\\X0\\"},
        {"\\X2\\0410\\X0\\\\X2\\0420\\X0\\ \\X2\\04140418\\X0\\", "\u0410\u0420 \u0414\u0418"},
        {"\\X2\\30683002\\X0\\PE\\X2\\FF09\\X0\\N\\X2\\FF5e\\X0\\", "\u3068\u3002PE\uFF09N\uFF5E"},
        {"\\X2\\d83DDE00\\X0\\\\X2\\D83DDE00FFFF\\X0\\", "\U0001F600\U0001F600\uFFFF"},
        {"\\X2\\D800DC00D83FDFFFDBFFDFFFE000\\X0\\", "\U00010000\U0001FFFF\U0010FFFF\uE000"},
        {"Sanit\\X4\\000000E6\\X0\\r\\X4\\0001F6000010FFFF\\X0\\", "Sanit\u00E6r\U0001F600\U0010FFFF"},
        {"Street\\X\\0D\\X\\0ACity\\X2\\000A\\X0\\", "Street\r\nCity\n"},
        {"a\r\n\tb\x1D-\x7F", "a\r\n\tb\x1D-\x7F"},
        {"\\X\\83K\\X\\e9\\X\\00", "\u0083K\u00E9\0"s},
        {"\\S\\'\\S\\ \\S\\~\\S\\\\", "\u00A7\u00A0\u00FE\u00DC"},
        {"\\S\\N\\X\\93", "\u00CE\u0093"},
        {"\\PE\\\\S\\*\\S\\]\\PA\\\\S\\*", "\u040A\u043D\u00AA"},
        {"fecali\u00EBn \u0410", "fecali\u00EBn \u0410"},
    };
    for (const auto& [exchange, text] : cases)
        expectDecoded(exchange, text);
}

TEST(Text, KeepsWhatIsMalformedAndReportsIt) {
    const struct {
        std::string exchange, text;
        std::vector<Fault> faults;
    } cases[] = {
        {"User1\\", "User1\\", {{5, 1, Kind::kDirective}}},
        {"C:\\x\\\\y\\'", "C:\\x\\y\\'", {{2, 1, Kind::kDirective}, {7, 1, Kind::kDirective}}},
        {"a\\N\\\\X\\41\\F\\\\T\\",
         "a\\N\\A\\F\\\\T\\",
         {{1, 3, Kind::kDirective}, {9, 3, Kind::kDirective}, {12, 3, Kind::kDirective}}},
        {"\\X0\\\\X\\41", "\\X0\\A", {{0, 4, Kind::kDirective}}},
        {"\\PJ\\\\S\\)\\Pa", "\\PJ\\\u00A9\\Pa", {{0, 4, Kind::kDirective}, {8, 1, Kind::kDirective}}},
        {"\\X\\41\\S\\", "A\\S\\", {{5, 3, Kind::kCharacter}}},
        {"\\X2\\FEFFFFFD00\\X0\\5\x1D-s", "\\X2\\FEFFFFFD00\\X0\\5\x1D-s", {{0, 18, Kind::kDigits}}},
        {"\\X2\\4E0A\\X0: \\X2\\4E0A\\X0\\'", "\\X2\\4E0A\\X0: \u4E0A'", {{0, 11, Kind::kDigits}}},
        {"\\X2\\4E0A\\X\\41", "\\X2\\4E0AA", {{0, 8, Kind::kDigits}}},
        {"\\X2\\\\X0\\\\X4\\0041\\X0\\\\X2\\00",
         "\\X2\\\\X0\\\\X4\\0041\\X0\\\\X2\\00",
         {{0, 8, Kind::kDigits}, {8, 12, Kind::kDigits}, {20, 6, Kind::kDigits}}},
        {"\\X\\4g\\X\\\\X\\-1\\X\\4",
         "\\X\\4g\\X\\\\X\\-1\\X\\4",
         {{0, 4, Kind::kDigits}, {5, 3, Kind::kDigits}, {8, 3, Kind::kDigits}, {13, 4, Kind::kDigits}}},
        {"\\X2\\0041D83D\\X0\\", "\\X2\\0041D83D\\X0\\", {{0, 16, Kind::kCharacter}}},
        {"\\X2\\DE00D83D0041\\X0\\", "\\X2\\DE00D83D0041\\X0\\", {{0, 20, Kind::kCharacter}}},
        {"\\X4\\0000D83D0000DE00\\X0\\", "\\X4\\0000D83D0000DE00\\X0\\", {{0, 24, Kind::kCharacter}}},
        {"\\X4\\00110000\\X0\\", "\\X4\\00110000\\X0\\", {{0, 16, Kind::kCharacter}}},
        {"\\S\\\n\\S\\\u00E9", "\\S\\\n\\S\\\u00E9", {{0, 3, Kind::kCharacter}, {4, 3, Kind::kCharacter}}},
        {"\\PC\\\\S\\%\\S\\&", "\\S\\%\u0124", {{4, 4, Kind::kCharacter}}},
        {"T\u00D5 \xE9nnov\xF0\x9F\\S\\A\xA9",
         "T\u00D5 \xE9nnov\xF0\x9F\u00C1\xA9",
         {{4, 1, Kind::kBytes}, {9, 2, Kind::kBytes}, {15, 1, Kind::kBytes}}},
    };
    for (const auto& [exchange, text, faults] : cases)
        expectDecoded(exchange, text, faults);
    EXPECT_EQ(vnDecodeText("T\u00D5 \xE9n\xF0\x9F\\S\\A\xA9", VnIfcRawBytes::kReplace).text,
              "T\u00D5 \uFFFDn\uFFFD\u00C1\uFFFD");
}

// The C library's own tables are the witness.
TEST(Text, KnowsThePartsOfIso8859) {
    for (char part = 1; part <= 9; ++part) {
        const std::string name = "ISO-8859-" + std::to_string(part);
        const iconv_t converter = iconv_open("UTF-8", name.c_str());
        if (converter == reinterpret_cast<iconv_t>(-1))
            GTEST_SKIP() << "no " << name << " here";
        for (char low = 0x20; low < 0x7F; ++low) {
            char byte = static_cast<char>(low + 0x80), utf8[8];
            char *in = &byte, *out = utf8;
            std::size_t inLeft = 1, outLeft = sizeof utf8;
            const bool exists = iconv(converter, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1);
            const std::string directive = {'\\', 'S', '\\', low};
            const VnIfcDecodedText decoded =
                vnDecodeText(std::string{'\\', 'P', static_cast<char>('@' + part), '\\'} + directive);
            EXPECT_EQ(decoded.text, exists ? std::string(utf8, out) : directive) << name << ' ' << low;
            EXPECT_EQ(decoded.faults.empty(), exists) << name << ' ' << low;
        }
        iconv_close(converter);
    }
}

TEST(Text, EncodesWithAsFewDirectivesAsTheTextAllows) {
    const struct {
        std::string text, exchange;
    } cases[] = {
        {"it's ~", "it's ~"},
        {"C:\\S\\'", "C:\\\\S\\\\'"},
        {"\u00E9\\\u0410", "\\X2\\00E9\\X0\\\\\\\\X2\\0410\\X0\\"},
        {"a\r\n\0\x7F\u00E9\uFFFF b"s, "a\\X2\\000D000A0000007F00E9FFFF\\X0\\ b"},
        {"\u00E9\U0001F600\U0010FFFFz", "\\X2\\00E9\\X0\\\\X4\\0001F6000010FFFF\\X0\\z"},
        {"\U0001F600\u00E9", "\\X4\\0001F600\\X0\\\\X2\\00E9\\X0\\"},
        {"\xC3\u00E9\xA9\xED\xA0\x80", "\xC3\\X2\\00E9\\X0\\\xA9\xED\xA0\x80"},
    };
    for (const auto& [text, exchange] : cases) {
        EXPECT_EQ(vnEncodeText(text), exchange);
        std::string buffer = "left over";
        EXPECT_EQ(vnEncodeText(text, buffer), exchange);
    }
}

TEST(Text, CopiesNothingWhereNothingIsToBeDone) {
    const std::string plain = "plain ASCII, and long enough to be on the heap", latin = "a\xE9", accented = "\u00E9";
    std::string buffer;
    std::vector<Fault> faults;
    EXPECT_EQ(vnDecodeText(plain, buffer, VnIfcRawBytes::kReplace, &faults).data(), plain.data());
    EXPECT_EQ(vnEncodeText(plain, buffer).data(), plain.data());
    EXPECT_EQ(vnDecodeText(accented, buffer, VnIfcRawBytes::kReplace, &faults).data(), accented.data());
    EXPECT_EQ(vnDecodeText(latin, buffer).data(), latin.data());
    EXPECT_TRUE(buffer.empty() && faults.empty());
    EXPECT_EQ(vnDecodeText(latin, buffer, VnIfcRawBytes::kReplace, &faults), "a\uFFFD");
    EXPECT_EQ(faults.size(), 1u);
}

TEST(Text, BringsBackEveryCharacterInAnyOrder) {
    std::mt19937 random(1);
    std::u32string all;
    for (char32_t character = 0; character <= 0x10FFFF; ++character)
        if (VrString::isCharacter(character))
            all += character;
    for (int round = 0; round < 2; ++round, std::shuffle(all.begin(), all.end(), random)) {
        const VrString text = VrString::fromUtf32(all);
        const std::string exchange = vnEncodeText(text);
        EXPECT_TRUE(std::all_of(exchange.begin(), exchange.end(), [](char c) { return c >= ' ' && c <= '~'; }));
        const VnIfcDecodedText decoded = vnDecodeText(exchange);
        EXPECT_TRUE(text == decoded.text);
        EXPECT_TRUE(decoded.faults.empty());
    }
}
