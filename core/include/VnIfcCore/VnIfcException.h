#pragma once
#include <VnIfcCore/VnAnsiString.h>

#include <exception>
#include <string>

namespace VN_SDAI {

/// Refused access to a model (ISO 10303-22 error indicators): a code, a message and the place that refused.
class VNIFC_API VnIfcException : public std::exception {
public:
    /// A write to a model that is open for reading only, and any access to one that is not open (ISO 10303-22, error
    /// indicators MX-NRW and MX-NDEF).
    enum Code : int { kNotReadWrite = 180, kAccessNotDefined = 190 };

    /// Copies the message; null is not allowed.
    VnIfcException(int code, const char* message, std::string place)
        : m_code(code), m_message(message), m_place(std::move(place)) {}
    ~VnIfcException() override;

    /// One of Code.
    int code() const noexcept { return m_code; }
    /// The message, for example "SDAI-model access not read-write".
    const char* what() const noexcept override { return m_message.c_str(); }
    /// The operation that refused, for example "IFC4X3::IfcActor::putAttr".
    const std::string& place() const noexcept { return m_place; }

private:
    int m_code;
    std::string m_message;
    std::string m_place;
};

} // namespace VN_SDAI
