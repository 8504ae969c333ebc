#pragma once
#include <VnIfcCore/VnIfcListAggr.h>
#include <VnIfcCore/VnIfcSelect.h>
#include <VnIfcCore/VnIfcSetAggr.h>
#include <VnIfcCore/VnIfcVariantType.h>
#include <VnIfcTyped/Enumeration.h>

#include <array>
#include <bit>
#include <concepts>
#include <string_view>

namespace VN_SDAI::typed {

/// One member of a select: the name under which it is chosen, the kind of its value, and its type where the kind needs
/// it.
struct SelectMember {
    /// As the schema names the type, of static storage.
    const VnAnsiString* name;
    /// Of the member's value.
    VnTypeCodeKind kind;
    VnIfcEntityType** entity;            ///< entity members: the class's record
    const EnumerationClass* enumeration; ///< enumeration members
    const VnIfcAggr* prototype;          ///< aggregate members: a nil aggregate of the member's type
};

/// The descriptors of a select class, of pointers to it, and of its arrays and pointers to its aggregates if the schema
/// has such.
struct SelectDescriptors {
    ///@{
    /// The places of the descriptors of the select, of pointers to it, of arrays of it, and of pointers to its
    /// aggregate; the last two are null where the schema has no such aggregate.
    VnIfcVariantTypeSlot* value;
    VnIfcVariantTypeSlot* pointer;
    VnIfcVariantTypeSlot* array;
    VnIfcVariantTypeSlot* aggregate;
    ///@}
};

/// A select class as data.
struct SelectClass {
    /// As in the schema: "IfcValue".
    const char* name;
    /// In the order of the codes, nested selects flattened.
    std::span<const SelectMember> members;
    std::span<const std::uint16_t> index; ///< made by memberIndex
    VnIfcNameType** type;                 ///< the select's record in the dictionary
    /// The descriptors of values that hold the select.
    SelectDescriptors descriptors;

    /// The number of members, which is also the code for none.
    std::int32_t memberCount() const noexcept { return static_cast<std::int32_t>(members.size()); }
    /// The index of the member of that name, in any case; the number of members when there is none.
    VNIFC_API std::int32_t indexOf(std::string_view name) const noexcept;
};

/// Hash of a member's name, the same in any case.
constexpr std::size_t hashOfMember(std::string_view name) noexcept {
    std::size_t value = 0;
    for (const char c : name)
        value = value * 31 + static_cast<unsigned char>(c | 0x20);
    return value ^ (value >> 15);
}

/// Open hash table over the names of a select's members, made by the compiler: the reader looks one up with every typed
/// value. Entries are positions from 1, 0 is free; the first of equal names comes first.
template <std::size_t count>
consteval auto memberIndex(const std::string_view (&names)[count]) {
    std::array<std::uint16_t, std::bit_ceil(2 * count)> index{};
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t place = hashOfMember(names[i]) % index.size();
        while (index[place] != 0)
            place = (place + 1) % index.size();
        index[place] = static_cast<std::uint16_t>(i + 1);
    }
    return index;
}

///@{
/// A member of that kind of type; the arguments must be of static storage.
constexpr SelectMember entityMember(const VnAnsiString& name, VnIfcEntityType** entity) noexcept {
    return {&name, VnTypeCodeKind::kEntity, entity, nullptr, nullptr};
}
constexpr SelectMember simpleMember(const VnAnsiString& name, VnTypeCodeKind kind) noexcept {
    return {&name, kind, nullptr, nullptr, nullptr};
}
constexpr SelectMember enumerationMember(const VnAnsiString& name, const EnumerationClass& type) noexcept {
    return {&name, VnTypeCodeKind::kEnumeration, nullptr, &type, nullptr};
}
///@}
/// The prototype of members that are aggregates.
template <class Aggregate>
const Aggregate nilAggregate{};
/// A member that is an aggregate; the name must be of static storage.
template <class Aggregate>
constexpr SelectMember aggregateMember(const VnAnsiString& name) noexcept {
    return {&name, VnTypeCodeKind::kAggregation, nullptr, nullptr, &nilAggregate<Aggregate>};
}

/// What all select classes of the schema share: which member is chosen, and what follows from it. The chosen value
/// itself lives in the core's base. Codes run over the members in the schema's order, nested selects flattened; the
/// number of members means that none is chosen, one more that an instance was loaded but not yet classified.
class VNIFC_API Select : public VnIfcSelect {
public:
    /// Copies choice and value.
    Select(const Select&) = default;
    /// The select that is moved from is null then.
    Select(Select&& other) noexcept : VnIfcSelect(std::move(other)), m_discriminator(other.m_discriminator) {
        other.forget();
    }
    /// Takes choice and value; the select that is moved from is null then.
    Select& operator=(Select&& other) noexcept {
        if (this == &other)
            return *this;
        VnIfcSelect::operator=(std::move(other));
        m_discriminator = other.m_discriminator;
        other.forget();
        return *this;
    }

    std::int32_t _d() const noexcept override { return m_discriminator; }
    bool underlyingTypeName(const VnAnsiString& name) override;
    const VnAnsiString& underlyingTypeName() const override;
    const VnIfcNameType* type() const noexcept override;
    std::int32_t memberByName(const VnAnsiString& name) const override;

    /// The members of the derived class.
    virtual const SelectClass& selectClass() const noexcept = 0;
    /// True when an instance was taken from a file and belongs to no member, or is not yet classified.
    bool isPending() const noexcept { return m_discriminator == selectClass().memberCount() + 1; }
    /// The chosen member; null when none is chosen or an instance still awaits classification.
    const SelectMember* chosen() const noexcept;

protected:
    /// Without a choice; `unset` is the number of members.
    explicit Select(std::int32_t unset) noexcept : m_discriminator(unset) {}

