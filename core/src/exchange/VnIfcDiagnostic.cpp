#include <VnIfcCore/VnIfcDiagnostic.h>

namespace VN_SDAI {

std::string VnIfcDiagnostic::text() const {
    static constexpr const char* kSeverities[] = {"info", "warning", "error"};
    std::string result = file;
    if (line > 0)
        result += ':' + std::to_string(line) + ':' + std::to_string(column);
    if (!result.empty())
        result += ": ";
    result += kSeverities[severity];
    result += ": ";
    if (instance > 0)
        result += '#' + std::to_string(instance) + ' ';
    if (!keyword.empty())
        result += keyword;
    if (!attribute.empty())
        result += '.' + attribute;
    if (instance > 0 || !keyword.empty()) {
        if (result.back() == ' ')
            result.pop_back();
        result += ": ";
    }
    if (!rule.empty())
        result += "rule " + rule + (expected.empty() && found.empty() ? " is violated" : ": ");
    if (!expected.empty())
        result += "expected " + expected;
    if (!found.empty())
        result += (expected.empty() ? "found " : ", found ") + found;
    return result + " [" + code + ']';
}

} // namespace VN_SDAI
