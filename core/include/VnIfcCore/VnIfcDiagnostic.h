#pragma once
#include <VnRx/VnPlatform.h>

#include <cstdint>
#include <functional>
#include <string>

namespace VN_SDAI {

/// One thing that was noticed in an exchange file or a model.
struct VnIfcDiagnostic {
    /// What the finding means: something to know, kept without loss, or wrong.
    enum Severity : std::uint8_t { kInfo, kWarning, kError };

    /// How bad it is.
    Severity severity = kError;
    std::string code; ///< stable name of the kind of finding: "unknown-keyword"
    /// The input, as VnIfcReadOptions::name or its path says; empty for a finding about a model.
    std::string file;
    std::uint64_t line = 0;     ///< from 1; 0 when it has no place in a file
    std::uint64_t column = 0;   ///< in bytes, from 1
    std::uint64_t instance = 0; ///< its number; 0 when it concerns none
    std::string keyword;        ///< of the instance
    /// As declared: "GlobalId"; empty when it concerns none.
    std::string attribute;
    ///@{
    /// For people: what was there, and what should have been; UTF-8, empty where there is nothing to say.
    std::string found;
    std::string expected;
    ///@}
    std::string rule; ///< of the schema, that is violated or cannot be evaluated: "IfcWall.CorrectPredefinedType"

    /// One line for people: "file:3:17: error: #12 IFCWALL.Name: expected ..., found ...".
    VNIFC_API std::string text() const;
};

/// Receives diagnostics in the order of the file. Called by the thread that started the operation.
using VnIfcDiagnosticSink = std::function<void(const VnIfcDiagnostic&)>;

} // namespace VN_SDAI
