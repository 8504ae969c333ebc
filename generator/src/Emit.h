#pragma once

#include "Model.h"
#include "Release.h"

#include <map>
#include <string>

namespace expgen {

/// What the generated files are for.
struct Target {
    Release release;
    std::string source; ///< names the inputs in the first line of each file: "schemas/ifc4x3"

    /// Path of a generated header: "include/IFC4X3/IfcWall.h".
    std::string header(const std::string& name) const { return "include/" + release.name + "/" + name + ".h"; }
};

/// Relative path of each generated file and its text.
using Files = std::map<std::string, std::string>;

/// All generated files. The same model gives the same texts.
Files emit(const Model& model, const Target& target);

void emitEnumerations(Files& files, const Model& model, const Target& target);
void emitSelects(Files& files, const Model& model, const Target& target);
void emitEntities(Files& files, const Model& model, const Target& target);
void emitDictionary(Files& files, const Model& model, const Target& target);
void emitProperties(Files& files, const Model& model, const Target& target);
void emitModule(Files& files, const Target& target);

/// The property class of an attribute: its name, and which of the entity's own attributes it is for.
struct Property {
    std::string name;      ///< "IfcRootGlobalIdProperty"
    std::string_view part; ///< enumerator of AttributePart
    std::size_t index = 0; ///< within that part
};

/// The property classes of an entity's own attributes, in declared order.
std::vector<Property> propertiesOf(const Entity& entity);

} // namespace expgen
