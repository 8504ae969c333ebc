#include "Inverse.h"

#include "Values.h"

#include <VnIfcCore/VnIfcEntityType.h>

#include <unordered_map>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

/// Collects the instances that a value refers to.
class Targets final : public ValueVisitor {
public:
    Instances take() { return std::move(m_targets); }
    void reference(const VnDbObjectId& handle) override {
        if (const VnIfcEntityBase* instance = handle.openObject())
            m_targets.push_back(instance);
    }

private:
    Instances m_targets;
};

/// The names of all inverse attributes of an entity.
const std::vector<const VnAnsiString*>& inverseNames(const VnIfcEntityType& entity) {
    static std::unordered_map<const VnIfcEntityType*, std::vector<const VnAnsiString*>> known;
    const auto [found, isNew] = known.try_emplace(&entity);
    if (isNew)
        for (const VnIfcAttributeDefinition* attribute : entity.allAttributes())
            if (attribute->attributeKind() == VnIfcAttributeDefinition::Kind::kInverse)
                found->second.push_back(&attribute->name());
    return found->second;
}

} // namespace

Instances targetsOf(const VnIfcEntityBase& instance, const VnAnsiString& attribute) {
    VnIfcVariant value;
    Targets targets;
    if (instance.getAttr(attribute, value))
        visitValue(value, targets);
    return targets.take();
}

std::vector<std::pair<const VnAnsiString*, Instances>> inversesOf(const VnIfcEntityBase& instance) {
    std::vector<std::pair<const VnAnsiString*, Instances>> inverses;
    if (const VnIfcEntityType* entity = instance.getInstanceType())
        for (const VnAnsiString* name : inverseNames(*entity))
            if (Instances targets = targetsOf(instance, *name); !targets.empty())
                inverses.emplace_back(name, std::move(targets));
    return inverses;
}

void writeInverses(JsonWriter& json, const VnIfcEntityBase& instance, bool describe) {
    DescribedJsonValues described(json);
    json.beginObject();
    for (const auto& [name, targets] : inversesOf(instance)) {
        json.key(*name);
        json.beginArray();
        for (const VnIfcEntityBase* target : targets)
            describe ? described.reference(target->objectId()) : json.number(target->objectId().number());
        json.endArray();
    }
    json.endObject();
}

} // namespace vnifc::tool
