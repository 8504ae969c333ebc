#pragma once
#include "Holder.h"

#include <vnifc/Diff.h>
#include <vnifc/Properties.h>

#include <string_view>

namespace vnifc::python {

/// The classes of vnifc._types, looked up once.
struct Types {
    nb::object error, readError, writeError, notFound, instanceNotFound, attributeError, badValue, selectorError,
        closed;
    nb::object literal, typed, unknown;

    static const Types& get();
};

/// UTF-8, or bytes that are none and come back as they were.
nb::object textToPython(std::string_view utf8);
/// The opposite. Throws BadValue for what is no text.
std::string textFromPython(nb::handle text);

/// A value without the defined types around it, or with them.
nb::object toPython(const SharedModel& model, const Value& value, bool typed = false);
/// Throws BadValue for what is no value.
Value valueFromPython(nb::handle object);

/// Raises the current C++ exception in Python, of which an exception of the layer becomes its like.
void raiseCurrent() noexcept;

/// Registers what turns exceptions of the layer into those of the package.
void bindErrors(nb::module_& module);

} // namespace vnifc::python
