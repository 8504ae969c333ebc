#include "Conversion.h"

#include <vnifc/Convert.h>

#include <array>

namespace vnifc {

namespace {

constexpr std::array<std::string_view, 10> kNames = {
    "renamed-entity",   "generalised", "moved-attribute", "changed-value", "filled-value",
    "kept-as-property", "absorbed",    "kept-text",       "lost-value",    "lost-instance"};

} // namespace

std::string_view nameOf(ConvertKind kind) noexcept { return kNames[static_cast<std::size_t>(kind)]; }

bool isLoss(ConvertKind kind) noexcept {
    return kind == ConvertKind::kGeneralised || kind == ConvertKind::kLostValue || kind == ConvertKind::kLostInstance;
}

std::string ConvertFinding::text() const {
    std::string line = '#' + std::to_string(instance);
    if (!entity.empty())
        line += ' ' + entity;
    if (!attribute.empty())
        line += '.' + attribute;
    line += ": ";
    line += nameOf(kind);
    if (!before.empty())
        line += ", " + before;
    if (!after.empty())
        line += " -> " + after;
    return line + " (" + reason + ')';
}

ConvertResult convert(const VN_SDAI::VnIfcModel& source, VN_SDAI::VnIfcModel& target, const ConvertOptions& options) {
    return conversion::Conversion(source, target, options).run();
}

} // namespace vnifc
