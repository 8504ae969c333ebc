#pragma once
#include "Arrow.h"
#include "Values.h"

#include <vnifc/Change.h>

#include <vector>

namespace vnifc::python {

/// Instances of a model in their order, as they were when they were looked for: a sequence.
struct PyInstances {
    SharedModel model;
    std::vector<Instance> instances;
};

/// What was noticed, as a sequence.
struct PyFindings {
    std::vector<Finding> findings;
    std::uint64_t errors = 0; ///< how many there were, kept or not
    std::uint64_t warnings = 0;
};

/// The model as an object of Python.
struct PyModel {
    SharedModel shared;
};

/// The instances in an iterable of Python, or the one instance. Throws BadValue for one of another model when `model`
/// is given.
std::vector<Instance> instancesFromPython(nb::handle object, const Holder* model = nullptr);

void bindInstance(nb::module_& module);
/// As a table.
PyTable tableOf(const PyFindings& findings);

void bindTables(nb::module_& module, nb::class_<PyModel>& model);
void bindModel(nb::module_& module);
void bindFindings(nb::module_& module);
void bindDiff(nb::module_& module);

} // namespace vnifc::python
