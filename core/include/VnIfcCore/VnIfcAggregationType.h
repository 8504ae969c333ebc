#pragma once
#include <VnIfcCore/VnIfcParameterType.h>

namespace VN_SDAI {

/// A bound of an aggregation: an integer or "?".
class VNIFC_API VnIfcIntegerBound : public DictionaryInstance {
public:
    /// "?".
    VnIfcIntegerBound() noexcept : m_value(0), m_unbounded(true) {}
    /// A bound that is a number.
    explicit VnIfcIntegerBound(int value) noexcept : m_value(value), m_unbounded(false) {}
    ~VnIfcIntegerBound() override;

    /// True for "?".
    bool isUnbounded() const noexcept { return m_unbounded; }
    /// 0 for "?".
    int value() const noexcept { return m_value; }

private:
    int m_value;
    bool m_unbounded;
};

/// A type of aggregates (ISO 10303-22, aggregation_type).
class VNIFC_API VnIfcAggregationType : public VnIfcParameterType {
public:
    ~VnIfcAggregationType() override;

    /// The type of the elements; null until resolved.
    const VnIfcParameterType* elementType() const noexcept { return m_elementType; }
    /// Its name as registered: "IfcActorRole", "real", "list [3:3] of IfcPositiveInteger".
    const VnAnsiString& elementTypeName() const noexcept { return m_elementTypeName; }
    ///@{
    /// The declared bound, owned by this record.
    const VnIfcIntegerBound& lowerBound() const noexcept { return *m_lower; }
    const VnIfcIntegerBound& upperBound() const noexcept { return *m_upper; }
    ///@}
    VnTypeCodeKind kind() const noexcept override { return VnTypeCodeKind::kAggregation; }

protected:
    /// Owns the bounds from then on; a null bound stands for "?".
    VnIfcAggregationType(const VnIfcParameterType* elementType, VnIfcIntegerBound* lower, VnIfcIntegerBound* upper);

private:
    friend class VnIfcSchemaBuilder;

    std::unique_ptr<VnIfcIntegerBound> m_lower;
    std::unique_ptr<VnIfcIntegerBound> m_upper;
    const VnIfcParameterType* m_elementType;
    VnAnsiString m_elementTypeName;
};

/// SET: unordered, without duplicates.
class VNIFC_API VnIfcSetType : public VnIfcAggregationType {
public:
    ///@{
    /// Owns the bounds from then on, of which a null one stands for "?"; the element type is not owned, and null until
    /// resolved.
    VnIfcSetType(VnIfcParameterType* elementType, VnIfcIntegerBound* lower, VnIfcIntegerBound* upper)
        : VnIfcAggregationType(elementType, lower, upper) {}
    ///@}
    ~VnIfcSetType() override;
};

/// LIST: ordered.
class VNIFC_API VnIfcListType : public VnIfcAggregationType {
public:
    /// Owns the bounds from then on, of which a null one stands for "?"; the element type is not owned. `unique`:
    /// declared UNIQUE.
    VnIfcListType(VnIfcParameterType* elementType, VnIfcIntegerBound* lower, VnIfcIntegerBound* upper, bool unique)
        : VnIfcAggregationType(elementType, lower, upper), m_unique(unique) {}
    ~VnIfcListType() override;

    /// True when the elements are declared UNIQUE (ISO 10303-11, 8.2.2).
    bool isUnique() const noexcept { return m_unique; }

private:
    bool m_unique;
};

/// ARRAY: ordered, with an element for every index between the bounds.
class VNIFC_API VnIfcArrayType : public VnIfcAggregationType {
public:
    /// Owns the bounds from then on, which are those of the index; the element type is not owned. `optional` and
    /// `unique`: declared OPTIONAL and UNIQUE.
    VnIfcArrayType(VnIfcParameterType* elementType, VnIfcIntegerBound* lower, VnIfcIntegerBound* upper, bool optional,
                   bool unique)
        : VnIfcAggregationType(elementType, lower, upper), m_optional(optional), m_unique(unique) {}
    ~VnIfcArrayType() override;

    /// Elements may be missing.
    bool isOptional() const noexcept { return m_optional; }
    /// True when the elements are declared UNIQUE (ISO 10303-11, 8.2.1).
    bool isUnique() const noexcept { return m_unique; }

private:
    bool m_optional;
    bool m_unique;
};

} // namespace VN_SDAI
