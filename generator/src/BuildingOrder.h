#pragma once

#include "Express.h"

#include <string>
#include <string_view>
#include <vector>

namespace expgen {

/// Names in the order in which the dictionary's records are built.
struct BuildingOrder {
    std::string file;
    std::vector<Name> names;
};

/// Reads one name a line; empty lines and lines that begin with '#' are remarks.
BuildingOrder readBuildingOrder(std::string_view file, std::string_view text);

} // namespace expgen
