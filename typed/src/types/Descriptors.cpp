#include <types/Descriptors.h>

namespace VN_SDAI::typed {

std::wstring aggregateName(std::string_view prefix, std::string_view schema, std::string_view select,
                           std::string_view suffix) {
    const std::string name = std::string(prefix).append(schema).append("::").append(select).append(suffix);
    return {name.begin(), name.end()};
}

} // namespace VN_SDAI::typed
