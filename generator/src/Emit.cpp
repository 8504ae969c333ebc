#include "Emit.h"

namespace expgen {

Files emit(const Model& model, const Target& target) {
    Files files;
    emitEnumerations(files, model, target);
    emitSelects(files, model, target);
    emitEntities(files, model, target);
    emitDictionary(files, model, target);
    emitProperties(files, model, target);
    emitModule(files, target);
    return files;
}

} // namespace expgen
