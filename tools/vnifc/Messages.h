#pragma once
#include <VnIfcCore/VnIfcDiagnostic.h>

#include <span>
#include <string>
#include <string_view>

namespace vnifc::tool {

/// Prints a line to standard error, after "vnifc: ". What comes from a file can neither break the line nor reach the
/// terminal as a command. A standard error that cannot be written is no reason to fail.
void say(std::string_view line);

/// As say, for a finding, which begins with its place, as those of compilers: editors go there.
void sayFinding(const VN_SDAI::VnIfcDiagnostic& finding);

/// A finding in one line, with its severity in colour where the stream has colours.
std::string findingLine(const VN_SDAI::VnIfcDiagnostic& finding, bool isColoured);

/// The text, in UTF-8, with a question mark in place of each control character.
std::string printable(std::string_view text);

/// " (did you mean X?)" with the most similar of the names; empty when none is near.
std::string didYouMean(std::string_view name, std::span<const std::string_view> known);

} // namespace vnifc::tool
