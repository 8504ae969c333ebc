#include "Bindings.h"
#include "Rules.h"

#include <vnifc/Facet.h>
#include <vnifc/Relations.h>

#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>
#include <nanobind/stl/vector.h>

namespace vnifc::python {

namespace {

// A line of a terminal or notebook; the whole text is a method away.
constexpr std::size_t kReprLength = 200;

/// The names of a schema begin with a capital, those of this package do not, so that neither hides the other.
bool isSchemaName(PyObject* name) {
    Py_ssize_t size = 0;
    const char* text = PyUnicode_AsUTF8AndSize(name, &size);
    if (!text) {
        PyErr_Clear();
        return false;
    }
    return size > 0 && text[0] >= 'A' && text[0] <= 'Z';
}

[[noreturn]] void throwNoAttribute(const Instance& instance, PyObject* name) {
    throw NoAttribute(std::string(instance.type()) + " has no attribute " + textFromPython(name));
}

Value read(PyInstance& self, PyObject* name) {
    const Instance& instance = self.use();
    const AttributeKey& key = self.model->key(instance, name);
    if (!key) [[unlikely]]
        throwNoAttribute(instance, name);
    return instance[key];
}

void write(PyInstance& self, PyObject* name, const Value& value) {
    Instance& instance = self.use();
    const AttributeKey key = self.model->key(instance, name);
    if (!key)
        throwNoAttribute(instance, name);
    instance.set(key, value);
}

// ---- Slots: an exception of C++ must not leave them

PyObject* getAttribute(PyObject* self, PyObject* name) noexcept {
    if (!isSchemaName(name))
        return PyObject_GenericGetAttr(self, name);
    try {
        PyInstance& instance = *nb::inst_ptr<PyInstance>(self);
        const Value value = read(instance, name);
        return toPython(instance.model, value).release().ptr();
    } catch (...) {
        raiseCurrent();
        return nullptr;
    }
}

int setAttribute(PyObject* self, PyObject* name, PyObject* value) noexcept {
    if (!isSchemaName(name))
        return PyObject_GenericSetAttr(self, name, value);
    try {
        write(*nb::inst_ptr<PyInstance>(self), name, value ? valueFromPython(value) : Value());
        return 0;
    } catch (...) {
        raiseCurrent();
        return -1;
    }
}

PyType_Slot instanceSlots[] = {{Py_tp_getattro, reinterpret_cast<void*>(getAttribute)},
                               {Py_tp_setattro, reinterpret_cast<void*>(setAttribute)},
                               {0, nullptr}};

// ---- Methods

std::string cut(std::string text) {
    if (text.size() <= kReprLength)
        return text;
    std::size_t end = kReprLength;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end) + "...";
}

nb::object repr(const PyInstance& self) {
    if (!self.model->isOpen())
        return nb::str("<vnifc.Instance of a closed model>");
    self.model->use();
    if (!self.instance)
        return nb::str(("<vnifc.Instance #" + std::to_string(self.instance.id()) + ", erased>").c_str());
    return textToPython(cut(self.instance.toString()));
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else
            result += c;
    }
    return result;
}

nb::object html(PyInstance& self) {
    const Instance& instance = self.use();
    std::string text =
        "<table><caption>#" + std::to_string(instance.id()) + ' ' + escaped(instance.type()) + "</caption><tbody>";
    for (const Attribute& attribute : instance.attributes())
        text += "<tr><th>" + escaped(attribute.name()) + "</th><td>" +
                escaped(cut(attribute.value().toString(TextForm::kDescribed))) + "</td></tr>";
    return textToPython(text + "</tbody></table>");
}

nb::object readOnly(const nb::dict& dict) { return nb::steal(PyDictProxy_New(dict.ptr())); }

nb::object valueOf(const SharedModel& model, const Property& property) {
    if (property.parts.empty())
        return toPython(model, property.value());
    nb::dict parts;
    for (const Property& part : property.parts)
        parts[textToPython(part.name)] = valueOf(model, part);
    return readOnly(parts);
}

nb::object psets(PyInstance& self) {
    const std::vector<PropertySet> sets = propertySets(self.use());
    nb::dict all;
    for (const PropertySet& set : sets) {
        // The sets of the object come first; what it says itself prevails over its type.
        const nb::object name = textToPython(set.name);
        nb::object inner = all.contains(name) ? all[name] : nb::dict();
        for (const Property& property : set.properties)
            if (const nb::object key = textToPython(property.name); PyDict_Contains(inner.ptr(), key.ptr()) == 0)
                inner[key] = valueOf(self.model, property);
        all[name] = inner;
    }
    for (const auto& [name, inner] : all)
        if (PyDict_SetItem(all.ptr(), nb::handle(name).ptr(), readOnly(nb::borrow<nb::dict>(inner)).ptr()) != 0)
            throw nb::python_error();
    return readOnly(all);
}

nb::list attributes(PyInstance& self) {
    const Instance& instance = self.use();
    nb::list names;
    for (const Attribute& attribute : instance.attributes())
        names.append(nb::str(attribute.name().data(), attribute.name().size()));
    return names;
}

