"""The data source on a local Spark."""

from __future__ import annotations

import os
import shutil
import sys
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import pytest
from conftest import RELEASES, house_text

import vnifc

pyspark_sql = pytest.importorskip("pyspark.sql", reason="PySpark is not installed")
if shutil.which("java") is None:
    pytest.skip("there is no Java", allow_module_level=True)

pytestmark = pytest.mark.filterwarnings("default")


@pytest.fixture(scope="module")
def spark() -> Iterator[Any]:
    from vnifc.spark import register

    # Spark would take the python3 of the system, which has no such package.
    os.environ["PYSPARK_PYTHON"] = sys.executable
    builder = pyspark_sql.SparkSession.builder.master("local[2]").config("spark.ui.enabled", "false")
    session = builder.config("spark.sql.shuffle.partitions", "2").getOrCreate()
    session.sparkContext.setLogLevel("OFF")
    register(session)
    yield session
    session.stop()


@pytest.fixture
def folder(tmp_path: Path) -> Path:
    for i in range(40):
        release = RELEASES[i % len(RELEASES)]
        (tmp_path / f"{i:02}.ifc").write_text(house_text(release), encoding="utf-8")
    return tmp_path


def read(spark: Any, path: Path, **options: str) -> Any:
    return spark.read.format("vnifc").options(**options).load(str(path))


def test_tables(spark: Any, folder: Path) -> None:
    properties = read(spark, folder, partitionBytes="5000")
    assert 1 < properties.rdd.getNumPartitions() < 40
    counts = {row["release"]: row["count"] for row in properties.groupBy("release").count().collect()}
    assert counts == dict.fromkeys(RELEASES, 10)
    row = properties.where("file = '01.ifc'").first()
    assert (row["object"], row["set"], row["name"], row["value"]) == (16, "Pset_WallCommon", "FireRating", "EI60")
    walls = read(spark, folder / "*.ifc", table="IfcElement", columns="Name, storey")
    assert {(each["id"], each["Name"], each["storey"]) for each in walls.collect()} == {
        (16, "Straßenwand", "Ground floor"),
        (17, "Front door", "Ground floor"),
    }
    assert read(spark, folder, table="relations").count() == 40 * 5
    assert read(spark, folder, sets="Pset_DoorCommon").count() == 0


def test_broken_files_fail_or_are_findings(spark: Any, folder: Path) -> None:
    (folder / "broken.ifc").write_text("nothing")
    with pytest.raises(Exception, match="broken.ifc"):
        read(spark, folder).count()
    assert read(spark, folder, onError="skip").count() == 40
    (finding,) = read(spark, folder, table="findings").where("code = 'unreadable'").collect()
    assert finding["file"] == "broken.ifc" and "broken.ifc" in finding["found"]
    with pytest.raises(Exception, match="there is no file"):
        read(spark, folder / "none" / "*.ifc").count()


def test_same_numbers_as_on_one_machine(spark: Any, folder: Path) -> None:
    models = [vnifc.open(path) for path in sorted(folder.glob("*.ifc"))]
    alone = sum(len(model.properties()) for model in models)
    assert read(spark, folder).count() == alone


def test_columns_and_filters_reach_the_source(spark: Any, folder: Path) -> None:
    assert read(spark, folder, columns="set, value").columns == ["file", "release", "set", "value"]
    with pytest.raises(Exception, match="has no column nonsense"):
        read(spark, folder, columns="nonsense")
    # A file that cannot be read tells whether it was left out before it was read.
    (folder / "broken.ifc").write_text("nothing")
    for condition, expected in (
        ("file = '01.ifc'", 1),
        ("file IN ('01.ifc', '02.ifc', 'none.ifc')", 2),
        ("file IN ('01.ifc', '02.ifc') AND file = '02.ifc'", 1),
        ("file = 'none.ifc'", 0),
    ):
        assert read(spark, folder).where(condition).count() == expected, condition
    (folder / "broken.ifc").unlink()
    for options, condition, expected in (
        ({}, "set = 'Pset_WallCommon'", 40),
        ({}, "set = 'Pset_DoorCommon'", 0),
        ({"sets": "Pset_WallCommon"}, "set = 'Pset_DoorCommon'", 0),
        ({}, "set IN ('Pset_WallCommon', 'x') AND entity = 'IfcWall'", 40),
        ({}, "entity = 'IfcElement'", 0),  # of its subtypes, which are none of it
        ({}, "entity = 'IfcFacility'", 0),  # not in each release
        ({"entity": "IfcWall"}, "entity = 'IfcDoor'", 0),
        ({}, "set IS NULL OR name = 'FireRating'", 40),
        ({"table": "relations"}, "entity = 'IfcRelAggregates'", 80),
    ):
        assert read(spark, folder, **options).where(condition).count() == expected, (options, condition)


def test_only_what_a_filter_leaves_is_made(folder: Path) -> None:
    datasource = pytest.importorskip("pyspark.sql.datasource")
    if not hasattr(datasource, "EqualTo"):
        pytest.skip("a Spark without filters for sources in Python")
    from vnifc.spark import _FilteringReader

    reader = _FilteringReader({"path": str(folder)}, [], None)
    filters = [datasource.EqualTo(("file",), "01.ifc"), datasource.EqualTo(("set",), "Pset_DoorCommon")]
    assert reader.pushFilters(filters) == filters
    assert [partition.paths for partition in reader.partitions()] == [[str(folder / "01.ifc")]]
    assert len(reader._rows(vnifc.open(folder / "01.ifc"), "properties")) == 0
