#pragma once
#include "../model/ModelState.h"

#include <string>
#include <string_view>
#include <vector>

namespace vnifc::detail {

/// A column of an entity's table.
struct TableColumn {
    enum class Kind : std::uint8_t {
        kInteger,
        kReal,
        kText,
        kReference, ///< to any instance
        kSelect,    ///< a value of any type, or the number of an instance
        kType,      ///< of the value in the column before
        kJson,
        kTargets, ///< a list of instances: JSON, or a table of its own
    };

    std::string name;
    Kind kind;
    const AttributeInfo* attribute;
};

/// The columns of an entity beside its number, in their order.
std::vector<TableColumn> columnsOf(const ClassInfo& info);

/// Takes the cells of a row, one after the other.
class CellSink {
public:
    virtual void null() = 0;
    virtual void integer(std::int64_t value) = 0;
    virtual void real(double value) = 0;
    /// Valid until the row has ended.
    virtual void text(std::string_view utf8) = 0;
    /// A value in JSON; valid until the row has ended.
    virtual void json(std::string_view text) = 0;
    /// A list of instances, when targetsAsJson is false.
    virtual void targets(const TableColumn&, const VN_SDAI::VnIfcAggr&) {}
    /// What an attribute could not take, and references to what is not there.
    virtual void kept(std::string_view attribute, std::string_view text) = 0;

protected:
    ~CellSink() = default;
};

/// Tells the cells of one instance.
class RowReader {
public:
    RowReader(ModelState& state, CellSink& sink, bool targetsAsJson)
        : m_state(state), m_sink(sink), m_targetsAsJson(targetsAsJson) {}

    void read(const VN_SDAI::VnIfcEntityBase& instance, const std::vector<TableColumn>& columns);

private:
    void cell(const VN_SDAI::VnIfcEntityBase& instance, const TableColumn& column);
    void reference(const VN_SDAI::VnDbObjectId& handle, const TableColumn& column);
    void exchangeText(std::string_view text);
    void select(const VN_SDAI::VnIfcEntityBase& instance, const TableColumn& column);
    void typeOf(const VN_SDAI::typed::Select& value);
    std::string& buffer();

    ModelState& m_state;
    CellSink& m_sink;
    bool m_targetsAsJson;
    std::vector<std::string> m_buffers; ///< of the texts of this row
    std::size_t m_used = 0;
};

/// A value as JSON: instances are their numbers, typed values are objects.
void appendJson(std::string& json, const Value& value);

} // namespace vnifc::detail