nb::dict asDict(PyInstance& self) {
    const Instance& instance = self.use();
    std::vector<std::pair<std::string, Value>> values;
    for (const Attribute& attribute : instance.attributes())
        values.emplace_back(attribute.name(), attribute.value());
    nb::dict result;
    for (const auto& [name, value] : values)
        result[name.c_str()] = toPython(self.model, value);
    return result;
}

template <Instance (*function)(const Instance&)>
nb::object related(PyInstance& self) {
    return toPython(self.model, function(self.use()));
}

template <std::vector<Instance> (*function)(const Instance&)>
PyInstances relatedList(PyInstance& self) {
    return {self.model, function(self.use())};
}

bool equal(const PyInstance& self, const PyInstance& other) {
    return self.model == other.model && self.instance == other.instance;
}

} // namespace

std::vector<Instance> instancesFromPython(nb::handle object, const Holder* model) {
    std::vector<Instance> instances;
    const auto add = [&](nb::handle each) {
        if (!nb::isinstance<PyInstance>(each))
            throw BadValue("expected an instance, found " + std::string(nb::repr(each).c_str()));
        auto& instance = nb::cast<PyInstance&>(each);
        if (model && instance.model.get() != model)
            throw BadValue("#" + std::to_string(instance.use().id()) + " is an instance of another model");
        instances.push_back(instance.use());
    };
    if (nb::isinstance<PyInstance>(object))
        add(object);
    else
        for (const nb::handle each : object)
            add(each);
    return instances;
}

