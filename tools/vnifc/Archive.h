#pragma once
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Exchange files in ZIP archives (ifcZIP).
namespace vnifc::tool {

/// True for names that end in .ifczip or .zip, in any case.
bool isArchiveName(std::string_view name);

/// The exchange file in an archive; nothing when the file is no archive, whatever its name. "-" is standard input;
/// what could not be told from an archive without taking it out of a pipe is returned as it is.
///
/// An archive holds one exchange file, under any name; among several files the first one whose name ends in .ifc is
/// taken, and `say` told which. Inflated, it may have 200 times the size that it has in the archive, or 16 MiB if that
/// is more, and a quarter of the machine's memory at most. Throws Failure when there is nothing to take, when it is
/// larger and when the archive is broken.
std::optional<std::string> readArchive(const std::string& file, const std::function<void(std::string_view)>& say);

/// Writes an archive that holds this text as an exchange file. Throws Failure; an existing file is then as it was.
void writeArchive(const std::string& target, std::string_view text);

} // namespace vnifc::tool
