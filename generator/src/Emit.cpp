#include "Emit.h"

namespace expgen {

Files emit(const Model& model, const InputNames& inputs) {
    Files files;
    emitEnumerations(files, model, inputs);
    emitSelects(files, model, inputs);
    emitEntities(files, model, inputs);
    emitDictionary(files, model, inputs);
    emitProperties(files, model, inputs);
    return files;
}

} // namespace expgen
