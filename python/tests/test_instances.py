"""Values, names and lifetimes of instances."""

from __future__ import annotations

import pytest
from conftest import RELEASES

import vnifc


def test_house_reads_the_same_in_every_release(house: vnifc.Model) -> None:
    assert house.release in RELEASES and len(house) == 21
    (wall,) = house.by_type("IfcWall")
    assert wall == house[16] == house["0000000000000000000016"] == house.find("IfcWall")[0]
    assert (wall.id, wall.entity, wall.Name, wall["name"]) == (16, "IfcWall", "Straßenwand", "Straßenwand")
    assert wall.is_a("IfcElement") and not wall.is_a("IfcDoor") and not wall.is_a("IfcNothing")
    assert wall.psets["Pset_WallCommon"]["FireRating"] == "EI60"
    assert wall.storey == wall.container == house[13] and wall.building == house[12]
    assert wall.storey.contents[:] [-1] == house[17]
    assert [each.id for each in house.find("IfcWall, Pset_WallCommon.FireRating=EI60")] == [16]
    assert house[17].OverallWidth == 914.4
    assert house.project is not None and house.project.LongName is None
    assert house[7].Units == [house[6]]
    assert [each.id for each in house[16].referrers] == [18, 21]


@pytest.mark.parametrize(
    ("entity", "name", "value", "read"),
    [
        ("IfcWall", "Name", "Straße 漢字 😀 \\ '", None),
        ("IfcWall", "Name", "", None),
        ("IfcWall", "Name", None, None),
        ("IfcWall", "PredefinedType", "SOLIDWALL", "SOLIDWALL"),
        ("IfcWall", "PredefinedType", vnifc.Literal(".SOLIDWALL."), "SOLIDWALL"),
        ("IfcDoor", "OverallWidth", 0.9, None),
        ("IfcDoor", "OverallWidth", 1, 1.0),
        ("IfcCartesianPoint", "Coordinates", (1, 2.5, 3), [1.0, 2.5, 3.0]),
        ("IfcPropertySingleValue", "NominalValue", True, True),
        ("IfcPropertySingleValue", "NominalValue", vnifc.UNKNOWN, vnifc.UNKNOWN),
        ("IfcPropertySingleValue", "NominalValue", vnifc.Typed("IfcLengthMeasure", 2.5), 2.5),
        ("IfcPropertySingleValue", "NominalValue", 7, 7),
        ("IfcPropertyEnumeratedValue", "EnumerationValues", [vnifc.Typed("IfcLabel", "a"), vnifc.Typed("IfcInteger", 3)], ["a", 3]),
        ("IfcCartesianPointList3D", "CoordList", [[0, 0, 0], [1, 2, 3]], [[0.0, 0.0, 0.0], [1.0, 2.0, 3.0]]),
        ("IfcOwnerHistory", "CreationDate", 2**31 - 2, None),
    ],
)
def test_values_come_back(model: vnifc.Model, entity: str, name: str, value: object, read: object) -> None:
    instance = model.create(entity)
    setattr(instance, name, value)
    expected = value if read is None else read
    again = vnifc.open_text(model.text())[instance.id]
    for each in (instance[name], getattr(again, name)):
        assert each == expected and type(each) is (vnifc.Literal if name == "PredefinedType" else type(expected))
    delattr(instance, name)
    assert instance[name] is None


@pytest.mark.parametrize(
    ("entity", "name", "value", "error"),
    [
        ("IfcWall", "Name", 3, vnifc.BadValue),
        ("IfcWall", "Name", object(), vnifc.BadValue),
        ("IfcWall", "PredefinedType", "NOSUCH", ValueError),
        ("IfcWall", "Nome", "x", AttributeError),
        ("IfcWall", "colour", "x", AttributeError),
        ("IfcWall", "id", 12, AttributeError),
        ("IfcWall", "IsDefinedBy", [], vnifc.BadValue),
        ("IfcDoor", "OverallWidth", "wide", vnifc.BadValue),
        ("IfcDoor", "OverallWidth", 2**70, vnifc.BadValue),
        ("IfcDoor", "OverallWidth", float("nan"), None),
    ],
)
def test_what_does_not_fit_changes_nothing(
    model: vnifc.Model, entity: str, name: str, value: object, error: type[Exception] | None
) -> None:
    instance = model.create(entity)
    before = instance.to_string()
    with pytest.raises(error or vnifc.BadValue):
        setattr(instance, name, value)
    assert instance.to_string() == before


