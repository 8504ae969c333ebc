#include "Bindings.h"
#include "Rules.h"

#include <vnifc/Selector.h>

#include <VnIfcCore/VnIfcCheck.h>

#include <nanobind/make_iterator.h>
#include <nanobind/stl/filesystem.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <map>

namespace vnifc::python {

namespace {

PyModel shared(Model model) { return {std::make_shared<Holder>(std::move(model))}; }

PyModel openFile(const std::filesystem::path& path, const std::string& release, bool strict, bool places,
                 unsigned threads) {
    const nb::gil_scoped_release released;
    OpenOptions options;
    options.release = release;
    options.strict = strict;
    options.places = places;
    options.threads = threads;
    return shared(open(path, options));
}

PyModel openString(nb::handle text, const std::string& release, bool strict) {
    std::string bytes;
    if (PyBytes_Check(text.ptr()))
        bytes.assign(PyBytes_AsString(text.ptr()), static_cast<std::size_t>(PyBytes_Size(text.ptr())));
    else
        bytes = textFromPython(text);
    const nb::gil_scoped_release released;
    OpenOptions options;
    options.release = release;
    options.strict = strict;
    return shared(openText(bytes, options));
}

void save(PyModel& self, const std::filesystem::path& path) {
    const Busy busy({self.shared.get()});
    try {
        self.shared->owned().save(path);
    } catch (const FileError& error) {
        throw WriteError(error.what());
    }
}

nb::object text(PyModel& self) {
    std::string written;
    {
        const Busy busy({self.shared.get()});
        written = self.shared->owned().text();
    }
    return textToPython(written);
}

PyFindings check(PyModel& self, nb::handle rules) {
    const auto compiled = rulesFromPython(rules, self.shared->use().release());
    const Busy busy({self.shared.get()});
    Model& model = self.shared->owned();
    PyFindings result;
    const auto add = [&](const Finding& finding) { result.findings.push_back(finding); };
    model.needInverses();
    VN_SDAI::VnIfcCheck check(model.core(), add);
    check.run();
    result.errors = check.errors();
    result.warnings = check.warnings();
    if (compiled) {
        for (const Finding& remark : compiled->remarks())
            add(remark);
        result.errors += compiled->check(model, add).violations;
    }
    return result;
}

PyFindings findings(PyModel& self) {
    const Model& model = self.shared->use();
    return {{model.findings().begin(), model.findings().end()}, model.errors(), model.warnings()};
}

// ---- Instances

PyInstances all(PyModel& self) { return {self.shared, self.shared->use().all().toVector()}; }

PyInstances byType(PyModel& self, std::string_view entity, bool exact) {
    const Busy busy({self.shared.get()});
    return {self.shared, self.shared->owned().instances(entity, exact).toVector()};
}

PyInstances find(PyModel& self, std::string_view selector) {
    const Busy busy({self.shared.get()});
    return {self.shared, select(self.shared->owned(), selector).toVector()};
}

Instance lookUp(PyModel& self, nb::handle key) {
    const Model& model = self.shared->use();
    if (PyUnicode_Check(key.ptr()))
        return model.find(textFromPython(key));
    const nb::object index = nb::steal(PyNumber_Index(key.ptr()));
    if (!index.is_valid())
        throw nb::python_error();
    const unsigned long long number = PyLong_AsUnsignedLongLong(index.ptr());
    if (PyErr_Occurred()) {
        PyErr_Clear(); // negative or too large: there is none
        return {};
    }
    return model.find(number);
}

nb::object item(PyModel& self, nb::handle key) {
    if (const Instance found = lookUp(self, key))
        return toPython(self.shared, found);
    throw NoInstance("there is no instance " + std::string(nb::str(key).c_str()));
}

nb::object get(PyModel& self, nb::handle key, nb::handle other) {
    const Instance found = lookUp(self, key);
    return found ? toPython(self.shared, found) : nb::borrow(other);
}

nb::object create(PyModel& self, std::string_view entity, const nb::kwargs& attributes) {
    std::vector<std::pair<std::string, Value>> values;
    for (const auto& [name, value] : attributes)
        values.emplace_back(textFromPython(name), valueFromPython(value));
    Model& model = self.shared->use();
    Instance made = model.create(entity);
    try {
        for (const auto& [name, value] : values) {
            if (!made.has(name))
                throw NoAttribute(std::string(made.type()) + " has no attribute " + name);
            made.set(name, value);
        }
    } catch (...) {
        model.erase(made);
        throw;
    }
    return toPython(self.shared, made);
}

void erase(PyModel& self, PyInstance& instance) {
    Model& model = self.shared->use();
    model.erase(instance.use());
}

std::size_t removeAll(PyModel& self, nb::handle objects) {
    const std::vector<Instance> instances = instancesFromPython(objects, self.shared.get());
    const Busy busy({self.shared.get()});
    return remove(instances);
}

std::size_t setProperties(PyModel& self, nb::handle objects, std::string_view path, nb::handle value) {
    const Value converted = valueFromPython(value);
    const std::vector<Instance> instances = instancesFromPython(objects, self.shared.get());
    const Busy busy({self.shared.get()});
    return setProperty(instances, path, converted);
}

using Assign = void (*)(std::span<const Instance>, const Instance&);

template <Assign function>
void assign(PyModel& self, nb::handle objects, nb::handle target) {
    const std::vector<Instance> instances = instancesFromPython(objects, self.shared.get());
    const Instance wanted = target.is_none() ? Instance() : instancesFromPython(target, self.shared.get()).front();
    const Busy busy({self.shared.get()});
    function(instances, wanted);
}

// ---- What is shown

std::string summary(PyModel& self) {
    if (!self.shared->isOpen())
        return "<vnifc.Model, closed>";
    const Model& model = self.shared->use();
    return "<vnifc.Model " + std::string(model.release()) + ", " + std::to_string(model.size()) + " instances, " +
           std::to_string(model.errors()) + " errors>";
}

constexpr std::size_t kShownEntities = 12;

nb::object html(PyModel& self) {
    const Model& model = self.shared->use();
    std::map<std::string_view, std::size_t> counts;
    for (const Instance instance : model.all())
        ++counts[instance.isForeign() ? "(no class)" : instance.type()];
    std::vector<std::pair<std::string_view, std::size_t>> sorted(counts.begin(), counts.end());
    std::ranges::stable_sort(sorted, [](const auto& left, const auto& right) { return left.second > right.second; });
    std::string text = "<table><caption>" + std::string(model.release()) + ", " + std::to_string(model.size()) +
                       " instances</caption><tbody>";
    for (std::size_t i = 0; i < sorted.size() && i < kShownEntities; ++i)
        text +=
            "<tr><th>" + std::string(sorted[i].first) + "</th><td>" + std::to_string(sorted[i].second) + "</td></tr>";
    if (sorted.size() > kShownEntities)
        text += "<tr><th>" + std::to_string(sorted.size() - kShownEntities) + " more entities</th><td></td></tr>";
    return textToPython(text + "</tbody></table>");
}

struct Iterator {
    nb::object list;
    std::size_t next = 0;
};

void bindInstances(nb::module_& module) {
    nb::class_<Iterator>(module, "InstanceIterator")
        .def(
            "__iter__", [](nb::handle self) { return nb::borrow(self); },
            nb::sig("def __iter__(self) -> InstanceIterator"))
        .def(
            "__next__",
            [](Iterator& self) {
                const auto& list = nb::cast<const PyInstances&>(self.list);
                if (self.next >= list.instances.size())
                    throw nb::stop_iteration();
                return nb::cast(PyInstance{list.model, list.instances[self.next++]});
            },
            nb::sig("def __next__(self) -> Instance"));
    nb::class_<PyInstances>(module, "Instances",
                            "Instances in ascending order, as they were when they were looked for: a sequence.\n\n"
                            ">>> import vnifc\n"
                            ">>> model = vnifc.create(\"IFC4\")\n"
                            ">>> wall = model.create(\"IfcWall\")\n"
                            ">>> walls = model.by_type(\"IfcWall\")\n"
                            ">>> len(walls), walls[0] == wall\n"
                            "(1, True)")
        .def("__len__", [](const PyInstances& self) { return self.instances.size(); })
        .def("__iter__", [](nb::handle self) { return Iterator{nb::borrow(self)}; })
        .def(
            "__getitem__",
            [](const PyInstances& self, std::ptrdiff_t index) {
                const auto size = static_cast<std::ptrdiff_t>(self.instances.size());
                if (index < -size || index >= size)
                    throw nb::index_error("there are not as many instances");
                const std::ptrdiff_t at = index < 0 ? index + size : index;
                return nb::cast(PyInstance{self.model, self.instances[static_cast<std::size_t>(at)]});
            },
            nb::sig("def __getitem__(self, index: int, /) -> Instance"))
        .def(
            "__getitem__",
            [](const PyInstances& self, const nb::slice& slice) {
                const auto [start, stop, step, count] = slice.compute(self.instances.size());
                PyInstances part{self.model, {}};
                for (std::size_t i = 0; i < count; ++i)
                    part.instances.push_back(self.instances[static_cast<std::size_t>(
                        static_cast<std::ptrdiff_t>(start) + static_cast<std::ptrdiff_t>(i) * step)]);
                return part;
            },
            nb::sig("def __getitem__(self, part: slice, /) -> Instances"))
        .def("__repr__", [](const PyInstances& self) {
            return "<vnifc.Instances, " + std::to_string(self.instances.size()) + '>';
        });
}

void bindFunctions(nb::module_& module) {
    module.def(
        "open", &openFile, nb::arg("path"), nb::kw_only(), nb::arg("release") = "", nb::arg("strict") = false,
        nb::arg("places") = false, nb::arg("threads") = 0,
        nb::sig("def open(path: str | os.PathLike[str], *, release: str = '', strict: bool = False, places: bool = "
                "False, threads: int = 0) -> Model"),
        "Reads an exchange file into a model of the release that it names, or of `release`. What is wrong within the\n"
        "file is a finding (`Model.findings`); a file that cannot be read raises ReadError.\n\n"
        ">>> import vnifc\n"
        ">>> vnifc.open(\"no such file.ifc\")\n"
        "Traceback (most recent call last):\n"
        "    ...\n"
        "vnifc._types.ReadError: cannot read no such file.ifc: ...");
    module.def("open_text", &openString, nb::arg("text"), nb::kw_only(), nb::arg("release") = "",
               nb::arg("strict") = false,
               nb::sig("def open_text(text: str | bytes, *, release: str = '', strict: bool = False) -> Model"),
               "As `open`, from memory.\n\n"
               ">>> import vnifc\n"
               ">>> vnifc.open_text(vnifc.create(\"IFC4\").text()).release\n"
               "'IFC4'");
    module.def(
        "create", [](const std::string& release) { return shared(vnifc::create(release)); }, nb::arg("release"),
        "A new model of a release, by its name in any case.\n\n"
        ">>> import vnifc\n"
        ">>> vnifc.create(\"IFC4X3_ADD2\")\n"
        "<vnifc.Model IFC4X3_ADD2, 0 instances, 0 errors>");
}

void bindReading(nb::class_<PyModel>& type) {
    type.def("by_type", &byType, nb::arg("entity"), nb::kw_only(), nb::arg("exact") = false,
             "The instances of an entity and, unless `exact`, of its subtypes.\n\n"
             ">>> import vnifc\n"
             ">>> model = vnifc.create(\"IFC4\")\n"
             ">>> door = model.create(\"IfcDoor\")\n"
             ">>> len(model.by_type(\"IfcElement\")), len(model.by_type(\"IfcElement\", exact=True))\n"
             "(1, 0)");
    type.def("find", &find, nb::arg("selector"),
             "The instances that a selector picks.\n\n"
             ">>> import vnifc\n"
             ">>> model = vnifc.create(\"IFC4\")\n"
             ">>> door = model.create(\"IfcDoor\", Name=\"D1\")\n"
             ">>> [each.Name for each in model.find('IfcDoor, Name=/D[0-9]+/')]\n"
             "['D1']");
    type.def("__getitem__", &item, nb::sig("def __getitem__(self, key: int | str, /) -> Instance"),
             "The instance of a number or GlobalId; raises InstanceNotFound, which is a KeyError.");
    type.def("get", &get, nb::arg("key"), nb::arg("default").none() = nb::none(),
             nb::sig("def get(self, key: int | str, default: typing.Any = None) -> typing.Any"),
             "As ``model[key]``, with a value in place of an exception.");
    type.def(
        "__contains__", [](PyModel& self, nb::handle key) { return static_cast<bool>(lookUp(self, key)); },
        nb::sig("def __contains__(self, key: int | str, /) -> bool"));
    type.def("__len__", [](PyModel& self) { return self.shared->use().size(); });
    type.def("__iter__", [](PyModel& self) { return Iterator{nb::cast(all(self))}; });
    type.def_prop_ro(
        "project", [](PyModel& self) { return toPython(self.shared, self.shared->use().project()); },
        nb::sig("def project(self) -> Instance | None"), "The project.");
    type.def_prop_ro(
        "release", [](PyModel& self) { return std::string(self.shared->use().release()); },
        "The release of the classes: ``\"IFC4\"``.");
    type.def_prop_ro("findings", &findings, "What was noticed while reading, in the order of the file.");
    type.def("check", &check, nb::arg("rules").none() = nb::none(),
             nb::sig("def check(self, rules: Rules | str | os.PathLike[str] | bool | None = None) -> Findings"),
             "Looks for all that is wrong with the instances: types, bounds, uniqueness, inverse attributes, and the\n"
             "rules of the schema if there is its text: Rules, the path of one, or True for the one that is found.\n\n"
             ">>> import vnifc\n"
             ">>> model = vnifc.create(\"IFC4\")\n"
             ">>> door = model.create(\"IfcRelDefinesByType\")\n"
             ">>> [each.attribute for each in model.check()]\n"
             "['RelatedObjects', 'RelatingType']");
}

void bindChanging(nb::class_<PyModel>& type) {
    type.def("create", &create, nb::arg("entity"), nb::arg("attributes"),
             nb::sig("def create(self, entity: str, /, **attributes: typing.Any) -> Instance"),
             "A new instance with attributes; one that has a GlobalId gets one.\n\n"
             ">>> import vnifc\n"
             ">>> door = vnifc.create(\"IFC4\").create(\"IfcDoor\", OverallWidth=0.9)\n"
             ">>> door.OverallWidth, len(door.GlobalId)\n"
             "(0.9, 22)");
    type.def("erase", &erase, nb::arg("instance"),
             "Takes an instance out, and every reference to it. What only it used stays; see `remove`.");
    type.def("remove", &removeAll, nb::arg("objects"),
             nb::sig("def remove(self, objects: Instance | collections.abc.Iterable[Instance]) -> int"),
             "Takes objects out with all that only they used; returns how many instances went.");
    type.def(
        "set_property", &setProperties, nb::arg("objects"), nb::arg("path"), nb::arg("value").none(),
        nb::sig("def set_property(self, objects: Instance | collections.abc.Iterable[Instance], path: str, value: "
                "typing.Any) -> int"),
        "Gives objects a property by the names of set and property; returns how many say something else than before.");
    type.def("assign_container", &assign<&assignContainer>, nb::arg("elements"), nb::arg("container").none(),
             nb::sig("def assign_container(self, elements: Instance | collections.abc.Iterable[Instance], container: "
                     "Instance | None) -> None"),
             "Puts elements into a spatial element, out of any other.");
    type.def(
        "assign_type", &assign<&assignType>, nb::arg("objects"), nb::arg("type").none(),
        nb::sig("def assign_type(self, objects: Instance | collections.abc.Iterable[Instance], type: Instance | None) "
                "-> None"),
        "Gives objects a type in place of any other.");
    type.def(
        "assign_material", &assign<&assignMaterial>, nb::arg("objects"), nb::arg("material").none(),
        nb::sig("def assign_material(self, objects: Instance | collections.abc.Iterable[Instance], material: Instance "
                "| None) -> None"),
        "Gives objects or types a material, list, set or usage in place of any other.");
    type.def("save", &save, nb::arg("path"), nb::sig("def save(self, path: str | os.PathLike[str]) -> None"),
             "Writes an exchange file: complete, or, when it raises WriteError, as it was before.");
    type.def("text", &text, nb::sig("def text(self) -> str"), "The exchange file as text.");
    type.def(
        "close", [](PyModel& self) { self.shared->close(); },
        "Gives the memory back. What is done with the model or its instances afterwards raises Closed.");
    type.def(
        "__enter__", [](nb::handle self) { return nb::borrow(self); }, nb::sig("def __enter__(self) -> Model"));
    type.def(
        "__exit__", [](PyModel& self, const nb::args&) { self.shared->close(); },
        nb::sig("def __exit__(self, *args: object) -> None"));
}

} // namespace

void bindModel(nb::module_& module) {
    bindInstances(module);
    nb::class_<PyModel> type(module, "Model", "The instances of a file, of whatever release that is.");
    bindReading(type);
    bindChanging(type);
    bindTables(module, type);
    type.def("__repr__", &summary);
    type.def("_repr_html_", &html, nb::sig("def _repr_html_(self) -> str"));
    bindFunctions(module);
}

} // namespace vnifc::python
