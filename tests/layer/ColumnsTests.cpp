#include "Building.h"

#include <vnifc/Columns.h>

#include <algorithm>
#include <cstring>

namespace vnifc::test {

namespace {

class Columns : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(Layer, Columns, testing::ValuesIn(kReleases), [](const auto& each) { return each.param; });

template <class T>
T valueAt(const ColumnBuffer& buffer, std::size_t index) {
    T value{};
    EXPECT_LE((index + 1) * sizeof value, buffer.size());
    std::memcpy(&value, static_cast<const char*>(buffer.data()) + index * sizeof value, sizeof value);
    return value;
}

bool bitAt(const ColumnBuffer& buffer, std::size_t index) {
    return (valueAt<unsigned char>(buffer, index / 8) >> index % 8 & 1) != 0;
}

std::string cell(const Column& column, std::size_t row);

/// The elements of a list or the bytes of a text, which two offsets delimit.
std::string between(const Column& column, std::size_t row) {
    const auto begin = static_cast<std::size_t>(valueAt<std::int64_t>(column.offsets(), row));
    const auto end = static_cast<std::size_t>(valueAt<std::int64_t>(column.offsets(), row + 1));
    if (column.kind() == ColumnKind::kText)
        return {static_cast<const char*>(column.values().data()) + begin, end - begin};
    std::string text = "[";
    for (std::size_t i = begin; i < end; ++i)
        text += (i == begin ? "" : " ") + cell(*column.child(), i);
    return text + ']';
}

/// What a consumer of the format reads from the buffers alone.
std::string cell(const Column& column, std::size_t row) {
    if (column.nulls() > 0 && !bitAt(column.valid(), row))
        return "-";
    switch (column.kind()) {
    case ColumnKind::kId:
        return '#' + std::to_string(valueAt<std::uint64_t>(column.values(), row));
    case ColumnKind::kInteger:
        return std::to_string(valueAt<std::int64_t>(column.values(), row));
    case ColumnKind::kReal:
        return Value(valueAt<double>(column.values(), row)).toString();
    case ColumnKind::kBoolean:
        return bitAt(column.values(), row) ? "true" : "false";
    case ColumnKind::kCategory:
        return cell(*column.child(), static_cast<std::size_t>(valueAt<std::int32_t>(column.values(), row)));
    case ColumnKind::kText:
    case ColumnKind::kList:
        break;
    }
    return between(column, row);
}

const Column& columnOf(const ColumnTable& table, std::string_view name) {
    const auto found = std::ranges::find(table.columns, name, &Column::name);
    EXPECT_NE(found, table.columns.end()) << name;
    return found == table.columns.end() ? table.columns.front() : *found;
}

/// The rows of some columns, cells by "|".
std::vector<std::string> rowsOf(const ColumnTable& table, const std::vector<std::string>& names) {
    std::vector<std::string> rows(table.rows);
    for (const std::string& name : names) {
        const Column& column = columnOf(table, name);
        EXPECT_EQ(column.size(), table.rows) << name;
        for (std::size_t row = 0; row < table.rows; ++row)
            rows[row] += (rows[row].empty() ? "" : "|") + cell(column, row);
    }
    return rows;
}

using Rows = std::vector<std::string>;

// The bits of nulls come with the first one, which must not change what was before; nine rows take a second byte.
TEST(Column, NullsAfterValuesAndBrokenTexts) {
    Column text("t", ColumnKind::kText), category("c", ColumnKind::kCategory), truth("b", ColumnKind::kBoolean);
    for (const std::string_view each : {"a",
                                        "Stra\xC3\x9F"
                                        "e",
                                        "b\xFF", "b\xFE", "", "a", "a", "a"}) {
        text.text(each);
        category.text(each);
        truth.boolean(each == "a");
    }
    EXPECT_EQ(text.valid().size() + category.valid().size() + truth.valid().size(), 0U);
    for (Column* column : {&text, &category, &truth}) {
        column->null();
        column->fit();
        EXPECT_EQ(column->size(), 9U);
        EXPECT_EQ(column->nulls(), 1U);
        EXPECT_EQ(cell(*column, 8), "-");
    }
    EXPECT_EQ(cell(text, 1), "Stra\xC3\x9F"
                             "e");
    EXPECT_EQ(cell(text, 2), "b\xEF\xBF\xBD");
    EXPECT_EQ(cell(text, 4), "");
    EXPECT_EQ(cell(truth, 7) + cell(truth, 4), "truefalse");
    // What looks the same is one category.
    EXPECT_EQ(cell(category, 2), cell(category, 3));
    EXPECT_EQ(category.child()->size(), 4U);
}

TEST_P(Columns, EntitiesWithAttributesOfEachKind) {
    const Model model = openText(fileOf(GetParam(), R"(#1=IFCCARTESIANPOINT((1.,2.5));
#2=IFCCARTESIANPOINT(());
#3=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('EI 60'),#8);
#4=IFCPROPERTYSINGLEVALUE('b',$,IFCLOGICAL(.U.),#99);
#5=IFCPOLYLINE((#1,#2));
#6=IFCSURFACEOFLINEAREXTRUSION($,$,$,0.5);
#7=IFCPROPERTYLISTVALUE('c','',(IFCLABEL('x'),IFCINTEGER(3)),$);
#8=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);
)"),
                                 {.release = GetParam()});
    const struct {
        const char* entity;
        std::vector<std::string> columns;
        Rows expected;
    } kCases[] = {
        {"IfcCartesianPoint", {"id", "Coordinates"}, {"#1|[1 2.5]", "#2|-"}},
        {"ifcpolyline", {"entity", "Points"}, {"IfcPolyline|[#1 #2]"}},
        {"IfcPropertySingleValue",
         {"Name", "NominalValue", "NominalValue_type", "Unit", "Unit_entity"},
         {"a|EI 60|IFCLABEL|#8|IfcSIUnit", "b|unknown|IFCLOGICAL|#99|-"}},
        {"IfcPropertyListValue", {"Name", "ListValues"}, {"c|[x 3]"}},
        {"IfcSurfaceOfLinearExtrusion", {"SweptCurve", "Depth"}, {"-|0.5"}},
        {"IfcNamedUnit", {"id", "entity", "UnitType"}, {"#8|IfcSIUnit|LENGTHUNIT"}},
        {"IfcWall", {"id", "Name"}, {}},
    };
    for (const auto& [entity, columns, expected] : kCases)
        EXPECT_EQ(rowsOf(entityColumns(model, entity), columns), expected) << entity;
    EXPECT_NE(messageOf<NotFound>([&] { entityColumns(model, "IfcNothing"); }).find("IfcNothing"), std::string::npos);
}

TEST_P(Columns, FacetsPropertiesAndRelations) {
    const Model model = buildingOf(GetParam());
    const std::vector<std::string> facets = {"Name", "storey", "Pset_WallCommon.Width"};
    EXPECT_EQ(rowsOf(entityColumns(model, "IfcWall", facets), facets), (Rows{"W|First|200", "part|First|-"}));
    const std::vector<std::string> noFacet = {"no facet("};
    EXPECT_FALSE(messageOf<SelectorError>([&] { entityColumns(model, "IfcWall", noFacet); }).empty());

    // What an object says itself goes before its type's, of which only the rest is told.
    const std::vector<std::string> names = {"object", "name", "value", "from_type"};
    const Rows rows = rowsOf(propertyColumns(model, {.entity = "IfcWall", .sets = {"Pset_WallCommon"}}), names);
    for (const char* expected : {"#4|FireRating|EI60|false", "#4|IsExternal|true|true", "#7|FireRating|EI30|true"})
        EXPECT_EQ(std::ranges::count(rows, expected), 1) << expected;
    EXPECT_EQ(std::ranges::count_if(rows, [](const auto& row) { return row.starts_with("#4|FireRating|"); }), 1);
    EXPECT_TRUE(rowsOf(propertyColumns(model, {.sets = {"Pset_None"}}), {"object"}).empty());

    const std::vector<std::string> units = {"name", "number", "type", "si_value"};
    EXPECT_EQ(rowsOf(propertyColumns(model, {.entity = "IfcWall", .quantities = true}), units),
              (Rows{"NetVolume|2.5|IFCVOLUMEMEASURE|2.5"}));

    const std::vector<std::string> ends = {"relation", "relating", "related", "related_entity"};
    EXPECT_EQ(rowsOf(relationColumns(model, "IfcRelAggregates"), ends),
              (Rows{"#20|#1|#2|IfcBuilding", "#21|#2|#3|IfcBuildingStorey", "#25|#4|#7|IfcWall"}));
}

} // namespace

} // namespace vnifc::test
