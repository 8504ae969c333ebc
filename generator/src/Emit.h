#pragma once

#include "Model.h"

#include <map>
#include <string>

namespace expgen {

/// The inputs as the first line of a generated file names them: "schemas/ifc4x3/declarations.exp".
struct InputNames {
    std::string schema;
    std::string enumerations;
    std::string order;
};

/// Relative path of each generated file and its text.
using Files = std::map<std::string, std::string>;

/// All generated files. The same model gives the same texts.
Files emit(const Model& model, const InputNames& inputs);

void emitEnumerations(Files& files, const Model& model, const InputNames& inputs);
void emitSelects(Files& files, const Model& model, const InputNames& inputs);
void emitEntities(Files& files, const Model& model, const InputNames& inputs);
void emitDictionary(Files& files, const Model& model, const InputNames& inputs);
void emitProperties(Files& files, const Model& model, const InputNames& inputs);

/// The property class of an attribute: its name, and which of the entity's own attributes it is for.
struct Property {
    std::string name;      ///< "IfcRootGlobalIdProperty"
    std::string_view part; ///< enumerator of AttributePart
    std::size_t index = 0; ///< within that part
};

/// The property classes of an entity's own attributes, in declared order.
std::vector<Property> propertiesOf(const Entity& entity);

} // namespace expgen
