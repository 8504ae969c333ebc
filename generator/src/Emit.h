#pragma once

#include "Model.h"

#include <map>
#include <string>

namespace expgen {

/// The inputs as the first line of a generated file names them: "express/ifc4x3.exp".
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

} // namespace expgen
