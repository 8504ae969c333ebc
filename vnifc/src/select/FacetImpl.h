#pragma once
#include "../model/ModelState.h"
#include "Regex.h"

#include <vnifc/Facet.h>

#include <optional>
#include <variant>

namespace vnifc {

/// A name in a facet, or the pattern of one.
struct NamePattern {
    std::string text;
    std::optional<detail::Regex> regex;

    /// Of a text as it stands in memory.
    bool matches(std::string_view exchangeText) const;
};

enum class FacetKind : std::uint8_t {
    kId,
    kClass,
    kType,
    kParent,
    kContainer,
    kStorey,
    kBuilding,
    kSite,
    kLocation,
    kMaterial,
    kClassification,
    kGroup,
    kLayer,
    kAttribute,
    kProperty
};

/// A value with the unit that it says itself or that the project says for it.
struct FacetValue {
    Value value;
    Instance unit;
};

/// All that is not null.
std::vector<FacetValue> facetValues(const Facet& facet, const Instance& instance, bool needsUnits);

struct Facet::Impl {
    std::string text;
    std::size_t column = 1;
    FacetKind kind = FacetKind::kAttribute;
    std::string attribute;
    NamePattern set;
    NamePattern property;

    // Both are instantiated in Facet.cpp alone.

    /// Calls `visit(FacetValue)` for each value; `needsUnits` fills in the units of numbers.
    template <class Visit>
    void forEach(const Instance& instance, bool needsUnits, Visit visit) const;

private:
    template <class Visit>
    void forEachProperty(const Instance& instance, Visit visit) const;
};

} // namespace vnifc
