#pragma once
#include <vnifc/Model.h>

#include <filesystem>
#include <functional>

namespace vnifc {

struct TableOptions {
    std::function<bool(double)> progress = {}; ///< as in OpenOptions
};

/// What was written.
struct TableResult {
    std::uint64_t tables = 0;
    std::uint64_t rows = 0;
};

// A table for each entity that a model has instances of, under the entity's name, with a row for each instance. The
// first column is instance_id, the number; then come the attributes under their names, inherited ones first.
// - Texts are UTF-8; booleans are 0 and 1, of LOGICAL also UNKNOWN; literals stand without dots; a reference is the
//   number of the instance. What is unset is NULL, or an empty cell.
// - A select that can hold values beside instances has a second column, NAME_type, with the type of its value
//   ("IfcLabel") or the entity.
// - Aggregates are JSON, in which instances are their numbers and typed values are objects {"type", "value"}.
// The table kept_text has what attributes could not take from the file (instance_id, attribute, text), and
// foreign_instances those without a class (instance_id, keyword, parameters).

/// Writes a file for each table, NAME.csv, as RFC 4180 has it, into a folder, which is there as a whole or not at all.
/// A folder of that name that holds nothing but .csv files is replaced; any other one throws FileError, as does what
/// cannot be written. Throws Error when progress cancels.
VNIFC_LAYER_API TableResult exportCsv(const Model& model, const std::filesystem::path& folder,
                                      const TableOptions& options = {});

/// Writes an SQLite database. Beyond what is said above
/// - instances (instance_id, entity) has all instances, and references are foreign keys of it;
/// - lists of instances have tables of their own, ENTITY_ATTRIBUTE (instance_id, position, target);
/// - the view properties has the sets of all objects, a type's where the object has no such property of its own
///   (object, set, property, value, si_value, unit, from_type);
/// - the view spatial says where objects are (object, entity, name, container, storey, storey_name, building,
///   building_name, site, site_name), and materials what they are made of (object, material, category, thickness,
///   fraction); the table type_of has (object, type).
/// The file is complete, or on failure, which throws FileError, as it was. Throws Error in a build without SQLite and
/// when progress cancels.
VNIFC_LAYER_API TableResult exportSqlite(const Model& model, const std::filesystem::path& file,
                                         const TableOptions& options = {});

/// True when this build has SQLite.
VNIFC_LAYER_API bool hasSqlite() noexcept;

} // namespace vnifc
