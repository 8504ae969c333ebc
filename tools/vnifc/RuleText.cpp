#include "RuleText.h"

#include <VnIfcCore/VnIfcSchema.h>

#include <fmt/format.h>

namespace vnifc::tool {

std::optional<Rules> rulesFor(const VN_SDAI::VnIfcModel& model, const std::string& text) {
    const VN_SDAI::VnIfcSchema& schema = *model.schema();
    std::optional<std::filesystem::path> path;
    if (text.empty())
        path = Rules::find(schema.name().view());
    else
        path = text;
    if (!path)
        return std::nullopt;
    try {
        return Rules::load(*path, schema);
    } catch (const RulesError& error) {
        throw Failure(kFileFailure, error.what());
    }
}

std::string howToHaveRules(const VN_SDAI::VnIfcModel& model) {
    const std::string_view name = model.schema()->name().view();
    return fmt::format("there is no text of the rules of {0}: name it with --rules, or put it as {0}.exp into "
                       "$VNIFC_RULES or ~/.local/share/vnifc/rules",
                       name);
}

} // namespace vnifc::tool
