"""Reading, writing, changing, checking and comparing models; threads and memory."""

from __future__ import annotations

import doctest
import gc
import os
import subprocess
import sys
import threading
from pathlib import Path

import pytest
from conftest import house_text

import vnifc


def test_saved_and_read_again(house: vnifc.Model, tmp_path: Path) -> None:
    path = tmp_path / "Maß.ifc"
    house.set_property(house.by_type("IfcDoor"), "Pset_DoorCommon.FireRating", "EI30")
    house.save(path)
    again = vnifc.open(str(path))
    assert again.release == house.release and len(again) == len(house)
    (difference,) = vnifc.diff(vnifc.open_text(house_text(house.release)), again)
    (detail,) = difference.details
    assert (difference.kind, difference.entity, difference.new_id) == ("changed", "IfcDoor", 17)
    assert (detail.path, detail.before, detail.after) == ("Pset_DoorCommon.FireRating", "", "EI30")


def test_files_that_cannot_be(tmp_path: Path, model: vnifc.Model) -> None:
    for path in (tmp_path / "none.ifc", tmp_path):
        with pytest.raises(vnifc.ReadError, match=path.name):
            vnifc.open(path)
    with pytest.raises(vnifc.WriteError):
        model.save(tmp_path / "none" / "a.ifc")
    with pytest.raises(vnifc.ReadError, match="IFC9"):
        vnifc.create("IFC9")
    with pytest.raises(vnifc.ReadError):
        vnifc.open_text(b"\x00\xff not a file")


def test_keys(house: vnifc.Model) -> None:
    for key in (0, -1, 99, 2**80, "99", "no GlobalId", ""):
        assert key not in house and house.get(key) is None
        with pytest.raises(KeyError):
            house[key]
    with pytest.raises(TypeError):
        house[1.5]  # type: ignore[index]
    assert house.get(16).Name == "Straßenwand" and "#16" in house
    assert [each.id for each in house] == list(range(1, 22))
    everything = house.by_type("IfcRoot")
    assert everything[-1] == everything[len(everything) - 1] and everything[::-1][0] == everything[-1]
    with pytest.raises(IndexError):
        everything[99]
    assert len(house.by_type("IfcElement")) == 2 and len(house.by_type("IfcElement", exact=True)) == 0
    with pytest.raises(vnifc.NotFound):
        house.by_type("IfcNothing")


def test_selector_faults_have_a_column(house: vnifc.Model) -> None:
    with pytest.raises(vnifc.SelectorError, match="expected") as raised:
        house.find("IfcWall, Name=")
    assert raised.value.column == 15


def test_findings_are_a_sequence_and_a_table() -> None:
    text = house_text("IFC4").replace("IFCDOOR(", "IFCDOR(").replace("'House'", "3.5")
    model = vnifc.open_text(text)
    codes = [each.code for each in model.findings]
    assert "unknown-keyword" in codes and len(model.findings) == len(codes) > 1
    finding = next(each for each in model.findings if each.code == "unknown-keyword")
    assert finding.instance == 17 and finding.line == 24 and finding.severity in ("warning", "error")
    assert "IFCDOR" in str(finding)
    rows = model.findings.table().to_arrow().to_pylist()
    assert [row["code"] for row in rows] == codes and rows[0]["line"] == model.findings[0].line
    model.create("IfcRelDefinesByType")
    missing = [each.attribute for each in model.check() if each.keyword == "IFCRELDEFINESBYTYPE"]
    assert missing == ["RelatedObjects", "RelatingType"]