void bindInstance(nb::module_& module) {
    nb::class_<PyInstance> type(
        module, "Instance", nb::type_slots(instanceSlots),
        "An instance of a model, whose attributes have the names of the schema: ``wall.Name``.\n\n"
        "It keeps its model alive. After it was erased, or its model closed, every use raises.\n\n"
        ">>> import vnifc\n"
        ">>> model = vnifc.create(\"IFC4\")\n"
        ">>> wall = model.create(\"IfcWall\", Name=\"Straße\")\n"
        ">>> wall.Name, wall.Description\n"
        "('Straße', None)\n"
        ">>> wall.Name = \"Allee\"\n"
        ">>> wall[\"Name\"]\n"
        "'Allee'");
    type.def_prop_ro(
        "id", [](PyInstance& self) { return self.model->use(), self.instance.id(); }, "The number: 12 for #12.");
    type.def_prop_ro(
        "entity", [](PyInstance& self) { return std::string(self.use().type()); },
        "The entity as the schema declares it: ``\"IfcWall\"``.");
    type.def_prop_ro(
        "global_id", [](PyInstance& self) { return textToPython(self.use().globalId()); },
        nb::sig("def global_id(self) -> str"), "The GlobalId; empty where there is none.");
    type.def(
        "is_a", [](PyInstance& self, std::string_view entity) { return self.use().is(entity); }, nb::arg("entity"),
        nb::sig("def is_a(self, entity: str) -> bool"),
        "True for instances of the entity and its subtypes.\n\n"
        ">>> import vnifc\n"
        ">>> vnifc.create(\"IFC4\").create(\"IfcWall\").is_a(\"IfcElement\")\n"
        "True");
    type.def(
        "__getitem__",
        [](PyInstance& self, nb::handle name) {
            textFromPython(name);
            const Value value = read(self, name.ptr());
            return toPython(self.model, value);
        },
        nb::sig("def __getitem__(self, name: str) -> typing.Any"));
    type.def(
        "__setitem__",
        [](PyInstance& self, nb::handle name, nb::handle value) {
            textFromPython(name);
            write(self, name.ptr(), valueFromPython(value));
        },
        nb::sig("def __setitem__(self, name: str, value: typing.Any) -> None"));
    type.def("__dir__", [](nb::handle self) {
        nb::list names = attributes(nb::cast<PyInstance&>(self));
        for (const nb::handle name : nb::module_::import_("builtins").attr("dir")(self.type()))
            names.append(name);
        return names;
    });
    type.def(
        "typed",
        [](PyInstance& self, std::string_view name) {
            const Instance& instance = self.use();
            if (!instance.has(name))
                throw NoAttribute(std::string(instance.type()) + " has no attribute " + std::string(name));
            return toPython(self.model, instance[name], true);
        },
        nb::arg("name"), nb::sig("def typed(self, name: str) -> typing.Any"),
        "The value of an attribute as ``self[name]``, but what a select holds with its type.\n\n"
        ">>> import vnifc\n"
        ">>> model = vnifc.create(\"IFC4\")\n"
        ">>> p = model.create(\"IfcPropertySingleValue\", Name=\"a\", NominalValue=vnifc.Typed(\"IfcLengthMeasure\", "
        "2.5))\n"
        ">>> p.NominalValue, p.typed(\"NominalValue\")\n"
        "(2.5, Typed('IFCLENGTHMEASURE', 2.5))");
    type.def(
        "derived", &derived, nb::arg("name"), nb::arg("rules") = true,
        nb::sig("def derived(self, name: str, rules: Rules | str | os.PathLike[str] | bool = True) -> typing.Any"),
        "The value of a derived attribute, computed by the rules of the schema: Rules, the path of a text, or True\n"
        "for the one that is found. None when the text gives it no value or a limit is reached. An entity value\n"
        "that the computation makes is a `Typed` with its attributes as a dict.");
    type.def("attributes", &attributes, nb::sig("def attributes(self) -> list[str]"),
             "The names of the explicit attributes, in the order of the schema.");
    type.def("as_dict", &asDict, nb::sig("def as_dict(self) -> dict[str, typing.Any]"),
             "The explicit attributes with their values.");
    type.def_prop_ro(
        "psets", &psets,
        nb::sig("def psets(self) -> collections.abc.Mapping[str, collections.abc.Mapping[str, typing.Any]]"),
        "Property sets and quantities, the type's included, with the values that prevail. A picture of what was\n"
        "there, which cannot be changed; `set_property` changes.\n\n"
        ">>> import vnifc\n"
        ">>> wall = vnifc.create(\"IFC4\").create(\"IfcWall\")\n"
        ">>> wall.set_property(\"Pset_WallCommon.FireRating\", \"EI60\")\n"
        "True\n"
        ">>> wall.psets[\"Pset_WallCommon\"][\"FireRating\"]\n"
        "'EI60'");
    type.def(
        "set_property",
        [](PyInstance& self, std::string_view path, nb::handle value) {
            const Value converted = valueFromPython(value);
            return setProperty(self.use(), path, converted) > 0;
        },
        nb::arg("path"), nb::arg("value").none(),
        nb::sig("def set_property(self, path: str, value: typing.Any) -> bool"),
        "Gives a property by the names of set and property a value; ``None`` takes it away. What other objects share "
        "is\n"
        "split first. True when it says something else than before.");
    type.def(
        "facet",
        [](PyInstance& self, std::string_view text) { return toPython(self.model, Facet(text).value(self.use())); },
        nb::arg("text"), nb::sig("def facet(self, text: str) -> typing.Any"),
        "What a selector's facet says of the instance: ``\"material\"``, ``\"storey\"``, "
        "``\"Pset_WallCommon.FireRating\"``.");
#define VNIFC_RELATED(NAME, FUNCTION, DOC)                                                                             \
    type.def_prop_ro(NAME, &related<FUNCTION>, nb::sig("def " NAME "(self) -> Instance | None"), DOC)
    VNIFC_RELATED("container", &container, "The spatial element that the object is in.");
    VNIFC_RELATED("storey", &storey, "The nearest storey that the object is in, itself included.");
    VNIFC_RELATED("building", &building, "The nearest building that the object is in, itself included.");
    VNIFC_RELATED("site", &site, "The nearest site that the object is in, itself included.");
    VNIFC_RELATED("parent", &parent, "What the object hangs from: container, whole, opening or host.");
    VNIFC_RELATED("whole", &whole, "What the object is a part of.");
    VNIFC_RELATED("type", &typeOf, "The object's type.");
#undef VNIFC_RELATED
#define VNIFC_RELATED(NAME, FUNCTION, DOC)                                                                             \
    type.def_prop_ro(NAME, &relatedList<FUNCTION>, nb::sig("def " NAME "(self) -> Instances"), DOC)
    VNIFC_RELATED("parts", &parts, "The parts that the object is aggregated or nested of.");
    VNIFC_RELATED("contents", &contents, "What is directly in a spatial element.");
    VNIFC_RELATED("occurrences", &occurrences, "The objects of a type.");
    VNIFC_RELATED("groups", &groups, "The groups that the object is in.");
    VNIFC_RELATED("members", &members, "What is in a group.");
#undef VNIFC_RELATED
    type.def_prop_ro(
        "references",
        [](PyInstance& self) {
            return PyInstances{self.model, self.use().references().toVector()};
        },
        nb::sig("def references(self) -> Instances"), "The instances that this one refers to.");
    type.def_prop_ro(
        "referrers",
        [](PyInstance& self) {
            return PyInstances{self.model, self.use().referrers().toVector()};
        },
        nb::sig("def referrers(self) -> Instances"), "The instances that refer to this one.");
    type.def(
        "to_string", [](PyInstance& self) { return textToPython(self.use().toString()); },
        nb::sig("def to_string(self) -> str"), "The instance as an exchange file has it, uncut.");
    type.def("__repr__", &repr, nb::sig("def __repr__(self) -> str"));
    type.def("_repr_html_", &html, nb::sig("def _repr_html_(self) -> str"));
    type.def(
        "__eq__",
        [](const PyInstance& self, nb::handle other) -> nb::object {
            if (!nb::isinstance<PyInstance>(other))
                return nb::borrow(Py_NotImplemented);
            return nb::bool_(equal(self, nb::cast<PyInstance&>(other)));
        },
        nb::arg("other").none(), nb::sig("def __eq__(self, other: object, /) -> bool"));
    type.def("__hash__", [](const PyInstance& self) { return std::hash<Instance>()(self.instance); });
}

} // namespace vnifc::python
