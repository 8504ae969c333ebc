#include "Model.h"

#include <algorithm>

namespace expgen {
namespace {

std::string layersText(const Type& type, std::size_t depth) {
    static constexpr std::string_view kNames[] = {"array", "bag", "list", "set"};
    std::string text;
    for (; depth < type.layers.size(); ++depth) {
        const Layer& layer = type.layers[depth];
        text += kNames[static_cast<std::size_t>(layer.kind)];
        text += " [" + layer.lower.text + ":" + layer.upper.text + "] of ";
    }
    return text;
}

template <class Record>
const Record* find(const std::vector<Record>& records, std::string_view name) {
    const auto found = std::find_if(records.begin(), records.end(),
                                    [name](const Record& record) { return equalNoCase(record.name, name); });
    return found == records.end() ? nullptr : &*found;
}

} // namespace

std::string typeText(const Type& type, std::size_t depth) { return layersText(type, depth) + type.name; }

std::string attributeTypeText(const Type& type) { return layersText(type, 0) + upper(type.name); }

std::vector<const Entity*> Entity::lineage() const {
    std::vector<const Entity*> result;
    for (const Entity* entity = this; entity != nullptr; entity = entity->supertype)
        result.push_back(entity);
    std::reverse(result.begin(), result.end());
    return result;
}

bool Entity::changesFields() const {
    return std::any_of(fields.begin(), fields.end(), [this](const Field& field) { return field.owner == this; });
}

bool Entity::hasProperties() const {
    return !explicits.empty() || !inverses.empty() ||
           std::any_of(derived.begin(), derived.end(), [](const auto& attribute) { return attribute.redeclaredOwner; });
}

const Entity* Model::findEntity(std::string_view name) const { return find(entities, name); }

const Select* Model::findSelect(std::string_view name) const { return find(selects, name); }

} // namespace expgen
