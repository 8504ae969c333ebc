#include "Messages.h"

#include <algorithm>
#include <cstdio>

namespace vnifc {

std::string printable(std::string_view text) {
    std::string result(text);
    std::ranges::replace_if(
        result, [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    return result;
}

void say(std::string_view line) { std::fputs((printable(line) + '\n').c_str(), stderr); }

} // namespace vnifc
