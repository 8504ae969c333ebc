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
    // What is found where nothing is expected of a rule is the reason why it has no result.
    const bool isReason = !rule.empty() && expected.empty() && !found.empty();
    if (isReason)
        result += "rule " + rule + " is not evaluated: " + found;
    else if (!rule.empty())
        result += "rule " + rule + (expected.empty() ? " is violated" : ": ");
    if (!expected.empty())
        result += "expected " + expected;
    if (!found.empty() && !isReason)
        result += (expected.empty() ? "found " : ", found ") + found;
    return result + " [" + code + ']';
}

} // namespace VN_SDAI