def test_a_list_in_itself_and_bytes_that_are_no_text(model: vnifc.Model) -> None:
    endless: list[object] = []
    endless.append(endless)
    point = model.create("IfcCartesianPoint")
    with pytest.raises(vnifc.BadValue, match="nested"):
        point.Coordinates = endless
    model.create("IfcWall", Name="a to c")
    wall = vnifc.open_text(model.text().encode().replace(b"a to c", b"a\xffc"))
    (broken,) = wall.by_type("IfcWall")
    assert broken.Name.encode("utf-8", "surrogateescape") == b"a\xffc"
    broken.Description = broken.Name
    assert broken.Description == broken.Name
    assert wall.table("IfcWall").to_arrow()["Name"].to_pylist() == ["a\ufffdc"]


def test_create_is_all_or_nothing(model: vnifc.Model) -> None:
    for attributes in ({"Nome": "x"}, {"Name": "x", "PredefinedType": "NOSUCH"}):
        with pytest.raises((vnifc.AttributeError, vnifc.BadValue)):
            model.create("IfcWall", **attributes)
    assert len(model) == 0
    for entity, error in (("IfcNothing", vnifc.NotFound), ("IfcRoot", vnifc.BadValue)):
        with pytest.raises(error):
            model.create(entity)


def test_attributes_and_methods_do_not_hide_each_other(model: vnifc.Model) -> None:
    wall = model.create("IfcWall")
    assert not hasattr(wall, "Nome") and not hasattr(wall, "nome") and hasattr(wall, "Name")
    assert {"Name", "HasOpenings", "psets"} - {"HasOpenings"} <= set(dir(wall))
    assert wall.HasOpenings is None or wall.HasOpenings == []
    assert list(wall.as_dict()) == wall.attributes()
    with pytest.raises(TypeError):
        wall.psets["Pset_WallCommon"] = {}  # type: ignore[index]


def uses(instance: vnifc.Instance) -> list[object]:
    return [
        lambda: instance.Name,
        lambda: instance["Name"],
        lambda: setattr(instance, "Name", "x"),
        lambda: instance.psets,
        lambda: instance.storey,
        lambda: instance.parts,
        lambda: instance.is_a("IfcWall"),
        lambda: instance.set_property("A.B", 1),
        lambda: instance.to_string(),
        lambda: instance.referrers,
        lambda: instance._repr_html_(),
        lambda: dir(instance),
    ]


def test_erased_and_closed_raise(model: vnifc.Model) -> None:
    wall, other = model.create("IfcWall"), model.create("IfcWall")
    walls = model.by_type("IfcWall")
    model.erase(wall)
    for use in uses(wall):
        with pytest.raises(vnifc.NotFound):
            use()  # type: ignore[operator]
    assert "erased" in repr(wall) and wall == walls[0] and len({wall, walls[0]}) == 1
    with pytest.raises(vnifc.NotFound):
        model.erase(wall)
    target = vnifc.create("IFC4")
    relation = target.create("IfcRelVoidsElement")
    with model:
        pass
    for use in [*uses(other), lambda: other.id, lambda: len(model), lambda: model.by_type("IfcWall"), model.text]:
        with pytest.raises(vnifc.Closed):
            use()  # type: ignore[operator]
    with pytest.raises(vnifc.Closed):
        relation.RelatingBuildingElement = other
    assert "closed" in repr(other) and "closed" in repr(model) and other == walls[1]
    model.close()


def test_instances_keep_their_model() -> None:
    wall = vnifc.create("IFC4").create("IfcWall", Name="a")
    assert wall.Name == "a"
    found = vnifc.create("IFC4").by_type("IfcWall")
    assert len(found) == 0 and list(found) == []


def test_instances_of_other_models_are_refused(model: vnifc.Model) -> None:
    other = vnifc.create("IFC4").create("IfcWall")
    with pytest.raises(vnifc.BadValue):
        model.create("IfcRelVoidsElement").RelatingBuildingElement = other
    for call in (model.remove, lambda each: model.set_property(each, "A.B", 1), model.erase):
        with pytest.raises(vnifc.BadValue):
            call(other)
    assert other != model.create("IfcWall")


def test_shown(model: vnifc.Model) -> None:
    wall = model.create("IfcWall", Name="<b>&" + "ü" * 400)
    assert len(repr(wall)) < 210 and repr(wall).startswith("#1=IFCWALL(")
    assert "&lt;b&gt;&amp;" in wall._repr_html_() and "IfcWall" in model._repr_html_()
    assert repr(model.by_type("IfcWall")) == "<vnifc.Instances, 1>"
