#include "Bindings.h"

#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <array>

namespace vnifc::python {

namespace {

struct PyDiff {
    DiffResult result;
    std::vector<Difference> differences;
};

constexpr std::array kKinds = {"added", "removed", "changed"};

PyDiff compare(PyModel& before, PyModel& after, double tolerance, std::vector<std::string> ignored) {
    const Busy busy({before.shared.get(), after.shared.get()});
    PyDiff diff;
    DiffOptions options;
    options.tolerance = tolerance;
    options.ignored = std::move(ignored);
    options.differences = [&](const Difference& difference) { diff.differences.push_back(difference); };
    diff.result = vnifc::diff(before.shared->owned(), after.shared->owned(), options);
    return diff;
}

nb::object maybe(std::uint64_t number) { return number == 0 ? nb::none() : nb::object(nb::int_(number)); }

void bindDetails(nb::module_& module) {
#define VNIFC_TEXT(TYPE, NAME, EXPRESSION, DOC)                                                                        \
    def_prop_ro(                                                                                                       \
        NAME, [](const TYPE& self) { return textToPython(EXPRESSION); }, nb::sig("def " NAME "(self) -> str"), DOC)
    nb::class_<DiffDetail>(module, "DiffDetail", "What of an object differs.")
        .VNIFC_TEXT(DiffDetail, "aspect", nameOf(self.aspect),
                    "``\"attribute\"``, ``\"property\"``, ``\"container\"`` ...")
        .VNIFC_TEXT(DiffDetail, "path", self.path, "``\"Name\"``, ``\"Pset_WallCommon.FireRating\"``.")
        .VNIFC_TEXT(DiffDetail, "before", self.before, "The value in words; empty where there is none.")
        .VNIFC_TEXT(DiffDetail, "after", self.after, "The value in words; empty where there is none.");
    nb::class_<Difference>(module, "Difference", "An object that is not the same in both models.")
        .VNIFC_TEXT(Difference, "kind", kKinds[static_cast<std::size_t>(self.kind)],
                    "``\"added\"``, ``\"removed\"`` or ``\"changed\"``.")
        .VNIFC_TEXT(Difference, "global_id", self.globalId, "Empty for what has none.")
        .VNIFC_TEXT(Difference, "entity", self.entity, "The entity as declared.")
        .VNIFC_TEXT(Difference, "name", self.name, "The object's name.")
        .def_prop_ro(
            "old_id", [](const Difference& self) { return maybe(self.oldId); },
            nb::sig("def old_id(self) -> int | None"))
        .def_prop_ro(
            "new_id", [](const Difference& self) { return maybe(self.newId); },
            nb::sig("def new_id(self) -> int | None"))
        .def_ro("details", &Difference::details)
        .VNIFC_TEXT(Difference, "__repr__",
                    "<vnifc.Difference " + std::string(kKinds[static_cast<std::size_t>(self.kind)]) + ' ' +
                        self.entity + ' ' + self.globalId + '>',
                    "");
#undef VNIFC_TEXT
}

} // namespace

void bindDiff(nb::module_& module) {
    bindDetails(module);
    nb::class_<PyDiff>(module, "Diff", "What differs between two models: a sequence of differences, with counts.")
        .def_prop_ro("added", [](const PyDiff& self) { return self.result.added; })
        .def_prop_ro("removed", [](const PyDiff& self) { return self.result.removed; })
        .def_prop_ro("changed", [](const PyDiff& self) { return self.result.changed; })
        .def_prop_ro("same", [](const PyDiff& self) { return self.result.same; })
        .def("__len__", [](const PyDiff& self) { return self.differences.size(); })
        .def(
            "__getitem__",
            [](const PyDiff& self, std::ptrdiff_t index) {
                const auto size = static_cast<std::ptrdiff_t>(self.differences.size());
                if (index < -size || index >= size)
                    throw nb::index_error("there are not as many differences");
                return self.differences[static_cast<std::size_t>(index < 0 ? index + size : index)];
            },
            nb::sig("def __getitem__(self, index: int, /) -> Difference"))
        .def(
            "__iter__", [](nb::handle self) { return nb::steal(PySeqIter_New(self.ptr())); },
            nb::sig("def __iter__(self) -> collections.abc.Iterator[Difference]"))
        .def("__repr__", [](const PyDiff& self) {
            return "<vnifc.Diff, added " + std::to_string(self.result.added) + ", removed " +
                   std::to_string(self.result.removed) + ", changed " + std::to_string(self.result.changed) + '>';
        });
    module.def("diff", &compare, nb::arg("before"), nb::arg("after"), nb::kw_only(), nb::arg("tolerance") = 1e-9,
               nb::arg("ignored") = std::vector<std::string>(),
               nb::sig("def diff(before: Model, after: Model, *, tolerance: float = 1e-09, ignored: "
                       "collections.abc.Sequence[str] = ()) -> Diff"),
               "Compares two models, of whatever releases, by GlobalId.\n\n"
               ">>> import vnifc\n"
               ">>> model = vnifc.create(\"IFC4\")\n"
               ">>> vnifc.diff(model, model)\n"
               "<vnifc.Diff, added 0, removed 0, changed 0>");
}

} // namespace vnifc::python
