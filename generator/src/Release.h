#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace expgen {

/// A name, or the beginning of names, that FILE_SCHEMA has for files that are read with the classes of a release.
struct ServedName {
    std::string text;      ///< upper case; without the asterisk of a beginning
    bool isPrefix = false; ///< stands for all names that begin so
    bool differs = false;  ///< of another text, whose entities differ
};

/// What the build knows of a release beside its declarations: the contents of its release.txt.
struct Release {
    std::string name;       ///< of the schema, and of the namespace and the header folder of its classes: "IFC4X3_ADD2"
    std::string module;     ///< "VnIfc4x3Add2"
    std::string package;    ///< "vnifc-ifc4x3-add2"
    std::string title;      ///< for people: "IFC 4.3 ADD2 (ISO 16739-1:2024)"
    std::string version[2]; ///< enumerators of the core's major and minor version
    bool isPlain = false;   ///< its Module.h declares the entry points under their plain names, too
    std::vector<ServedName> serves;
    std::map<std::string, std::size_t, std::less<>> totals;

    std::string api() const { return name + "_API"; }
    /// "vnIfc4x3Add2Module"
    std::string entryPoints() const;
};

/// Reads a release.txt: a line is a keyword and its value, "#" begins a remark. Throws ExpressError; `file` names the
/// text in its message.
Release readRelease(std::string_view file, std::string_view text);

/// The core's table of releases: which of them serves which FILE_SCHEMA, as the text of a C++ source.
std::string emitCatalogue(const std::vector<Release>& releases);

} // namespace expgen
