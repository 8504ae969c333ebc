#include "Messages.h"

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

void say(std::string_view line) { std::fputs((printable(line) + '\n').c_str(), stderr); }

} // namespace vnifc::tool
