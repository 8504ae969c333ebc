"""Net area of walls by storey and fire rating over a folder of models: with DuckDB in one process, or with Spark.

Usage: portfolio.py FOLDER [SPARK_MASTER]

SPARK_MASTER is a cluster or, for one machine, local[2].
"""

from __future__ import annotations

import os
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import duckdb
import pyarrow as pa

import vnifc

SET, AREA = "Qto_WallBaseQuantities", "NetSideArea"
FACETS = ["storey", "Pset_WallCommon.FireRating"]

# Areas are compared to the square centimetre: the order in which they are added differs.
QUERY = f"""
    SELECT storey, `Pset_WallCommon.FireRating` AS rating, count(*) AS walls, round(sum(si_value), 4) AS area
    FROM walls JOIN areas ON walls.file = areas.file AND walls.id = areas.object
    WHERE areas.name = '{AREA}'
    GROUP BY storey, rating ORDER BY storey NULLS FIRST, rating NULLS FIRST
"""


def tables_of(path: Path) -> tuple[pa.Table, pa.Table]:
    with vnifc.open(path, threads=1) as model:
        walls = pa.table(model.table("IfcWall", columns=FACETS))
        areas = pa.table(model.quantities("IfcWall", [SET])).select(["object", "name", "si_value"])
    # Dictionaries of different files become those of one table; columns without any value are of no type of their own.
    plain = [pa.field(each.name, pa.uint64() if each.name == "id" else pa.string()) for each in walls.schema]
    file = pa.array([path.name])
    walls, areas = walls.cast(pa.schema(plain)), areas.unify_dictionaries()
    return (
        walls.append_column("file", pa.repeat(file[0], len(walls))),
        areas.append_column("file", pa.repeat(file[0], len(areas))),
    )


def with_duckdb(folder: Path) -> list[tuple[object, ...]]:
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        both = list(pool.map(tables_of, sorted(folder.glob("*.ifc"))))
    connection = duckdb.connect()
    connection.register("walls", pa.concat_tables([each[0] for each in both]))
    connection.register("areas", pa.concat_tables([each[1] for each in both]))
    rows: list[tuple[object, ...]] = connection.execute(QUERY.replace("`", '"')).fetchall()
    return rows


def with_spark(folder: Path, master: str) -> list[tuple[object, ...]]:
    from pyspark.sql import SparkSession

    import vnifc.spark

    os.environ.setdefault("PYSPARK_PYTHON", sys.executable)
    spark = SparkSession.builder.master(master).config("spark.ui.enabled", "false").getOrCreate()
    vnifc.spark.register(spark)
    models = spark.read.format("vnifc")
    models.options(table="IfcWall", columns=", ".join(FACETS)).load(str(folder)).createOrReplaceTempView("walls")
    areas = spark.read.format("vnifc").options(table="quantities", entity="IfcWall", sets=SET)
    areas.options(columns="object, name, si_value").load(str(folder)).createOrReplaceTempView("areas")
    rows: list[tuple[object, ...]] = [tuple(row) for row in spark.sql(QUERY).collect()]
    spark.stop()
    return rows


def main() -> None:
    folder = Path(sys.argv[1]).resolve()
    for row in with_spark(folder, sys.argv[2]) if len(sys.argv) > 2 else with_duckdb(folder):
        print("\t".join("-" if each is None else str(each) for each in row))


if __name__ == "__main__":
    main()
