#pragma once
#include "Commands.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace vnifc::tool {

/// What the command line asks for.
using Task = std::function<ExitCode()>;

/// Adds --schema.
void addReleaseOption(CLI::App& command, std::string& release, const std::string& description);
/// Adds --threads, --quiet and --schema.
void addLoadFlags(CLI::App& command, ReadFlags& flags);
/// Adds FILE, and what addLoadFlags adds.
void addReadFlags(CLI::App& command, ReadFlags& flags);

/// Adds the commands that work on what a selector picks: find, set.
void addSelectingCommands(CLI::App& app, Task& task);
/// Adds the commands that work on whole models: diff, extract, export, merge, optimise.
void addWholeModelCommands(CLI::App& app, Task& task);

} // namespace vnifc::tool
