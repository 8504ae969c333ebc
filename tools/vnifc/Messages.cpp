#include "Messages.h"

#include "Terminal.h"

#include <vnifc/Similar.h>

#include <cstdio>

namespace vnifc::tool {

std::string printable(std::string_view text) {
    std::string result(text);
    unsigned char previous = 0;
    for (char& c : result) {
        const auto byte = static_cast<unsigned char>(c);
        // U+0080 to U+009F, in UTF-8, are control characters as well.
        const bool isSecondHalf = previous == 0xC2 && byte >= 0x80 && byte < 0xA0;
        if (byte < ' ' || byte == 0x7F)
            c = '?';
        else if (isSecondHalf)
            c = '\xBF'; // U+00BF, the question mark on its head
        previous = byte;
    }
    return result;
}

void say(std::string_view line) { std::fputs(("vnifc: " + printable(line) + '\n').c_str(), stderr); }

std::string findingLine(const VN_SDAI::VnIfcDiagnostic& finding, bool isColoured) {
    std::string line = printable(finding.text());
    constexpr std::pair<std::string_view, Paint> kSeverities[] = {
        {": info: ", Paint::kFaint}, {": warning: ", Paint::kWarning}, {": error: ", Paint::kError}};
    const auto& [word, paint] = kSeverities[finding.severity];
    const std::size_t at = line.find(word);
    if (isColoured && at != line.npos) {
        constexpr std::size_t kColons = 2; // before and after the word
        line.replace(at + kColons, word.size() - 2 * kColons,
                     painted(word.substr(kColons, word.size() - 2 * kColons), paint, true));
    }
    return line;
}

std::string didYouMean(std::string_view name, std::span<const std::string_view> known) {
    const std::string_view similar = similarName(name, known);
    return similar.empty() ? "" : " (did you mean " + std::string(similar) + "?)";
}

void sayFinding(const VN_SDAI::VnIfcDiagnostic& finding) {
    std::fputs((findingLine(finding, hasColours(Stream::kErrors)) + '\n').c_str(), stderr);
}

} // namespace vnifc::tool
