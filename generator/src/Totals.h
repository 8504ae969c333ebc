#pragma once

#include "Model.h"

#include <string>
#include <vector>

namespace expgen {

/// Compares the model with the known totals of the schema. One message per total that is off, naming what was
/// expected and found; empty when all are right.
std::vector<std::string> wrongTotals(const Model& model);

} // namespace expgen
