"""Tables: what is in them, and that other programs take them."""

from __future__ import annotations

from pathlib import Path

import duckdb
import polars
import pyarrow as pa
import pyarrow.parquet
import pytest

import vnifc


def rows(table: vnifc.Table) -> list[dict[str, object]]:
    arrow = pa.table(table)
    arrow.validate(full=True)
    assert arrow.column_names == table.column_names and arrow.num_rows == len(table) == table.num_rows
    result: list[dict[str, object]] = arrow.to_pylist()
    return result


def label(text: str) -> vnifc.Typed:
    return vnifc.Typed("IfcLabel", text)


def test_instances(house: vnifc.Model) -> None:
    (door,) = rows(house.table("IfcDoor"))
    expected = house[17].as_dict()
    assert {key: door[key] for key in ("GlobalId", "Name", "Tag", "OverallWidth")} == {
        key: expected[key] for key in ("GlobalId", "Name", "Tag", "OverallWidth")
    }
    assert (door["id"], door["entity"], door["OwnerHistory"], door["OwnerHistory_entity"]) == (
        17,
        "IfcDoor",
        5,
        "IfcOwnerHistory",
    )
    both = rows(house.table("IfcElement", columns=["Name", "storey", "Pset_WallCommon.FireRating"]))
    assert both == [
        {"id": i, "entity": e, "Name": n, "storey": "Ground floor", "Pset_WallCommon.FireRating": r}
        for i, e, n, r in ((16, "IfcWall", "Straßenwand", "EI60"), (17, "IfcDoor", "Front door", None))
    ]
    relation = rows(house.table("IfcRelAggregates"))[0]
    assert relation["RelatedObjects"] == [12] and relation["RelatingObject_entity"] == "IfcProject"
    (single,) = rows(house.table("IfcPropertySingleValue"))
    assert (single["NominalValue"], single["NominalValue_type"]) == ("EI60", "IFCLABEL")


def test_lists_logicals_and_literals(model: vnifc.Model) -> None:
    model.create("IfcCartesianPointList3D", CoordList=[[0, 0, 0], [1, 2, 3]])
    model.create("IfcCartesianPointList3D")
    assert [row["CoordList"] for row in rows(model.table("IfcCartesianPointList3D"))] == [
        [[0.0, 0.0, 0.0], [1.0, 2.0, 3.0]],
        None,
    ]
    model.create("IfcPropertyEnumeratedValue", Name="a", EnumerationValues=[label("x"), vnifc.Typed("IfcReal", 1.5)])
    assert rows(model.table("IfcPropertyEnumeratedValue"))[0]["EnumerationValues"] == ["x", "1.5"]
    model.create("IfcWall", PredefinedType="SOLIDWALL")
    model.create("IfcWall")
    table = pa.table(model.table("IfcWall"))
    assert pa.types.is_dictionary(table["PredefinedType"].type)
    assert table["PredefinedType"].to_pylist() == ["SOLIDWALL", None]
    for value in (True, False, vnifc.UNKNOWN, None):
        model.create("IfcBSplineCurveWithKnots", ClosedCurve=value)
    assert pa.table(model.table("IfcBSplineCurve"))["ClosedCurve"].to_pylist() == ["TRUE", "FALSE", "UNKNOWN", None]


def with_everything() -> vnifc.Model:
    model = vnifc.create("IFC4")
    metre = model.create("IfcSIUnit", UnitType="LENGTHUNIT", Prefix="MILLI", Name="METRE")
    units = model.create("IfcUnitAssignment", Units=[metre])
    model.create("IfcProject", UnitsInContext=units)
    wall, kind = model.create("IfcWall"), model.create("IfcWallType", PredefinedType="SOLIDWALL")
    wall.set_property("Pset_WallCommon.FireRating", "EI60")
    wall.set_property("Pset_WallCommon.IsExternal", True)
    wall.set_property("A.Depth", vnifc.Typed("IfcLengthMeasure", 250))
    wall.set_property("A.Count", 3)
    wall.set_property("A.Nothing", None)
    wall.set_property("Qto_WallBaseQuantities.Length", vnifc.Typed("IfcLengthMeasure", 4000.0))
    kind.set_property("Pset_WallCommon.FireRating", "EI30")
    kind.set_property("Pset_WallCommon.LoadBearing", vnifc.UNKNOWN)
    model.assign_type(wall, kind)
    a = next(each for each in model.by_type("IfcPropertySet") if each.Name == "A")
    a.HasProperties = [
        *a.HasProperties,
        model.create("IfcPropertyListValue", Name="List", ListValues=[label("a"), label("b")]),
        model.create("IfcPropertyBoundedValue", Name="Bounded", SetPointValue=vnifc.Typed("IfcLengthMeasure", 5.0)),
        model.create(
            "IfcComplexProperty",
            Name="Complex",
            UsageName="",
            HasProperties=[model.create("IfcPropertySingleValue", Name="Part", NominalValue=1.5)],
        ),
    ]
    return model


