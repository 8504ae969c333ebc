#pragma once
#include "Holder.h"

#include <vnifc/Rules.h>

namespace vnifc::python {

/// The rules of a release. Constant, and shared by threads.
struct PyRules {
    std::shared_ptr<const Rules> rules;
};

/// The rules that an argument stands for: Rules, the path of a text, or True for the text that is found. Nothing for
/// None and False.
std::shared_ptr<const Rules> rulesFromPython(nb::handle object, std::string_view release);

/// The value of a derived attribute, by rules as above.
nb::object derived(PyInstance& self, const std::string& name, nb::handle source);

void bindRules(nb::module_& module);

} // namespace vnifc::python
