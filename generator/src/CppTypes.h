#pragma once

#include "Model.h"

#include <string>

namespace expgen {

/// C++ type of a value, or of an aggregation's innermost element.
std::string valueType(const Type& type);

/// C++ type of the member that holds an attribute.
std::string memberType(const Type& type);

/// C++ type of the plain array in which an aggregation's contents are handed over.
std::string arrayType(const Type& type);

/// What stands after a member's name in its declaration, so that it starts unset.
std::string unsetInitialiser(const Type& type);

/// A bound as the dictionary's and the inverse attributes' tables write it: a number or "kUnbounded".
std::string boundText(const Bound& bound);

} // namespace expgen
