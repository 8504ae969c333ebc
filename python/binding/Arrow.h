#pragma once
#include <vnifc/Columns.h>

#include <nanobind/nanobind.h>

#include <memory>

namespace vnifc::python {

/// A table as Python has it; what was handed to other programs keeps it alive.
struct PyTable {
    std::shared_ptr<const ColumnTable> table;
};

/// The capsules of the Arrow PyCapsule interface: "arrow_array_stream" with one batch, and "arrow_schema".
nanobind::object arrowStream(const PyTable& table);
nanobind::object arrowSchema(const PyTable& table);

} // namespace vnifc::python
