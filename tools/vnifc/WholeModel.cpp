#include "WholeModel.h"

#include "LoadedFile.h"

namespace vnifc::tool {

Model openModel(const ReadFlags& flags) { return Model(LoadedFile(flags).take()); }

ExitCode exitCodeOf(const Model& model) noexcept { return model.errors() > 0 ? kErrorsInFile : kSuccess; }

} // namespace vnifc::tool
