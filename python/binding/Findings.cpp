#include "Bindings.h"

#include <nanobind/stl/string.h>

#include <array>

namespace vnifc::python {

namespace {

constexpr std::array kSeverities = {"info", "warning", "error"};

nb::object maybe(std::uint64_t number) { return number == 0 ? nb::none() : nb::object(nb::int_(number)); }

} // namespace

void bindFindings(nb::module_& module) {
    nb::class_<Finding> finding(module, "Finding", "One thing that was noticed in a file or model.");
    finding.def_prop_ro(
        "severity", [](const Finding& self) { return kSeverities[self.severity]; },
        nb::sig("def severity(self) -> str"), "``\"info\"``, ``\"warning\"`` or ``\"error\"``.");
    finding.def_prop_ro(
        "line", [](const Finding& self) { return maybe(self.line); }, nb::sig("def line(self) -> int | None"));
    finding.def_prop_ro(
        "column", [](const Finding& self) { return maybe(self.column); }, nb::sig("def column(self) -> int | None"),
        "In bytes, from 1.");
    finding.def_prop_ro(
        "instance", [](const Finding& self) { return maybe(self.instance); },
        nb::sig("def instance(self) -> int | None"), "The number of the instance.");
#define VNIFC_TEXT(NAME, MEMBER, DOC)                                                                                  \
    finding.def_prop_ro(                                                                                               \
        NAME, [](const Finding& self) { return textToPython(self.MEMBER); }, nb::sig("def " NAME "(self) -> str"),     \
        DOC)
    VNIFC_TEXT("code", code, "A stable name of the kind of finding.");
    VNIFC_TEXT("keyword", keyword, "Of the instance, as the file writes it.");
    VNIFC_TEXT("attribute", attribute, "The attribute's name.");
    VNIFC_TEXT("found", found, "What was found.");
    VNIFC_TEXT("expected", expected, "What was expected.");
    VNIFC_TEXT("rule", rule, "The rule of the schema that it is about: ``\"IfcWall.CorrectPredefinedType\"``.");
#undef VNIFC_TEXT
    finding.def(
        "__str__", [](const Finding& self) { return textToPython(self.text()); }, nb::sig("def __str__(self) -> str"));
    finding.def(
        "__repr__", [](const Finding& self) { return textToPython("<vnifc.Finding " + self.text() + '>'); },
        nb::sig("def __repr__(self) -> str"));

    nb::class_<PyFindings> all(module, "Findings", "Findings in their order: a sequence, and a table.");
    all.def("__len__", [](const PyFindings& self) { return self.findings.size(); });
    all.def(
        "__getitem__",
        [](const PyFindings& self, std::ptrdiff_t index) {
            const auto size = static_cast<std::ptrdiff_t>(self.findings.size());
            if (index < -size || index >= size)
                throw nb::index_error("there are not as many findings");
            return self.findings[static_cast<std::size_t>(index < 0 ? index + size : index)];
        },
        nb::sig("def __getitem__(self, index: int, /) -> Finding"));
    all.def_ro("errors", &PyFindings::errors, "How many errors there were, kept or not.");
    all.def_ro("warnings", &PyFindings::warnings, "How many warnings there were, kept or not.");
    all.def(
        "__iter__", [](nb::handle self) { return nb::steal(PySeqIter_New(self.ptr())); },
        nb::sig("def __iter__(self) -> collections.abc.Iterator[Finding]"));
    all.def(
        "__arrow_c_stream__", [](const PyFindings& self, nb::handle) { return arrowStream(tableOf(self)); },
        nb::arg("requested_schema").none() = nb::none(),
        nb::sig("def __arrow_c_stream__(self, requested_schema: object = None) -> object"),
        "The Arrow PyCapsule interface.");
    all.def("table", &tableOf, nb::sig("def table(self) -> Table"), "The findings as a table.");
    all.def("__repr__", [](const PyFindings& self) {
        return "<vnifc.Findings, " + std::to_string(self.findings.size()) + ": " + std::to_string(self.errors) +
               " errors, " + std::to_string(self.warnings) + " warnings>";
    });
}

} // namespace vnifc::python
