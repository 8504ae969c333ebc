#include "Rules.h"
#include "Bindings.h"

#include <VnIfcCore/VnAscii.h>

#include <nanobind/stl/filesystem.h>
#include <nanobind/stl/string.h>

#include <algorithm>

namespace vnifc::python {

namespace {

std::shared_ptr<const Rules> loaded(const std::filesystem::path& path, const std::string& release) {
    const nb::gil_scoped_release released;
    return std::make_shared<const Rules>(Rules::load(path, release));
}

std::filesystem::path found(const std::string& release) {
    if (auto path = Rules::find(release))
        return *path;
    throw NotFound("there is no text of the rules of " + release +
                   " in the folder that VNIFC_RULES names, nor in vnifc/rules in the user's data folder");
}

/// Where there is no value of the model: an entity value that the rules have made.
nb::object constructed(const SharedModel& model, const RuleValue& value);

nb::object toPython(const SharedModel& model, const RuleValue& value) {
    constexpr std::int64_t kUnknown = 1;
    switch (value.kind) {
    case RuleValue::Kind::kIndeterminate:
        return nb::none();
    case RuleValue::Kind::kLogical:
        return value.integer == kUnknown ? Types::get().unknown : nb::object(nb::bool_(value.integer > kUnknown));
    case RuleValue::Kind::kInteger:
        return nb::int_(value.integer);
    case RuleValue::Kind::kReal:
        return nb::float_(value.real);
    case RuleValue::Kind::kString:
    case RuleValue::Kind::kBinary:
        return textToPython(value.text);
    case RuleValue::Kind::kEnumeration:
        return Types::get().literal(textToPython(value.text));
    case RuleValue::Kind::kInstance:
        return toPython(model, model->use().wrap(value.instance));
    case RuleValue::Kind::kConstructed:
        return constructed(model, value);
    case RuleValue::Kind::kAggregate:
        break;
    }
    nb::list list;
    for (const RuleValue& item : value.items)
        list.append(toPython(model, item));
    return list;
}

nb::object constructed(const SharedModel& model, const RuleValue& value) {
    nb::dict attributes;
    for (std::size_t i = 0; i < value.names.size(); ++i)
        attributes[textToPython(value.names[i])] = toPython(model, value.items[i]);
    return Types::get().typed(textToPython(value.type), attributes);
}

nb::list derivedAttributes(const PyRules& self, PyInstance& instance) {
    nb::list names;
    for (const std::string& name : self.rules->derivedAttributes(instance.use()))
        names.append(textToPython(name));
    return names;
}

PyFindings remarks(const PyRules& self) {
    PyFindings result;
    for (const Finding& remark : self.rules->remarks())
        result.findings.push_back(remark);
    return result;
}

} // namespace

std::shared_ptr<const Rules> rulesFromPython(nb::handle object, std::string_view release) {
    if (object.is_none() || object.is(Py_False))
        return nullptr;
    const std::string name(release);
    if (object.is(Py_True))
        return loaded(found(name), name);
    if (nb::isinstance<PyRules>(object))
        return nb::cast<const PyRules&>(object).rules;
    std::filesystem::path path;
    if (!nb::try_cast(object, path))
        throw nb::type_error("rules: expected Rules, the path of a text, a bool or None");
    return loaded(path, name);
}

nb::object derived(PyInstance& self, const std::string& name, nb::handle source) {
    self.use();
    const auto rules = rulesFromPython(source, self.model->use().release());
    if (!rules)
        throw nb::type_error("rules: expected Rules, the path of a text, or True");
    RuleValue value;
    {
        const Busy busy({self.model.get()});
        const auto isNamed = [&](const std::string& each) { return VN_SDAI::vnEqualNoCase(each, name); };
        if (std::ranges::none_of(rules->derivedAttributes(self.instance), isNamed))
            throw NoAttribute(std::string(self.instance.type()) + " has no derived attribute " + name);
        value = rules->derived(self.instance, name);
    }
    return toPython(self.model, value);
}

void bindRules(nb::module_& module) {
    nb::class_<PyRules> type(module, "Rules",
                             "The rules and derived attributes of a release, from the EXPRESS text that the schema's "
                             "publisher distributes.\n"
                             "Reading the text takes a moment, so who needs it more than once keeps the object.\n\n"
                             ">>> import vnifc\n"
                             ">>> vnifc.Rules(\"IFC4\", \"no such text.exp\")\n"
                             "Traceback (most recent call last):\n"
                             "    ...\n"
                             "vnifc._types.Error: no such text.exp: cannot be read");
    type.def(
        "__init__",
        [](PyRules* self, const std::string& release, nb::handle path) {
            new (self) PyRules{rulesFromPython(path.is_none() ? nb::handle(Py_True) : path, release)};
        },
        nb::arg("release"), nb::arg("path").none() = nb::none(),
        nb::sig("def __init__(self, release: str, path: str | os.PathLike[str] | None = None) -> None"),
        "Reads the text at `path`, or the one that is found for the release.");
    type.def_prop_ro(
        "names",
        [](const PyRules& self) {
            nb::list names;
            for (const RuleInfo& rule : self.rules->rules())
                names.append(textToPython(rule.name));
            return names;
        },
        nb::sig("def names(self) -> list[str]"), "The rules in the order of the text: ``\"IfcWall.HasName\"``.");
    type.def_prop_ro("remarks", &remarks, nb::sig("def remarks(self) -> Findings"),
                     "What is wrong in the text without stopping anything, and which rules cannot be evaluated.");
    type.def("derived_attributes", &derivedAttributes, nb::arg("instance"),
             nb::sig("def derived_attributes(self, instance: Instance) -> list[str]"),
             "The names of the derived attributes of an instance, inherited ones first.");
}

} // namespace vnifc::python
