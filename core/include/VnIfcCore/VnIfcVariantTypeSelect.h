#pragma once
#include <VnIfcCore/VnIfcSelect.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <memory>
#include <typeinfo>

namespace VN_SDAI {

/// What all descriptors share whose values are selects, or point to one.
class VNIFC_API VnIfcSelectVariantType : public VnIfcVariantType {
public:
    ~VnIfcSelectVariantType() override;
    bool isSelect() const noexcept override { return true; }
    bool subEqualTo(const void* left, const void* right) const override;
    /// To what the chosen member's value converts to, to a copy of the select, and to a pointer to it.
    bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                        VnIfcVariant& result) const override;
    /// From an instance that belongs to a member, and from another select whose chosen member this one has too.
    bool subFromValueType(const VnIfcVariant& source, VnIfcVariant& result) const override;
    bool subToString(VrString& text, const void* value, StringFormat format) const override;
    VnAnsiString subTypePath(const VnIfcVariant& value) const override;
    /// The select that a variant holds or points to; null when it is not of this type.
    virtual VnIfcSelect* selectIn(const VnIfcVariant& value) const noexcept;
    /// The select that a value of this type is or points to.
    virtual VnIfcSelect* selectAt(const void* value) const noexcept = 0;

    /// True when the select is of the class that this descriptor is for.
    virtual bool accepts(const VnIfcSelect& select) const noexcept = 0;
    /// A variant of this type for a select of that class: a copy of it, or a pointer to it.
    virtual VnIfcVariant variantOf(const VnIfcSelect& select) const = 0;

protected:
    using VnIfcVariantType::VnIfcVariantType;
};

/// What the descriptors of select values share; the values are held on the heap.
class VNIFC_API VnIfcSelectValueTypeBase : public VnIfcSelectVariantType, public IVnIfcVariantTypeObjectAllocator {
public:
    ~VnIfcSelectValueTypeBase() override;
    const IVnIfcVariantTypeObjectAllocator* objectMemAllocator() const noexcept override { return this; }
    /// A pointer to the select points to a copy, since the one in `source` goes with it.
    bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                        VnIfcVariant& result) const override;
    VnIfcSelect* selectAt(const void* value) const noexcept override;
    VnIfcVariant variantOf(const VnIfcSelect& select) const override { return VnIfcVariant(*this, &select); }

protected:
    /// `schema` and `name` are the parts of the qualified name, `size` that of the select class in bytes.
    VnIfcSelectValueTypeBase(std::string_view schema, std::string_view name, std::uint32_t size);
};

/// What the descriptors of pointers to selects share. A pointer that a conversion or createVariant makes keeps its
/// select alive, and so do its copies; all others point to what is not theirs.
class VNIFC_API VnIfcSelectPtrValueTypeBase : public VnIfcSelectVariantType {
public:
    ~VnIfcSelectPtrValueTypeBase() override;
    VnIfcSelect* selectAt(const void* value) const noexcept override;
    VnIfcVariant variantOf(const VnIfcSelect& select) const override;
    bool createVariant(VnIfcVariant& value) const override;
    /// A pointer that keeps its select alive.
    VnIfcVariant variantOf(std::shared_ptr<VnIfcSelect> select) const;

protected:
    /// `schema` and `name` are the parts of the qualified name of the select class.
    VnIfcSelectPtrValueTypeBase(std::string_view schema, std::string_view name);
    /// A new select for a pointer to point to; null when the class is not known.
    virtual std::shared_ptr<VnIfcSelect> createSelect() const = 0;
};

/// The descriptor of the select class S of a schema module.
template <class S>
class VnIfcSelectValueTypePOD final : public VnIfcSelectValueTypeBase {
public:
    VnIfcSelectValueTypePOD() : VnIfcSelectValueTypeBase(S::kSchemaName, S::s_class.name, sizeof(S)) {}
    bool accepts(const VnIfcSelect& select) const noexcept override { return typeid(select) == typeid(S); }
    void* create() const override { return new S; }
    void* copy(const void* object) const override { return new S(*static_cast<const S*>(object)); }
    void destroy(void* object) const noexcept override { delete static_cast<S*>(object); }
};

/// The descriptor of a pointer to a select class.
template <class P>
class VnIfcSelectPtrValueTypePOD;

/// The descriptor of pointers to selects of class S.
template <class S>
class VnIfcSelectPtrValueTypePOD<S*> final : public VnIfcSelectPtrValueTypeBase {
public:
    VnIfcSelectPtrValueTypePOD() : VnIfcSelectPtrValueTypeBase(S::kSchemaName, S::s_class.name) {}
    bool accepts(const VnIfcSelect& select) const noexcept override { return typeid(select) == typeid(S); }

protected:
    std::shared_ptr<VnIfcSelect> createSelect() const override { return std::make_shared<S>(); }
};

} // namespace VN_SDAI
