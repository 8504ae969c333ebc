#pragma once
#include <VnIfcCore/DictionaryInstance.h>
#include <VnIfcCore/VnAnsiString.h>

#include <span>
#include <vector>

namespace VN_SDAI {

/// A parameter of a type code: a text.
class VnAny {
public:
    /// Sets the text.
    VnAny& operator<<(VnAnsiString text) noexcept {
        m_text = std::move(text);
        return *this;
    }
    /// The text that was set; empty before.
    const VnAnsiString& text() const noexcept { return m_text; }

private:
    VnAnsiString m_text;
};

/// Describes a constructed type by its kind and parameters: first the type's name, then an enumeration's literals.
class VNIFC_API VnTypeCode : public DictionaryInstance {
public:
    /// Without parameters.
    explicit VnTypeCode(VnTypeCodeKind kind) noexcept : m_kind(kind) {}
    ~VnTypeCode() override;

    /// The kind of the type that is described.
    VnTypeCodeKind kind() const noexcept { return m_kind; }
    /// Adds a copy of the parameter after those that are there.
    void appendParameter(const VnAny& parameter) { m_parameters.push_back(parameter); }
    /// In the order in which they were appended.
    std::span<const VnAny> parameters() const noexcept { return m_parameters; }

private:
    VnTypeCodeKind m_kind;
    std::vector<VnAny> m_parameters;
};

} // namespace VN_SDAI
