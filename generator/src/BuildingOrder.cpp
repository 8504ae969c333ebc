#include "BuildingOrder.h"

namespace expgen {

BuildingOrder readBuildingOrder(std::string_view file, std::string_view text) {
    BuildingOrder order{std::string(file), {}};
    for (int line = 1; !text.empty(); ++line) {
        const std::size_t end = text.find('\n');
        std::string_view name = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (name.ends_with('\r'))
            name.remove_suffix(1);
        if (!name.empty() && name.front() != '#')
            order.names.push_back({std::string(name), {line, 1}});
    }
    return order;
}

} // namespace expgen
