#include "Emit.h"
#include "Writer.h"

namespace expgen {

std::vector<Property> propertiesOf(const Entity& entity) {
    std::vector<Property> properties;
    const auto add = [&](const std::string& attribute, std::string_view part, std::size_t index) {
        properties.push_back({entity.name + attribute + "Property", part, index});
    };
    for (std::size_t i = 0; i < entity.explicits.size(); ++i)
        add(entity.explicits[i].name, "kExplicit", i);
    for (std::size_t i = 0; i < entity.derived.size(); ++i)
        if (entity.derived[i].redeclaredOwner != nullptr)
            add(entity.derived[i].name, "kRedeclared", i);
    for (std::size_t i = 0; i < entity.inverses.size(); ++i)
        add(entity.inverses[i].name, "kInverse", i);
    return properties;
}

void emitProperties(Files& files, const Model& model, const Target& target) {
    Writer out(target);
    out.line("#pragma once");
    out.includeClass("Release");
    out.include("VnIfcTyped/AttributeProperty.h");
    out.line("\n// The property classes of all attributes. To use one, include its entity's header as well.");
    out.openNamespace();
    for (const Entity& entity : model.entities) {
        if (!entity.hasProperties())
            continue;
        out.line("class ", entity.name, ";");
        for (const Property& property : propertiesOf(entity)) {
            out.line("using ", property.name, " = typed::AttributePropertyOf<", entity.name,
                     ", typed::AttributePart::", property.part, ", ", property.index, ">;");
        }
    }
    out.closeNamespace();
    files[target.header("AttributeProperties")] = out.take();
}

} // namespace expgen
