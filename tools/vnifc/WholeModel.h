#pragma once
#include "Commands.h"

#include <vnifc/Model.h>

#include <string>
#include <vector>

namespace vnifc::tool {

/// Reads a file into a model of the library, as LoadedFile does.
Model openModel(const ReadFlags& flags);
/// Success, or that the file has errors.
ExitCode exitCodeOf(const Model& model) noexcept;

struct DiffFlags {
    std::string other; ///< the new file
    double tolerance = 1e-9;
    std::vector<std::string> ignored;
    std::uint64_t limit = 20; ///< of an object so many details are said; 0 for all
    bool json = false;
};

/// Tells what differs between two files. kSuccess when nothing does, 1 otherwise, whatever findings the files bring.
ExitCode diffFiles(const ReadFlags& flags, const DiffFlags& options);

/// Writes the objects that a selector picks with all that they need.
ExitCode extractFile(const ReadFlags& flags, const std::string& target, const std::string& selector);
/// Writes the file without what it says twice or what nothing refers to.
ExitCode optimiseFile(const ReadFlags& flags, const std::string& target, bool unusedObjects);

/// Writes several files as one. The first one's project and units hold.
ExitCode mergeFiles(const ReadFlags& flags, const std::string& target, const std::vector<std::string>& others,
                    bool equalStoreys);

enum class TableFormat : std::uint8_t { kCsv, kSqlite };
/// Writes a table for each entity: into a folder of .csv files, or a database.
ExitCode exportTables(const ReadFlags& flags, TableFormat format, const std::string& target);

} // namespace vnifc::tool
