#include "Arrow.h"
#include "Bindings.h"

#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>
#include <nanobind/stl/vector.h>

namespace vnifc::python {

namespace {

PyTable shared(ColumnTable table) { return {std::make_shared<const ColumnTable>(std::move(table))}; }

PyTable entities(PyModel& self, std::string_view entity, const std::optional<std::vector<std::string>>& columns) {
    const Busy busy({self.shared.get()});
    return shared(entityColumns(self.shared->owned(), entity, columns.value_or(std::vector<std::string>())));
}

PyTable properties(PyModel& self, const std::optional<std::string>& entity,
                   const std::optional<std::vector<std::string>>& sets, bool quantities) {
    const Busy busy({self.shared.get()});
    PropertyColumnsOptions options;
    options.entity = entity.value_or("");
    options.sets = sets.value_or(std::vector<std::string>());
    options.quantities = quantities;
    return shared(propertyColumns(self.shared->owned(), options));
}

PyTable relations(PyModel& self, const std::optional<std::string>& entity) {
    const Busy busy({self.shared.get()});
    return shared(relationColumns(self.shared->owned(), entity.value_or("")));
}

void bindTable(nb::module_& module) {
    nb::class_<PyTable> type(
        module, "Table",
        "Rows and columns in memory, in Arrow's format. Whatever speaks the Arrow PyCapsule interface\n"
        "takes it without copying: ``pyarrow.table(t)``, ``polars.DataFrame(t)``, DuckDB.\n\n"
        ">>> import vnifc\n"
        ">>> model = vnifc.create(\"IFC4\")\n"
        ">>> door = model.create(\"IfcDoor\", Name=\"D1\", OverallWidth=0.9)\n"
        ">>> model.table(\"IfcDoor\", columns=[\"Name\", \"OverallWidth\"])\n"
        "<vnifc.Table, 1 rows: id, entity, Name, OverallWidth>");
    type.def("__len__", [](const PyTable& self) { return self.table->rows; });
    type.def_prop_ro(
        "num_rows", [](const PyTable& self) { return self.table->rows; }, "The number of rows.");
    type.def_prop_ro(
        "column_names",
        [](const PyTable& self) {
            nb::list names;
            for (const Column& column : self.table->columns)
                names.append(textToPython(column.name()));
            return names;
        },
        nb::sig("def column_names(self) -> list[str]"), "The names of the columns, in their order.");
    type.def(
        "__arrow_c_stream__", [](const PyTable& self, nb::handle) { return arrowStream(self); },
        nb::arg("requested_schema").none() = nb::none(),
        nb::sig("def __arrow_c_stream__(self, requested_schema: object = None) -> object"),
        "The Arrow PyCapsule interface. A requested schema is not followed, as that interface allows.");
    type.def("__arrow_c_schema__", &arrowSchema, nb::sig("def __arrow_c_schema__(self) -> object"),
             "The Arrow PyCapsule interface: the schema alone.");
    const auto helper = [&](const char* name, const char* signature, const char* doc) {
        type.def(
            name,
            [name](nb::handle self, const nb::args& args) {
                return nb::module_::import_("vnifc._convert").attr(name)(self, *args);
            },
            nb::sig(signature), doc);
    };
    helper("to_arrow", "def to_arrow(self) -> pyarrow.Table", "As a table of pyarrow.");
    helper("to_pandas", "def to_pandas(self) -> pandas.DataFrame", "As a data frame of pandas (extra `pandas`).");
    helper("to_polars", "def to_polars(self) -> polars.DataFrame", "As a data frame of polars (extra `polars`).");
    helper("to_parquet", "def to_parquet(self, path: str | os.PathLike[str], /) -> None", "Writes a Parquet file.");
    type.def(
        "__repr__",
        [](const PyTable& self) {
            std::string text = "<vnifc.Table, " + std::to_string(self.table->rows) + " rows:";
            for (const Column& column : self.table->columns)
                text.append(&column == self.table->columns.data() ? " " : ", ").append(column.name());
            return textToPython(text + '>');
        },
        nb::sig("def __repr__(self) -> str"));
}

} // namespace

PyTable tableOf(const PyFindings& findings) { return shared(findingColumns(findings.findings)); }

void bindTables(nb::module_& module, nb::class_<PyModel>& model) {
    bindTable(module);
    model.def(
        "table", &entities, nb::arg("entity"), nb::arg("columns").none() = nb::none(),
        nb::sig("def table(self, entity: str, columns: collections.abc.Sequence[str] | None = None) -> Table"),
        "A table of the instances of an entity and its subtypes: ``id``, ``entity`` and the attributes, or the\n"
        "`columns` named: attributes, and facets such as ``storey`` and ``Pset_WallCommon.FireRating``. References\n"
        "are numbers, with the target's entity in a column NAME_entity beside them; literals are dictionary-encoded.");
    model.def(
        "properties",
        [](PyModel& self, const std::optional<std::string>& entity,
           const std::optional<std::vector<std::string>>& sets) { return properties(self, entity, sets, false); },
        nb::arg("entity").none() = nb::none(), nb::arg("sets").none() = nb::none(),
        nb::sig("def properties(self, entity: str | None = None, sets: collections.abc.Sequence[str] | None = None) "
                "-> Table"),
        "A table of all properties and quantities that prevail, a row each: ``object``, ``entity``, ``global_id``,\n"
        "``set``, ``name``, ``value`` in words, ``number``, ``type``, ``unit``, ``si_value``, ``from_type``.\n\n"
        ">>> import vnifc\n"
        ">>> wall = vnifc.create(\"IFC4\").create(\"IfcWall\")\n"
        ">>> model = vnifc.create(\"IFC4\")\n"
        ">>> model.create(\"IfcWall\").set_property(\"Pset_WallCommon.FireRating\", \"EI60\")\n"
        "True\n"
        ">>> len(model.properties(sets=[\"Pset_WallCommon\"]))\n"
        "1");
    model.def(
        "quantities",
        [](PyModel& self, const std::optional<std::string>& entity,
           const std::optional<std::vector<std::string>>& sets) { return properties(self, entity, sets, true); },
        nb::arg("entity").none() = nb::none(), nb::arg("sets").none() = nb::none(),
        nb::sig("def quantities(self, entity: str | None = None, sets: collections.abc.Sequence[str] | None = None) "
                "-> Table"),
        "As `properties`, quantities alone.");
    model.def("relations", &relations, nb::arg("entity").none() = nb::none(),
              nb::sig("def relations(self, entity: str | None = None) -> Table"),
              "A table of the relationships, a row for each related object: ``relation``, ``entity``, ``relating``,\n"
              "``relating_entity``, ``related``, ``related_entity``.");
}

} // namespace vnifc::python
