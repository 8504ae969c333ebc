#pragma once
#include <IFC4X3/Enumeration.h>
#include <VnIfcCore/VnIfcListAggr.h>
#include <VnIfcCore/VnIfcSelect.h>
#include <VnIfcCore/VnIfcSetAggr.h>
#include <VnIfcCore/VnIfcVariantType.h>

#include <concepts>

namespace IFC4X3 {

/// One member of a select: the name under which it is chosen, the kind of its value, and its type where the kind needs
/// it.
struct SelectMember {
    const VN_SDAI::VnAnsiString* name;
    VN_SDAI::VnTypeCodeKind kind;
    VN_SDAI::VnIfcEntityType** entity;   ///< entity members: the class's record
    const EnumerationClass* enumeration; ///< enumeration members
    const VN_SDAI::VnIfcAggr* prototype; ///< aggregate members: a nil aggregate of the member's type
};

/// The descriptors of a select class, of pointers to it, and of its arrays and pointers to its aggregates if the schema
/// has such.
struct SelectDescriptors {
    VN_SDAI::VnIfcVariantTypeSlot* value;
    VN_SDAI::VnIfcVariantTypeSlot* pointer;
    VN_SDAI::VnIfcVariantTypeSlot* array;
    VN_SDAI::VnIfcVariantTypeSlot* aggregate;
};

struct SelectClass {
    const char* name;
    std::span<const SelectMember> members;
    VN_SDAI::VnIfcNameType** type; ///< the select's record in the dictionary
    SelectDescriptors descriptors;

    std::int32_t memberCount() const noexcept { return static_cast<std::int32_t>(members.size()); }
    /// The index of the member of that name, in any case; the number of members when there is none.
    IFC4X3_API std::int32_t indexOf(std::string_view name) const noexcept;
};

constexpr SelectMember entityMember(const VN_SDAI::VnAnsiString& name, VN_SDAI::VnIfcEntityType** entity) noexcept {
    return {&name, VN_SDAI::VnTypeCodeKind::kEntity, entity, nullptr, nullptr};
}
constexpr SelectMember simpleMember(const VN_SDAI::VnAnsiString& name, VN_SDAI::VnTypeCodeKind kind) noexcept {
    return {&name, kind, nullptr, nullptr, nullptr};
}
constexpr SelectMember enumerationMember(const VN_SDAI::VnAnsiString& name, const EnumerationClass& type) noexcept {
    return {&name, VN_SDAI::VnTypeCodeKind::kEnumeration, nullptr, &type, nullptr};
}
template <class Aggregate>
const Aggregate nilAggregate{};
template <class Aggregate>
constexpr SelectMember aggregateMember(const VN_SDAI::VnAnsiString& name) noexcept {
    return {&name, VN_SDAI::VnTypeCodeKind::kAggregation, nullptr, nullptr, &nilAggregate<Aggregate>};
}

/// What all select classes of the schema share: which member is chosen, and what follows from it. The chosen value
/// itself lives in the core's base. Codes run over the members in the schema's order, nested selects flattened; the
/// number of members means that none is chosen, one more that an instance was loaded but not yet classified.
class IFC4X3_API Select : public VN_SDAI::VnIfcSelect {
public:
    static constexpr const char* kSchemaName = "IFC4X3";

    Select(const Select&) = default;
    Select& operator=(const Select&) = default;
    Select(Select&&) noexcept = default;
    Select& operator=(Select&&) noexcept = default;

    std::int32_t _d() const noexcept override { return m_discriminator; }
    bool underlyingTypeName(const VN_SDAI::VnAnsiString& name) override;
    const VN_SDAI::VnAnsiString& underlyingTypeName() const override;
    const VN_SDAI::VnIfcNameType* type() const noexcept override;
    std::int32_t underlyingTypeByName(const VN_SDAI::VnAnsiString& name) const override;

    virtual const SelectClass& selectClass() const noexcept = 0;
    /// The chosen member; null when none is chosen or an instance still awaits classification.
    const SelectMember* chosen() const noexcept;

protected:
    explicit Select(std::int32_t unset) noexcept : m_discriminator(unset) {}

