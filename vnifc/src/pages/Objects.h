#pragma once
#include "pages/Json.h"

#include <vnifc/Columns.h>
#include <vnifc/Model.h>

#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace vnifc::detail {

/// Texts of a page, each once.
class Texts {
public:
    std::size_t indexOf(std::string_view text);
    void write(Json& json) const;

private:
    std::unordered_map<std::string, std::size_t> m_indices;
    std::vector<const std::string*> m_texts; ///< the keys above, which stay where they are
};

/// Writes numbers as differences, which compress better.
void writeAscending(Json& json, std::string_view key, std::span<const std::uint64_t> numbers);

/// Writes all rooted instances with their attributes, a table for each entity: `entities`.
void writeObjects(Json& json, const Model& model, Texts& texts);

/// Writes the properties of all objects: `keys` (set, name, unit, whether it comes from the type), `shapes` (lists of
/// keys), and for each object its shape and the values: `properties`.
void writeProperties(Json& json, const ColumnTable& table, Texts& texts);

/// The text of a cell of kText or kCategory; empty where there is none.
std::string_view textAt(const Column& column, std::size_t row);
std::uint64_t idAt(const Column& column, std::size_t row);
bool hasValue(const Column& column, std::size_t row);
/// The column of that name, which there must be.
const Column& columnOf(const ColumnTable& table, std::string_view name);

} // namespace vnifc::detail