def test_rules_of_the_schema(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    declarations = Path(__file__).parents[2] / "schemas" / "ifc4" / "declarations.exp"
    before, name, after = declarations.read_text(encoding="utf-8").partition("ENTITY IfcWall\n")
    text = tmp_path / "IFC4.exp"
    text.write_text(before + name + after.replace("END_ENTITY", "WHERE Named : EXISTS(Name);\nEND_ENTITY", 1))
    model = vnifc.create("IFC4")
    wall = model.create("IfcWall")
    model.create("IfcWall", Name="W")
    violated = [each for each in model.check(rules=text) if each.code == "rule"]
    assert [(each.rule, each.instance) for each in violated] == [("IfcWall.Named", wall.id)]
    assert model.check(rules=str(text)).errors == model.check().errors + 1
    monkeypatch.setenv("VNIFC_RULES", str(tmp_path))
    assert model.check(rules=True).errors == model.check(rules=False).errors + 1
    rules = vnifc.Rules("IFC4")
    assert "IfcWall.Named" in rules.names and rules.remarks.errors == 0
    assert [each.rule for each in model.check(rules=rules) if each.code == "rule"] == ["IfcWall.Named"]
    with pytest.raises(ValueError, match="another schema"):
        vnifc.create("IFC2X3").check(rules=rules)
    monkeypatch.setenv("VNIFC_RULES", str(tmp_path / "none"))
    monkeypatch.setenv("XDG_DATA_HOME", str(tmp_path / "none"))
    with pytest.raises(vnifc.NotFound, match="VNIFC_RULES"):
        model.check(rules=True)
    rules = vnifc.Rules("IFC4", text)
    assert "IfcWall.Named" in rules.names and rules.remarks.errors == 0
    assert [each.rule for each in model.check(rules=rules) if each.code == "rule"] == ["IfcWall.Named"]
    with pytest.raises(ValueError, match="another schema"):
        vnifc.create("IFC2X3").check(rules=rules)
    with pytest.raises(TypeError):
        model.check(rules=7)  # type: ignore[arg-type]
    text.write_text("nothing")
    with pytest.raises(vnifc.Error, match="IFC4.exp:1:1"):
        model.check(rules=text)


def test_derived_attributes(tmp_path: Path) -> None:
    declarations = (Path(__file__).parents[2] / "schemas" / "ifc4" / "declarations.exp").read_text(encoding="utf-8")
    exponents = "IfcDimensionalExponents(1, 0, 0, 0, 0, 0, 0)"
    for entity, attribute, expression in (
        ("IfcCartesianPoint", "Dim", "HIINDEX(Coordinates)"),
        ("IfcCompositeCurve", "ClosedCurve", "UNKNOWN"),
        ("IfcSIUnit", "Dimensions", exponents),
        ("IfcGeometricRepresentationSubContext", "TrueNorth", "ParentContext.TrueNorth"),
        ("IfcAxis2Placement2D", "P", "[RefDirection, RefDirection]"),
        ("IfcCartesianTransformationOperator", "Scl", "NVL(Scale, 1.0)"),
    ):
        before, name, after = declarations.partition(f"ENTITY {entity}\n")
        head, derived, tail = after.partition(f"{attribute} : ")
        declarations = before + name + head + derived + tail.replace(":= ?", f":= {expression}", 1)
    text = tmp_path / "IFC4.exp"
    text.write_text(declarations, encoding="utf-8")
    rules = vnifc.Rules("IFC4", text)
    model = vnifc.create("IFC4")
    north = model.create("IfcDirection", DirectionRatios=[0, 1])
    context = model.create("IfcGeometricRepresentationContext", TrueNorth=north)
    unit = model.create("IfcSIUnit", UnitType="LENGTHUNIT", Name="METRE")
    point = model.create("IfcCartesianPoint", Coordinates=[1, 2])
    placement = model.create("IfcAxis2Placement2D", Location=point, RefDirection=north)
    for instance, attribute, expected in (
        (point, "dim", 2),
        (model.create("IfcCompositeCurve"), "ClosedCurve", vnifc.UNKNOWN),
        (model.create("IfcGeometricRepresentationSubContext", ParentContext=context), "TrueNorth", north),
        (placement, "P", [north, north]),
        (model.create("IfcCartesianTransformationOperator2D"), "Scl", 1.0),
        (model.create("IfcBSplineCurveWithKnots"), "UpperIndexOnKnots", None),
    ):
        assert instance.derived(attribute, rules) == expected
    assert unit.derived("Dimensions", rules=text).type == "IfcDimensionalExponents"
    assert list(unit.derived("Dimensions", rules).value.values()) == [1, 0, 0, 0, 0, 0, 0]
    assert rules.derived_attributes(placement) == ["Dim", "P"]
    with pytest.raises(AttributeError, match="IfcCartesianPoint has no derived attribute Coordinates"):
        point.derived("Coordinates", rules)
    with pytest.raises(TypeError):
        point.derived("Dim", rules=None)  # type: ignore[arg-type]
    model.erase(point)
    with pytest.raises(vnifc.NotFound, match="erased"):
        point.derived("Dim", rules)
    model.close()
    with pytest.raises(vnifc.Closed):
        north.derived("Dim", rules)


def test_changes_of_meaning(house: vnifc.Model) -> None:
    wall, door, storey = house[16], house[17], house[13]
    house.assign_container([wall], None)
    assert wall.container is None and door.container == storey
    house.assign_container(wall, storey)
    assert wall.container == storey
    assert house.remove(door) > 0 and 17 not in house
    assert wall.set_property("Pset_WallCommon.FireRating", None) and wall.psets["Pset_WallCommon"]["FireRating"] is None


def test_threads_read_one_model_while_others_change_and_save_it(tmp_path: Path) -> None:
    model = vnifc.create("IFC4")
    walls = [model.create("IfcWall", Name=f"W{i}") for i in range(300)]
    for wall in walls:
        wall.set_property("Pset_WallCommon.FireRating", "EI60")
    failures: list[BaseException] = []

    def repeat(work: object) -> None:
        try:
            for i in range(20):
                work(i)  # type: ignore[operator]
        except BaseException as error:  # noqa: BLE001
            failures.append(error)

    def read(_: int) -> None:
        assert all(each.psets["Pset_WallCommon"]["FireRating"] for each in walls)

    works = [
        read,
        lambda i: model.save(tmp_path / f"{i}.ifc"),
        lambda _: len(model.properties()),
        lambda _: model.check(),
        lambda _: vnifc.diff(model, model),
        lambda i: model.set_property(walls, "Pset_WallCommon.FireRating", f"EI{i}"),
        lambda i: model.erase(model.create("IfcSlab", Name=str(i))),
    ]
    threads = [threading.Thread(target=repeat, args=(work,)) for work in works]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert failures == []
    assert len(vnifc.open(tmp_path / "19.ifc").by_type("IfcWall")) == 300


def test_other_threads_run_while_a_file_is_read(tmp_path: Path) -> None:
    model = vnifc.create("IFC4")
    for i in range(20000):
        model.create("IfcCartesianPoint", Coordinates=(i, 0, 0))
    path = tmp_path / "points.ifc"
    model.save(path)
    started = threading.Event()
    reader = threading.Thread(target=lambda: (started.set(), [vnifc.open(path, threads=1) for _ in range(10)]))
    reader.start()
    started.wait()
    turns = 0
    while reader.is_alive():
        turns += 1
    assert turns > 1000


@pytest.mark.skipif("libasan" in os.environ.get("LD_PRELOAD", ""), reason="the sanitizer keeps what is given back")
def test_memory_stays_flat_over_a_thousand_models() -> None:
    text = house_text("IFC4X3_ADD2")

    def resident() -> int:
        gc.collect()
        return int(Path("/proc/self/statm").read_text().split()[1])

    def use() -> None:
        model = vnifc.open_text(text)
        names = [each.to_string() for each in model]
        model.properties().to_arrow()
        assert len(names) == 21 and model[16].psets

    # One model stays, so that the release's dictionary is not made anew each time.
    kept = vnifc.create("IFC4X3_ADD2")
    for _ in range(200):
        use()
    before = resident()
    for _ in range(1000):
        use()
    page = 4096
    assert (resident() - before) * page < 4_000_000
    assert len(kept) == 0


def test_the_tool_comes_along(house: vnifc.Model, tmp_path: Path) -> None:
    house.save(tmp_path / "house.ifc")
    tool = [sys.executable, "-m", "vnifc"]
    shown = subprocess.run([*tool, "show", "house.ifc", "#16"], cwd=tmp_path, capture_output=True, text=True)
    assert shown.returncode == 0 and "Straßenwand" in shown.stdout
    assert subprocess.run([*tool, "nonsense"], capture_output=True).returncode == 2


def documented() -> list[tuple[str, str]]:
    found = [("vnifc", vnifc.__doc__ or "")]
    for name in vnifc.__all__:
        each = getattr(vnifc, name)
        found.append((name, each.__doc__ or ""))
        if isinstance(each, type) and each.__module__.startswith("vnifc"):
            found += [(f"{name}.{key}", getattr(value, "__doc__", "") or "") for key, value in vars(each).items()]
    return [(name, text) for name, text in found if ">>>" in text]


@pytest.mark.parametrize(("name", "text"), documented(), ids=[name for name, _ in documented()])
def test_docstrings(name: str, text: str) -> None:
    names = {"vnifc": vnifc, "Literal": vnifc.Literal, "Typed": vnifc.Typed, "UNKNOWN": vnifc.UNKNOWN, "Unknown": type(vnifc.UNKNOWN)}
    example = doctest.DocTestParser().get_doctest(text, names, name, None, None)
    runner = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS)
    runner.run(example)
    assert runner.failures == 0 and runner.tries > 0


def test_every_class_and_function_has_an_example_or_says_what_it_is() -> None:
    assert {"open", "Instance", "Table", "create", "diff", "Typed"} <= {name for name, _ in documented()}
    assert all(getattr(vnifc, name).__doc__ for name in vnifc.__all__ if name != "UNKNOWN")
