#include "Values.h"

#include <nanobind/stl/string.h>
#include <vnifc/Selector.h>

#include <new>

namespace vnifc::python {

namespace {

constexpr const char* kKeepBytes = "surrogateescape";
// A list that holds itself must not end the program.
constexpr int kMaxNesting = 64;

Value listFromPython(nb::handle object, int nesting);

Value integerFromPython(nb::handle object) {
    const nb::object index = nb::steal(PyNumber_Index(object.ptr()));
    if (!index.is_valid())
        throw nb::python_error();
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
    if (overflow != 0)
        throw BadValue("expected an integer of 64 bits with a sign, found " + std::string(nb::str(index).c_str()));
    return Value(static_cast<std::int64_t>(number));
}

Value fromPython(nb::handle object, int nesting) {
    const Types& types = Types::get();
    PyObject* const pointer = object.ptr();
    if (object.is_none())
        return {};
    if (PyBool_Check(pointer))
        return Value(pointer == Py_True);
    if (PyUnicode_Check(pointer)) {
        std::string text = textFromPython(object);
        if (PyObject_TypeCheck(pointer, reinterpret_cast<PyTypeObject*>(types.literal.ptr())))
            return Value(Literal{std::move(text)});
        return Value(std::move(text));
    }
    if (PyFloat_Check(pointer))
        return Value(PyFloat_AsDouble(pointer));
    if (PyLong_Check(pointer))
        return integerFromPython(object);
    if (nb::isinstance<PyInstance>(object))
        return Value(instanceOf(object));
    if (object.is(types.unknown))
        return Value(Logical::kUnknown);
    if (PyObject_TypeCheck(pointer, reinterpret_cast<PyTypeObject*>(types.typed.ptr())))
        return Value(Typed(textFromPython(object.attr("type")), fromPython(object.attr("value"), nesting + 1)));
    if (PyIndex_Check(pointer))
        return integerFromPython(object);
    if (PySequence_Check(pointer) || PyAnySet_Check(pointer))
        return listFromPython(object, nesting);
    throw BadValue("expected None, text, a number, a truth value, an instance or a list of these, found " +
                   std::string(nb::repr(object).c_str()));
}

Value listFromPython(nb::handle object, int nesting) {
    if (nesting > kMaxNesting)
        throw BadValue("a list that is nested too deeply");
    Value::List list;
    for (const nb::handle element : object)
        list.push_back(fromPython(element, nesting + 1));
    return Value(std::move(list));
}

} // namespace

const Types& Types::get() {
    // Never taken apart: when it would be, the interpreter is gone.
    static const Types* const types = [] {
        const nb::module_ module = nb::module_::import_("vnifc._types");
        return new Types{module.attr("Error"),
                         module.attr("ReadError"),
                         module.attr("WriteError"),
                         module.attr("NotFound"),
                         module.attr("InstanceNotFound"),
                         module.attr("AttributeError"),
                         module.attr("BadValue"),
                         module.attr("SelectorError"),
                         module.attr("Closed"),
                         module.attr("Literal"),
                         module.attr("Typed"),
                         module.attr("UNKNOWN")};
    }();
    return *types;
}

nb::object textToPython(std::string_view utf8) {
    PyObject* text = PyUnicode_DecodeUTF8(utf8.data(), static_cast<Py_ssize_t>(utf8.size()), kKeepBytes);
    if (!text)
        throw nb::python_error();
    return nb::steal(text);
}

std::string textFromPython(nb::handle text) {
    if (!PyUnicode_Check(text.ptr()))
        throw BadValue("expected text, found " + std::string(nb::repr(text).c_str()));
    Py_ssize_t size = 0;
    if (const char* utf8 = PyUnicode_AsUTF8AndSize(text.ptr(), &size))
        return {utf8, static_cast<std::size_t>(size)};
    PyErr_Clear();
    const nb::object bytes = nb::steal(PyUnicode_AsEncodedString(text.ptr(), "utf-8", kKeepBytes));
    if (!bytes.is_valid())
        throw nb::python_error();
    return {PyBytes_AsString(bytes.ptr()), static_cast<std::size_t>(PyBytes_Size(bytes.ptr()))};
}

nb::object toPython(const SharedModel& model, const Value& value, bool typed) {
    switch (value.kind()) {
    case Value::Kind::kNull:
        return nb::none();
    case Value::Kind::kBoolean:
        return nb::bool_(std::get<bool>(value.variant()));
    case Value::Kind::kLogical:
        return Types::get().unknown;
    case Value::Kind::kInteger:
        return nb::int_(std::get<std::int64_t>(value.variant()));
    case Value::Kind::kReal:
        return nb::float_(std::get<double>(value.variant()));
    case Value::Kind::kText:
        return textToPython(std::get<std::string>(value.variant()));
    case Value::Kind::kLiteral:
        return Types::get().literal(textToPython(std::get<Literal>(value.variant()).text));
    case Value::Kind::kInstance:
        return toPython(model, std::get<Instance>(value.variant()));
    case Value::Kind::kList: {
        nb::list list;
        for (const Value& element : std::get<Value::List>(value.variant()))
            list.append(toPython(model, element, typed));
        return list;
    }
    case Value::Kind::kTyped: {
        const auto& held = std::get<Typed>(value.variant());
        nb::object inner = toPython(model, held.value(), typed);
        return typed ? Types::get().typed(textToPython(held.type()), inner) : inner;
    }
    }
    return nb::none();
}

Value valueFromPython(nb::handle object) { return fromPython(object, 0); }

// ---- Exceptions

namespace {

void set(const nb::object& type, const std::exception& error) noexcept {
    try {
        PyErr_SetObject(type.ptr(), textToPython(error.what()).ptr());
    } catch (nb::python_error& failed) {
        failed.restore();
    }
}

void setSelectorError(const SelectorError& error) {
    const nb::object raised = Types::get().selectorError(textToPython(error.what()));
    raised.attr("column") = error.column();
    PyErr_SetObject(Types::get().selectorError.ptr(), raised.ptr());
}

/// Raises an exception of the layer; lets every other one through.
void raise(const std::exception_ptr& thrown) {
    const Types& types = Types::get();
    try {
        std::rethrow_exception(thrown);
    } catch (const ClosedError& error) {
        set(types.closed, error);
    } catch (const NoAttribute& error) {
        set(types.attributeError, error);
    } catch (const NoInstance& error) {
        set(types.instanceNotFound, error);
    } catch (const WriteError& error) {
        set(types.writeError, error);
    } catch (const FileError& error) {
        set(types.readError, error);
    } catch (const NotFound& error) {
        set(types.notFound, error);
    } catch (const BadValue& error) {
        set(types.badValue, error);
    } catch (const SelectorError& error) {
        setSelectorError(error);
    } catch (const Error& error) {
        set(types.error, error);
    }
}

} // namespace

void raiseCurrent() noexcept {
    try {
        raise(std::current_exception());
    } catch (nb::python_error& error) {
        error.restore();
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_RuntimeError, error.what());
    } catch (...) {
        PyErr_SetString(PyExc_SystemError, "an exception of an unknown type");
    }
}

void bindErrors(nb::module_&) {
    Types::get();
    nb::register_exception_translator([](const std::exception_ptr& thrown, void*) { raise(thrown); });
}

} // namespace vnifc::python
