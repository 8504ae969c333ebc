#pragma once
#include <vnifc/Rules.h>

#include <cstddef>
#include <string>
#include <string_view>

// Pages for people: HTML that needs neither network nor program, opens from disk, and executes nothing of what it
// shows, whatever a file holds.
namespace vnifc {

struct ReportOptions {
    std::string title = {};                ///< how the page calls the model, in UTF-8: the name of its file
    std::span<const Finding> reading = {}; ///< what was found while reading; none: what the model has kept
    const Rules* rules = nullptr;          ///< the rules of the model's release, to be checked too
    std::size_t shownFindings = 200;       ///< of each kind so many are on the page; all are counted
    unsigned threads = 0;                  ///< 0: as many as the machine has
};

/// A page about a model: what it holds, the spatial structure, types, property sets and how completely they are filled,
/// materials, classifications, quantities by storey in SI units, what a check finds, and all rooted instances with
/// their attributes and properties, to be searched. The data is compressed where the library has zlib (hasZlib), and
/// rendered on demand. Sets the inverse attributes, unless they are set.
VNIFC_LAYER_API std::string report(Model& model, const ReportOptions& options = {});

/// A page with the dictionary of a release, by its name in any case: entities with their inheritance, attributes and
/// inverse attributes, types, selects and enumerations, all linked, to be searched. Throws FileError when the release
/// is not known or not installed.
VNIFC_LAYER_API std::string dictionaryPage(std::string_view release);

/// True when the library was built with zlib; without it pages are several times as large.
VNIFC_LAYER_API bool hasZlib() noexcept;

} // namespace vnifc
