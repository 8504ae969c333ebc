#pragma once
#include <VnIfcCore/VnIfcArray.h>
#include <VnIfcCore/VnIfcVariantType.h>

#include <memory>
#include <span>

namespace VN_SDAI {

/// What all descriptors of enumeration types share. Values are 32-bit codes in the order of the literals; the number of
/// literals stands for "unset".
class VNIFC_API VnIfcVariantTypeEnumBase : public VnIfcVariantType, public IVnIfcVariantTypeEnumeration {
public:
    ~VnIfcVariantTypeEnumBase() override;
    const IVnIfcVariantTypeEnumeration* enumeration() const noexcept override { return this; }
    bool subEqualTo(const void* left, const void* right) const override;
    /// To text by the bare literal, always as `const char*`; to `unsigned long` and `int` by the code.
    bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                        VnIfcVariant& result) const override;
    /// The bare literal in every format; the empty text when unset.
    bool subToString(VrString& text, const void* value, StringFormat format) const override;
    bool createVariant(VnIfcVariant& value) const override;

    /// Of all enumerators, "unset" included.
    std::int32_t literalCount() const noexcept override { return static_cast<std::int32_t>(m_names.size()); }
    const VnAnsiString* literalName(std::int32_t index) const noexcept override {
        return m_names[static_cast<std::size_t>(index)].get();
    }

protected:
    /// `schema` and `name` are the parts of the qualified name; `literals` are bare, and must outlive the descriptor.
    VnIfcVariantTypeEnumBase(std::string_view schema, std::string_view name, std::span<const char* const> literals);

private:
    const char* literalOf(std::uint32_t code) const noexcept {
        return code < m_literals.size() ? m_literals[code] : nullptr;
    }

    std::span<const char* const> m_literals;
    VnIfcArray<std::unique_ptr<VnAnsiString>> m_names{8};
};

/// The descriptor of the enumeration class E of a schema module.
template <class E>
class VnIfcVariantTypeEnum final : public VnIfcVariantTypeEnumBase {
public:
    VnIfcVariantTypeEnum() : VnIfcVariantTypeEnumBase(E::kSchemaName, E::s_class.name, E::s_class.literals) {
        static_assert(sizeof(E) == sizeof(std::uint32_t));
    }
};

} // namespace VN_SDAI
