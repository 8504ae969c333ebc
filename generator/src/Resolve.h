#pragma once

#include "BuildingOrder.h"
#include "Model.h"

#include <optional>

namespace expgen {

/// Where a release's dictionary differs from its declarations.
struct Differences {
    std::optional<SchemaDecl> enumerations; ///< the dictionary's, in place of the declared ones
    /// Names each select and each defined type once; entities in it come first, the others follow in the text's order.
    /// Without it all are built in the text's order.
    std::optional<BuildingOrder> order;
};

/// Resolves the names of `schema`. Throws ExpressError on a name that does not fit.
Model resolve(const SchemaDecl& schema, const Differences& differences = {});

} // namespace expgen
