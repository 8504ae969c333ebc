#pragma once
#include "Names.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcTyped/Entity.h>

#include <array>
#include <string_view>
#include <vector>

namespace vnifc::detail {

/// An explicit attribute as instances of one entity have it.
struct AttributeInfo {
    const VN_SDAI::typed::AttributeRow* row; ///< of the member, also where a subtype derives the attribute
    const VN_SDAI::VnIfcParameterType* type; ///< null for the few types that the dictionary does not have
    std::string_view typeName;
    unsigned position;
    bool isDerived;
    bool mayBeEmpty; ///< an aggregate for which having no elements is a value
};

/// What the layer knows of one entity: made from its rows and its record when the first instance of it is asked.
struct ClassInfo {
    explicit ClassInfo(const VN_SDAI::VnIfcEntityType& record);

    /// The explicit or inverse attribute of that name, in any case; null when there is none.
    const VN_SDAI::typed::AttributeRow* find(std::string_view name) const noexcept;
    /// The explicit attribute of that name, or with that row; null when there is none.
    const AttributeInfo* findExplicit(std::string_view name) const noexcept;
    const AttributeInfo* infoOf(const VN_SDAI::typed::AttributeRow& row) const noexcept;
    const VN_SDAI::typed::AttributeRow* row(Name name) const noexcept { return named[static_cast<std::size_t>(name)]; }
    /// True when inverse attributes mirror that attribute.
    bool isMirrored(const VN_SDAI::typed::AttributeRow& row) const noexcept;

    const VN_SDAI::VnIfcEntityType& type;
    const VN_SDAI::typed::EntityClass& rows;
    std::vector<AttributeInfo> attributes;
    std::vector<const VN_SDAI::typed::AttributeRow*> inverses;   ///< inherited ones first
    std::vector<const VN_SDAI::typed::AttributeRow*> references; ///< explicit attributes that can refer to instances
    std::array<const VN_SDAI::typed::AttributeRow*, kAttributeCount> named;
    bool carriesUnits; ///< what its instances say has to do with the units of the project
};

/// Comparison without regard to the case of ASCII letters.
bool sameName(std::string_view left, std::string_view right) noexcept;

/// The type beneath names.
const VN_SDAI::VnIfcParameterType* underlying(const VN_SDAI::VnIfcParameterType* type) noexcept;
/// The type beneath names and aggregations.
const VN_SDAI::VnIfcParameterType* innermost(const VN_SDAI::VnIfcParameterType* type) noexcept;
/// The type's name in upper case, "IFCLENGTHMEASURE"; empty for a type without one.
std::string upperNameOf(const VN_SDAI::VnIfcParameterType* type);

} // namespace vnifc::detail
