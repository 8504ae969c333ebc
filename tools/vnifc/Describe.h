#pragma once
#include <CLI/CLI.hpp>

#include <filesystem>

namespace vnifc::tool {

/// Writes what follows from the definitions of the commands into `directory`, which is made when it is missing: manual
/// pages (vnifc.1, vnifc-info.1 and so on) and completion scripts (vnifc for bash, _vnifc for zsh, vnifc.fish). Throws
/// Failure when it cannot.
void describeCommands(const CLI::App& app, const std::filesystem::path& directory);

} // namespace vnifc::tool
