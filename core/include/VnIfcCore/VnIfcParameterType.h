#pragma once
#include <VnIfcCore/VnTypeCode.h>

#include <memory>

namespace VN_SDAI {

/// Whatever can be the type of an attribute or an element: simple, named, enumeration, select and aggregation types
/// (ISO 10303-22, base_type).
class VNIFC_API VnIfcParameterType : public DictionaryInstance {
public:
    ~VnIfcParameterType() override;

    /// Attaches a type code and owns it from then on, in place of the one before; null takes it away.
    virtual void type(VnTypeCode* typeCode);
    /// The attached type code; null when there is none.
    const VnTypeCode* typeCode() const noexcept { return m_typeCode.get(); }
    /// What kind of value the type describes; a defined type has the kind of the type beneath it, and kNone while that
    /// is not resolved.
    virtual VnTypeCodeKind kind() const noexcept = 0;

protected:
    VnIfcParameterType() = default;

private:
    std::unique_ptr<VnTypeCode> m_typeCode;
};

/// A simple type (ISO 10303-11, 8.1). NUMBER counts as REAL.
class VNIFC_API VnIfcSimpleType : public VnIfcParameterType {
public:
    /// `kind` is that of a simple type.
    explicit VnIfcSimpleType(VnTypeCodeKind kind) noexcept : m_kind(kind) {}
    ~VnIfcSimpleType() override;
    VnTypeCodeKind kind() const noexcept override { return m_kind; }

private:
    VnTypeCodeKind m_kind;
};

/// STRING (ISO 10303-11, 8.1.6), and BINARY where it has a width.
class VNIFC_API VnIfcStringType : public VnIfcSimpleType {
public:
    /// The width of a string without one.
    static constexpr int kNoWidth = 0;

    /// `fixed`: values have exactly the width. The width is in characters, of a binary in bits.
    explicit VnIfcStringType(bool fixed = false, int width = kNoWidth) noexcept
        : VnIfcSimpleType(VnTypeCodeKind::kString), m_fixed(fixed), m_width(width) {}
    ~VnIfcStringType() override;

    /// Values have exactly, not at most, the width.
    bool isFixed() const noexcept { return m_fixed; }
    /// In characters (of a binary: bits); kNoWidth when the schema gives none.
    int width() const noexcept { return m_width; }

private:
    bool m_fixed;
    int m_width;
};

} // namespace VN_SDAI