    bool setHandleD(const VN_SDAI::VnDbObjectId& handle) override;
    void setHandleOnLoad(const VN_SDAI::VnDbObjectId& handle) override;
    void refreshSelectHandle() const override;
    void unset() override;
    VN::ErrorStatus readTypedField(const VN_SDAI::VnAnsiString& typeName, VN_SDAI::VnSpfFilerBase* filer) override;
    VN::ErrorStatus writeTypedField(VN_SDAI::VnSpfFilerBase* filer) const override;
    bool chooseForReading(std::string_view name) override;
    bool chosenKind(VN_SDAI::VnTypeCodeKind& kind) const noexcept override;
    const VN_SDAI::VnIfcVariantType* chosenEnumeration() const override;

    void setDiscriminator(std::int32_t code) noexcept { m_discriminator = code; }
    bool is(std::int32_t code) const noexcept { return discriminatorAfterRefresh() == code; }
    /// Chooses a member that is no entity, without giving it a value; 18 for any other code.
    VN::ErrorStatus chooseType(std::int32_t code);
    void setInstance(const VN_SDAI::VnIfcEntityBase* instance);
    void setText(std::int32_t code, VN_SDAI::VnAnsiString value);
    void setBinary(std::int32_t code, VN_SDAI::VnAnsiString value);
    void setInteger(std::int32_t code, int value);
    void setReal(std::int32_t code, double value);
    void setBooleanValue(std::int32_t code, VN_SDAI::VnIfcBoolean value);
    void setLogicalValue(std::int32_t code, VN_SDAI::VnIfcLogical value);
    void setEnumeration(std::int32_t code, std::uint32_t value);
    template <class T>
    void setAggregate(std::int32_t code, const VN_SDAI::VnIfcArray<T>& value) {
        if (chooseType(code) != VN::eOk)
            return;
        static_cast<VN_SDAI::VnIfcAggrOf<T>&>(*getAggr()).assign(std::span<const T>(value));
    }

private:
    std::int32_t discriminatorAfterRefresh() const noexcept {
        if (m_discriminator > selectClass().memberCount())
            refreshSelectHandle();
        return m_discriminator;
    }

    mutable std::int32_t m_discriminator;
};

static_assert(sizeof(Select) == 32);

template <class S>
concept SelectType = std::derived_from<S, Select> && requires {
    S::s_class;
};

/// The selects that aggregates of class Aggregate hold in the schema.
template <class S, class Aggregate>
concept SelectInAggregate = SelectType<S> && std::same_as<typename S::Aggregate, Aggregate>;

} // namespace IFC4X3

namespace VN_SDAI {

/// The descriptor of the select class S.
template <IFC4X3::SelectType S>
struct VnIfcVariantType::Desc<S> {
    static const VnIfcVariantType& value() { return S::s_class.descriptors.value->value(); }
    static void release() noexcept { S::s_class.descriptors.value->release(); }
};

/// The descriptor of pointers to S.
template <IFC4X3::SelectType S>
struct VnIfcVariantType::Desc<S*> {
    static const VnIfcVariantType& value() { return S::s_class.descriptors.pointer->value(); }
    static void release() noexcept { S::s_class.descriptors.pointer->release(); }
};

/// The descriptor of arrays of S, for the selects that stand in aggregates.
template <IFC4X3::SelectType S>
requires requires { typename S::Aggregate; }
struct VnIfcVariantType::Desc<VnIfcArray<S, VnIfcArrayObjectCopyReallocator<S>>> {
    static const VnIfcVariantType& value() { return S::s_class.descriptors.array->value(); }
    static void release() noexcept { S::s_class.descriptors.array->release(); }
};

/// The descriptor of pointers to the SETs of S.
template <class S>
requires IFC4X3::SelectInAggregate<S, VnIfcSetAggr<S>>
struct VnIfcVariantType::Desc<VnIfcSetAggr<S>*> {
    static const VnIfcVariantType& value() { return S::s_class.descriptors.aggregate->value(); }
    static void release() noexcept { S::s_class.descriptors.aggregate->release(); }
};

/// The descriptor of pointers to the LISTs of S.
template <class S>
requires IFC4X3::SelectInAggregate<S, VnIfcListAggr<S>>
struct VnIfcVariantType::Desc<VnIfcListAggr<S>*> {
    static const VnIfcVariantType& value() { return S::s_class.descriptors.aggregate->value(); }
    static void release() noexcept { S::s_class.descriptors.aggregate->release(); }
};

} // namespace VN_SDAI