def test_properties_say_what_instances_say() -> None:
    model = with_everything()
    (wall,) = model.by_type("IfcWall")
    found = {(row["set"], row["name"]): row for row in rows(model.properties("IfcWall"))}
    expected = {
        ("Pset_WallCommon", "FireRating"): ("EI60", None, "IFCLABEL", None, None, False),
        ("Pset_WallCommon", "IsExternal"): ("true", None, "IFCBOOLEAN", None, None, False),
        ("Pset_WallCommon", "LoadBearing"): ("unknown", None, "IFCLOGICAL", None, None, True),
        ("A", "Depth"): ("250", 250.0, "IFCLENGTHMEASURE", "mm", 0.25, False),
        ("A", "Count"): ("3", 3.0, "IFCINTEGER", None, None, False),
        ("A", "List"): ("a, b", None, "IFCLABEL", None, None, False),
        ("A", "Bounded"): ("5", 5.0, "IFCLENGTHMEASURE", "mm", 0.005, False),
        ("A", "Complex.Part"): ("1.5", 1.5, "IFCREAL", None, None, False),
        ("Qto_WallBaseQuantities", "Length"): ("4000", 4000.0, "IFCLENGTHMEASURE", "mm", 4.0, False),
    }
    columns = ("value", "number", "type", "unit", "si_value", "from_type")
    nothing = found.pop(("A", "Nothing"), None)
    assert nothing is None or nothing["value"] is None
    assert {key: tuple(row[column] for column in columns) for key, row in found.items()} == expected
    psets = {(s, n) for s, inner in wall.psets.items() for n in inner}
    assert psets - {("A", "Complex"), ("A", "Nothing")} == set(expected) - {("A", "Complex.Part")}
    assert {row["global_id"] for row in found.values()} == {wall.GlobalId}
    # Without the entity the type's own are rows too, and a set's name restricts.
    everything = rows(model.properties(sets=["Pset_WallCommon"]))
    assert [(row["entity"], row["name"]) for row in everything if row["entity"] == "IfcWallType"] == [
        ("IfcWallType", "FireRating"),
        ("IfcWallType", "LoadBearing"),
    ]
    assert {row["set"] for row in everything} == {"Pset_WallCommon"}
    (quantity,) = rows(model.quantities())
    assert (quantity["name"], quantity["si_value"], quantity["unit"]) == ("Length", 4.0, "mm")


def test_inverse_attributes_change_nothing(house: vnifc.Model) -> None:
    for model in (house, with_everything()):
        again = vnifc.open_text(model.text())
        without = rows(again.properties())
        # Asking for an inverse attribute sets them all.
        assert again.project is not None and isinstance(again.project.IsDefinedBy, list)
        assert rows(again.properties()) == without != []


def test_relations(house: vnifc.Model) -> None:
    found = rows(house.relations())
    assert [(row["relation"], row["relating"], row["related"], row["related_entity"]) for row in found] == [
        (14, 11, 12, "IfcBuilding"),
        (15, 12, 13, "IfcBuildingStorey"),
        (18, 13, 16, "IfcWall"),
        (18, 13, 17, "IfcDoor"),
        (21, 20, 16, "IfcWall"),
    ]
    assert len(rows(house.relations("IfcRelAggregates"))) == 2


def test_other_programs_take_tables(tmp_path: Path) -> None:
    table = with_everything().properties()
    sums = duckdb.sql('select count(*), sum(si_value) from "table" where entity = \'IfcWall\'').fetchall()[0]
    assert sums[1] == pytest.approx(0.25 + 0.005 + 4.0)
    frame, other = table.to_pandas(), table.to_polars()
    assert len(frame) == other.height == len(table)
    assert isinstance(other, polars.DataFrame) and other["name"].to_list() == frame["name"].tolist()
    table.to_parquet(tmp_path / "a.parquet")
    assert pyarrow.parquet.read_table(tmp_path / "a.parquet")["value"].to_pylist() == other["value"].to_list()


def test_a_table_outlives_its_model_and_is_not_copied() -> None:
    model = with_everything()
    table = model.properties()
    first, second = pa.table(table), pa.table(table)
    model.close()
    buffers = [each["number"].chunk(0).buffers()[1].address for each in (first, second)]
    assert buffers[0] == buffers[1]
    del table, model
    assert first.equals(second) and first["set"].to_pylist()
    stream = with_everything().properties().__arrow_c_stream__()
    assert pa.RecordBatchReader._import_from_c_capsule(stream).read_all().num_rows == first.num_rows


def test_empty_tables(model: vnifc.Model) -> None:
    for table in (model.properties(), model.quantities(), model.relations(), model.table("IfcWall"), model.findings.table()):
        assert rows(table) == [] and table.to_pandas().empty
    with pytest.raises(vnifc.NotFound):
        model.table("IfcNothing")
    with pytest.raises(vnifc.SelectorError):
        model.table("IfcWall", columns=["NoSuchAttribute"])
