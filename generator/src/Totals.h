#pragma once

#include "Model.h"
#include "Release.h"

#include <string>
#include <vector>

namespace expgen {

/// Compares the model with the totals that the release's facts give. One message per total that is off, naming what was
/// expected and found; empty when all are right.
std::vector<std::string> wrongTotals(const Model& model, const Release& release);

/// All totals of a model as lines of a release.txt.
std::string totalsText(const Model& model);

} // namespace expgen
