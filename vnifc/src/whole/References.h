#pragma once
#include "../model/ModelState.h"
#include "Roster.h"

#include <charconv>
#include <string_view>

namespace vnifc::detail {

/// Calls `visit(begin, end, number)` for each reference in a text in the form of an exchange file, with the place of
/// its characters. What stands in quotes is none.
template <class Visit>
void forEachTextReference(std::string_view text, Visit visit) {
    char quote = '\0';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote != '\0') {
            quote = c == quote ? '\0' : quote;
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == '#') {
            std::uint64_t number = 0;
            const auto [end, error] = std::from_chars(text.data() + i + 1, text.data() + text.size(), number);
            if (error != std::errc())
                continue;
            const auto last = static_cast<std::size_t>(end - text.data());
            visit(i, last, number);
            i = last - 1;
        }
    }
}

/// True when a part of the instance is kept as text, or all of it.
inline bool hasText(const VN_SDAI::VnIfcEntityBase& instance) noexcept {
    return !instance.getInstanceType() || instance.objectId().slot()->has(VN_SDAI::VnIfcInstanceSlot::kHasKept);
}

/// Calls `visit(std::string_view)` for each text that stands in place of values.
template <class Visit>
void forEachText(const VN_SDAI::VnIfcEntityBase& instance, Visit visit) {
    if (!instance.getInstanceType())
        return visit(static_cast<const VN_SDAI::VnIfcForeignInstance&>(instance).parameters().view());
    for (const auto& [position, text] : instance.keptTexts())
        visit(text);
}

/// Calls `visit(ordinal)` for everything that an instance refers to and that is there, in attributes and in text.
template <class Visit>
void forEachTarget(ModelState& state, const Roster& roster, const VN_SDAI::VnIfcEntityBase& instance, Visit visit) {
    const auto add = [&](const VN_SDAI::VnDbObjectId& handle) {
        if (const std::uint32_t ordinal = roster.ordinalOf(handle); ordinal != Roster::kNone)
            visit(ordinal);
    };
    if (const ClassInfo* info = state.classOf(instance))
        for (const VN_SDAI::typed::AttributeRow* row : info->references)
            forEachHandle(instance, *row, add);
    if (!hasText(instance))
        return;
    forEachText(instance, [&](std::string_view text) {
        forEachTextReference(text, [&](std::size_t, std::size_t, std::uint64_t number) {
            if (const std::uint32_t ordinal = roster.ordinalOf(number); ordinal != Roster::kNone)
                visit(ordinal);
        });
    });
}

} // namespace vnifc::detail