    bool setHandleD(const VnDbObjectId& handle) override;
    void setHandleOnLoad(const VnDbObjectId& handle) override;
    void refreshSelectHandle() override;
    void unset() override;
    VN::ErrorStatus readTypedField(const VnAnsiString& typeName, VnSpfFilerBase* filer) override;
    VN::ErrorStatus writeTypedField(VnSpfFilerBase* filer) const override;
    bool chooseForReading(std::string_view name) override;
    bool chosenKind(VnTypeCodeKind& kind) const noexcept override;
    const VnIfcVariantType* chosenEnumeration() const override;
    std::uint32_t chosenLiteralCount() const noexcept override;

    /// Chooses by code and leaves the value as it is.
    void setDiscriminator(std::int32_t code) noexcept { m_discriminator = code; }
    /// True when the member of that code is chosen, also when an instance from a file is not yet classified.
    bool is(std::int32_t code) const noexcept {
        return m_discriminator == code || (isPending() && memberOf(getHandle()) == code);
    }
    /// Chooses a member that is no entity, without giving it a value; 18 for any other code.
    VN::ErrorStatus chooseType(std::int32_t code);
    /// Holds the instance's handle and finds its member. Null, an instance outside of a model, and one that belongs to
    /// no member null the select.
    void setInstance(const VnIfcEntityBase* instance);
    ///@{
    /// Chooses the member of that code and gives it the value; nothing is chosen for a code of no member or of an
    /// entity.
    void setText(std::int32_t code, VnAnsiString value);
    void setBinary(std::int32_t code, VnAnsiString value);
    void setInteger(std::int32_t code, int value);
    void setReal(std::int32_t code, double value);
    void setBooleanValue(std::int32_t code, VnIfcBoolean value);
    void setLogicalValue(std::int32_t code, VnIfcLogical value);
    void setEnumeration(std::int32_t code, std::uint32_t value);
    ///@}
    /// Chooses the member of that code and gives it copies of the elements, whose type must be the member's.
    template <class T>
    void setAggregate(std::int32_t code, const VnIfcArray<T>& value) {
        if (chooseType(code) != VN::eOk)
            return;
        static_cast<VnIfcAggrOf<T>&>(*getAggr()).assign(std::span<const T>(value));
    }

    // For the derived classes: between selects of different classes there is no assignment.
    /// Copies choice and value.
    Select& operator=(const Select&) = default;

private:
    friend bool assignSelect(VnIfcSelect& select, const SelectClass& type, const VnIfcVariant& value,
                             const VnIfcModel* home);

    void forget() noexcept { m_discriminator = selectClass().memberCount(); }
    /// The member of a code; null when there is none.
    const SelectMember* memberAt(std::int32_t code) const noexcept;
    /// The first member that the instance belongs to; the number of members when there is none.
    std::int32_t memberOf(const VnDbObjectId& handle) const noexcept;

    std::int32_t m_discriminator;
};

static_assert(sizeof(Select) == 32);

/// The select classes of all releases.
template <class S>
concept SelectType = std::derived_from<S, Select> && requires {
    S::s_class;
};

/// The selects that aggregates of class Aggregate hold in the schema.
template <class S, class Aggregate>
concept SelectInAggregate = SelectType<S> && std::same_as<typename S::Aggregate, Aggregate>;

} // namespace VN_SDAI::typed

namespace VN_SDAI {

/// The descriptor of the select class S.
template <typed::SelectType S>
struct VnIfcVariantType::Desc<S> {
    /// The descriptor, made if there is none.
    static const VnIfcVariantType& value() { return S::s_class.descriptors.value->value(); }
    /// Destroys the descriptor; nothing may use it any more.
    static void release() noexcept { S::s_class.descriptors.value->release(); }
};

/// The descriptor of pointers to S.
template <typed::SelectType S>
struct VnIfcVariantType::Desc<S*> {
    /// The descriptor, made if there is none.
    static const VnIfcVariantType& value() { return S::s_class.descriptors.pointer->value(); }
    /// Destroys the descriptor; nothing may use it any more.
    static void release() noexcept { S::s_class.descriptors.pointer->release(); }
};

/// The descriptor of arrays of S, for the selects that stand in aggregates.
template <typed::SelectType S>
requires requires { typename S::Aggregate; }
struct VnIfcVariantType::Desc<VnIfcArray<S, VnIfcArrayObjectCopyReallocator<S>>> {
    /// The descriptor, made if there is none.
    static const VnIfcVariantType& value() { return S::s_class.descriptors.array->value(); }
    /// Destroys the descriptor; nothing may use it any more.
    static void release() noexcept { S::s_class.descriptors.array->release(); }
};

/// The descriptor of pointers to the SETs of S.
template <class S>
requires typed::SelectInAggregate<S, VnIfcSetAggr<S>>
struct VnIfcVariantType::Desc<VnIfcSetAggr<S>*> {
    /// The descriptor, made if there is none.
    static const VnIfcVariantType& value() { return S::s_class.descriptors.aggregate->value(); }
    /// Destroys the descriptor; nothing may use it any more.
    static void release() noexcept { S::s_class.descriptors.aggregate->release(); }
};

/// The descriptor of pointers to the LISTs of S.
template <class S>
requires typed::SelectInAggregate<S, VnIfcListAggr<S>>
struct VnIfcVariantType::Desc<VnIfcListAggr<S>*> {
    /// The descriptor, made if there is none.
    static const VnIfcVariantType& value() { return S::s_class.descriptors.aggregate->value(); }
    /// Destroys the descriptor; nothing may use it any more.
    static void release() noexcept { S::s_class.descriptors.aggregate->release(); }
};

} // namespace VN_SDAI
