#pragma once
#include <string>
#include <string_view>

namespace VN_SDAI {

/// The parts of a name of ASCII characters, joined and widened.
template <class... Part>
std::wstring wideName(Part... parts) {
    std::wstring name;
    for (const std::string_view part : {std::string_view(parts)...})
        name.append(part.begin(), part.end());
    return name;
}

} // namespace VN_SDAI
