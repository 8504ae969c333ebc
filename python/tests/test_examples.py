"""The examples do what they say, and a strict type checker has nothing to say of them."""

from __future__ import annotations

import importlib.util
import shutil
import subprocess
import sys
from pathlib import Path

import pytest
from conftest import RELEASES, house_text

import vnifc

EXAMPLES = Path(__file__).parents[1] / "examples"


def run(name: str, *arguments: object) -> str:
    command = [sys.executable, str(EXAMPLES / f"{name}.py"), *map(str, arguments)]
    done = subprocess.run(command, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done.stdout


@pytest.fixture
def folder(tmp_path: Path) -> Path:
    for release in RELEASES:
        (tmp_path / f"{release}.ifc").write_text(house_text(release), encoding="utf-8")
    (tmp_path / "broken.ifc").write_text("nothing")
    return tmp_path


def test_quantities_by_storey(folder: Path) -> None:
    model = vnifc.open(folder / "IFC4.ifc")
    length = vnifc.Typed("IfcLengthMeasure", 1500.0)
    wall, door = model[16], model[17]
    other = model.create("IfcWall")
    model.assign_container(other, model[13])
    model.set_property([wall, other], "Qto_WallBaseQuantities.Length", length)
    door.set_property("Qto_DoorBaseQuantities.Width", length)
    model.save(folder / "with.ifc")
    lines = [line.split() for line in run("quantities_by_storey", folder / "with.ifc").splitlines()[1:]]
    assert sorted(lines) == [
        ["Ground", "floor", "IfcDoor", "Width", "1.5", "1"],
        ["Ground", "floor", "IfcWall", "Length", "3.0", "2"],
    ]


def test_missing_properties(folder: Path) -> None:
    lines = run("missing_properties", folder, "IfcElement", "Pset_WallCommon", "FireRating").splitlines()
    assert lines[:-1] == [f"{release}.ifc: IfcDoor 1" for release in RELEASES]
    assert lines[-1].startswith("broken.ifc: cannot read")


def test_bulk_edit(folder: Path) -> None:
    table = folder / "edits.csv"
    table.write_text("IfcDoor;Pset_DoorCommon.FireRating;EI30\nIfcWall;A.IsÄußere;true\nIfcWall;A.U;0.25\n", encoding="utf-8")
    assert run("bulk_edit", folder / "IFC2X3.ifc", folder / "new.ifc", table) == "3 objects changed\n"
    new = vnifc.open(folder / "new.ifc")
    assert new[17].psets["Pset_DoorCommon"]["FireRating"] == "EI30"
    assert dict(new[16].psets["A"]) == {"IsÄußere": True, "U": 0.25}


@pytest.mark.parametrize(("name", "module"), [("dask_properties", "dask"), ("spark_map_in_arrow", "pyspark")])
def test_properties_of_a_folder(folder: Path, name: str, module: str) -> None:
    pytest.importorskip(module)
    if module == "pyspark" and shutil.which("java") is None:
        pytest.skip("there is no Java")
    (folder / "broken.ifc").unlink()
    vnifc.create("IFC4").save(folder / "empty.ifc")
    assert run(name, folder).strip() == f"Pset_WallCommon.FireRating {len(RELEASES)}"


def test_portfolio(folder: Path) -> None:
    (folder / "broken.ifc").unlink()
    for path in folder.glob("*.ifc"):
        model = vnifc.open(path)
        area = model.create("IfcSIUnit", UnitType="AREAUNIT", Name="SQUARE_METRE")
        model[7].Units = [*model[7].Units, area]
        model.set_property(model[16], "Qto_WallBaseQuantities.NetSideArea", vnifc.Typed("IfcAreaMeasure", 2.5))
        model.save(path)
    vnifc.create("IFC4").save(folder / "empty.ifc")
    expected = "Ground floor\tEI60\t4\t10.0\n"
    assert run("portfolio", folder) == expected
    if importlib.util.find_spec("pyspark") and shutil.which("java"):
        assert run("portfolio", folder, "local[1]") == expected


def test_strict_types() -> None:
    command = [sys.executable, "-m", "mypy", "--strict", "--ignore-missing-imports", *map(str, EXAMPLES.glob("*.py"))]
    done = subprocess.run(command, capture_output=True, text=True, cwd=EXAMPLES)
    assert done.returncode == 0, done.stdout + done.stderr
