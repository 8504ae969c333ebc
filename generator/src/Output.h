#pragma once

#include "Emit.h"

#include <cstddef>
#include <filesystem>

namespace expgen {

/// Whole contents of a file. Throws std::system_error when it cannot be read.
std::string readFile(const std::filesystem::path& path);

/// Writes the files below `directory` whose contents differ from what is there, so that nothing else is rebuilt.
/// Answers how many were written. Throws std::system_error when one cannot be written.
std::size_t writeChanged(const Files& files, const std::filesystem::path& directory);

} // namespace expgen
