#pragma once
#include <vnifc/Model.h>

#include <cstdint>
#include <string_view>

namespace vnifc::detail {

/// What a number of type IfcParameterValue is measured in.
enum class ParameterKind : std::uint8_t {
    kPlain, ///< nothing: it stays as it is whatever the units
    kLength,
    kAngle,
    kUnknown
};

/// By what the instance is about: the parameter of a circle is an angle, that of a line or B-spline curve a mere
/// number.
ParameterKind parameterKind(const Instance& instance, std::string_view attribute);
/// True when the coordinates in the parameter space of the surface are lengths, as everywhere else.
bool hasLengthsAsParameters(const Instance& surface);

} // namespace vnifc::detail
