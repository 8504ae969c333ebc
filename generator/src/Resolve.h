#pragma once

#include "BuildingOrder.h"
#include "Model.h"

namespace expgen {

/// Resolves the names of `schema`. `records` declares the dictionary's enumerations, which replace those of the
/// schema in the dictionary only. `order` must name each select and each defined type once; entities in it come
/// first, the others follow in the text's order. Throws ExpressError on a name that does not fit.
Model resolve(const SchemaDecl& schema, const SchemaDecl& records, const BuildingOrder& order);

} // namespace expgen
