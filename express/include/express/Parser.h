#pragma once

#include "Syntax.h"

#include <string_view>

namespace express {

/// Reads the declarations of the one SCHEMA in `source` (ISO 10303-11): types and entities. Constants, functions,
/// procedures, rules, interface clauses, domain rules and expressions are skipped. `file` names the source in
/// errors. Throws ExpressError.
SchemaDecl parseSchema(std::string_view file, std::string_view source);

} // namespace express
