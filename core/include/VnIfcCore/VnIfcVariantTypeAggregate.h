#pragma once
#include <VnIfcCore/VnIfcListAggr.h>
#include <VnIfcCore/VnIfcSetAggr.h>
#include <VnIfcCore/VnIfcVariant.h>

namespace VN_SDAI {

class VnIfcArrayVariantType;

/// What all descriptors share whose values are, or point to, a sequence of elements.
class VNIFC_API VnIfcAggregateVariantType : public VnIfcVariantType {
public:
    ~VnIfcAggregateVariantType() override;
    bool isAggregate() const noexcept override { return true; }
    bool subEqualTo(const void* left, const void* right) const override;
    /// In parentheses.
    bool subToString(VrString& text, const void* value, StringFormat format) const override;

    /// The number of elements of a value of this type; 0 for a null pointer and for a nil aggregate.
    virtual std::uint32_t countOf(const void* value) const noexcept = 0;
    /// A copy of an element; the index must be below countOf.
    virtual VnIfcVariant elementOf(const void* value, std::uint32_t index) const = 0;

protected:
    using VnIfcVariantType::VnIfcVariantType;
    /// Converts element by element; false, and `result` as it was, when one of them does not convert.
    bool toArray(const VnIfcVariantType& target, const void* value, VnIfcVariant& result) const;
};

/// What the descriptors of VnIfcArray share.
class VNIFC_API VnIfcArrayVariantType : public VnIfcAggregateVariantType {
public:
    ~VnIfcArrayVariantType() override;
    /// To other arrays, if all elements convert.
    bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                        VnIfcVariant& result) const override;
    /// Adds an element, converted if need be, to the array; false, and nothing added, when it does not convert.
    virtual bool append(void* array, const VnIfcVariant& element) const = 0;

protected:
    /// `storage` says how a variant keeps arrays, and must outlive the descriptor.
    VnIfcArrayVariantType(const wchar_t* name, const VnIfcVariantStorage& storage);
};

/// What the descriptors of pointers to aggregates share. The aggregates are not owned.
class VNIFC_API VnIfcAggrPtrVariantType : public VnIfcAggregateVariantType {
public:
    ~VnIfcAggrPtrVariantType() override;
    bool subEqualTo(const void* left, const void* right) const override;
    bool subToString(VrString& text, const void* value, StringFormat format) const override;
    /// To an array of the element type; to an array of variants, which leaves `result` as it was when the aggregate is
    /// nil; to `VnIfcAggr*`.
    bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                        VnIfcVariant& result) const override;
    /// A null pointer.
    bool createVariant(VnIfcVariant& value) const override;
    std::uint32_t countOf(const void* value) const noexcept override;
    /// The descriptor of arrays of the element type; null when elements are of any type.
    virtual const VnIfcVariantType* arrayType() const = 0;

protected:
    /// The qualified name, which is copied.
    VnIfcAggrPtrVariantType(const wchar_t* name);

    /// The aggregate that a value points to.
    static VnIfcAggr* aggregateAt(const void* value) noexcept;
    /// Fills such an array.
    virtual void exportTo(void* array, const VnIfcAggr& aggregate) const = 0;
};

/// The descriptor of an array class.
template <class A>
class VnIfcVariantTypeForObject;

/// The descriptor of an array.
template <class T, class Reallocator>
class VnIfcVariantTypeForObject<VnIfcArray<T, Reallocator>> final : public VnIfcArrayVariantType {
    using Array = VnIfcArray<T, Reallocator>;

public:
    /// The qualified name, which is copied.
    VnIfcVariantTypeForObject(const wchar_t* name) : VnIfcArrayVariantType(name, vnIfcInsideStorage<Array>) {}

    std::uint32_t countOf(const void* value) const noexcept override { return array(value).length(); }
    VnIfcVariant elementOf(const void* value, std::uint32_t index) const override { return array(value)[index]; }
    bool append(void* value, const VnIfcVariant& element) const override {
        auto& elements = *static_cast<Array*>(value);
        if constexpr (std::is_same_v<T, VnIfcVariant>) {
            elements.append(element);
        } else if (const T* exact = element.get<T>()) {
            elements.append(*exact);
        } else if constexpr (std::is_pointer_v<T>) {
            // What a conversion would point to goes with the element.
            return false;
        } else {
            T converted{};
            if (!element.getAs(converted))
                return false;
            elements.append(std::move(converted));
        }
        return true;
    }

private:
    static const Array& array(const void* value) noexcept { return *static_cast<const Array*>(value); }
};

/// The array in which elements of an aggregate are handed out.
template <class T>
struct VnIfcArrayOfAggr {
    /// An array of the elements.
    using Type = VnIfcArray<T>;
};
/// A list of lists is handed out as an array of arrays.
template <class T>
struct VnIfcArrayOfAggr<VnIfcListAggr<T>> {
    /// An array of arrays of the inner elements.
    using Type = VnIfcArray<VnIfcArray<T>>;
};

/// Pointers to aggregates of class A, for the descriptors of SETs and of LISTs.
template <class A>
class VnIfcAggrPtrVariantTypeOf : public VnIfcAggrPtrVariantType {
    using Element = typename A::value_type;
    using Array = typename VnIfcArrayOfAggr<Element>::Type;

public:
    VnIfcVariant elementOf(const void* value, std::uint32_t index) const override {
        const Element& element = static_cast<const A*>(aggregateAt(value))->items()[index];
        if constexpr (std::is_base_of_v<VnIfcAggr, Element>)
            return typename Array::value_type(element.items());
        else
            return element;
    }

    const VnIfcVariantType* arrayType() const override { return &VnIfcVariantType::Desc<Array>::value(); }

protected:
    using VnIfcAggrPtrVariantType::VnIfcAggrPtrVariantType;

    void exportTo(void* array, const VnIfcAggr& aggregate) const override {
        static_cast<const A&>(aggregate).exportTo(*static_cast<Array*>(array));
    }
};

/// The descriptor of a pointer to a SET class.
template <class P>
class VnIfcSetAggrPtrVariantTypePOD;

/// The descriptor of pointers to a SET.
template <class A>
class VnIfcSetAggrPtrVariantTypePOD<A*> final : public VnIfcAggrPtrVariantTypeOf<A> {
public:
    /// The qualified name, which is copied.
    VnIfcSetAggrPtrVariantTypePOD(const wchar_t* name) : VnIfcAggrPtrVariantTypeOf<A>(name) {}
};

/// The descriptor of a pointer to a LIST class.
template <class P>
class VnIfcListAggrPtrVariantTypePOD;

/// The descriptor of pointers to a LIST, whose elements also convert one by one.
template <class A>
class VnIfcListAggrPtrVariantTypePOD<A*> final : public VnIfcAggrPtrVariantTypeOf<A> {
public:
    /// The qualified name, which is copied.
    VnIfcListAggrPtrVariantTypePOD(const wchar_t* name) : VnIfcAggrPtrVariantTypeOf<A>(name) {}

    bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                        VnIfcVariant& result) const override {
        return VnIfcAggrPtrVariantType::subToValueType(target, source, result) ||
               (this->aggregateAt(source.payload()) && this->toArray(target, source.payload(), result));
    }
};

} // namespace VN_SDAI
