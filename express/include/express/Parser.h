#pragma once

#include "Syntax.h"

#include <cstdint>
#include <string_view>

namespace express {

/// How much of a text is read.
enum class Extent : std::uint8_t {
    kDeclarations, ///< types and entities; expressions and algorithms are skipped
    kWhole,        ///< with domain rules, derivations, constants, functions, procedures and rules
};

/// Reads the one SCHEMA in `source` (ISO 10303-11). Interface clauses and SUBTYPE_CONSTRAINTs are skipped. `file` names
/// the source in errors. What is read whole points into `source`, which must outlive it. Throws ExpressError.
SchemaDecl parseSchema(std::string_view file, std::string_view source, Extent extent = Extent::kDeclarations);

/// Reads one expression, and nothing after it. It points into `source`. Throws ExpressError.
Expression parseExpression(std::string_view file, std::string_view source);

} // namespace express
