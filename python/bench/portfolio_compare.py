"""Makes a folder of models and asks examples/portfolio.py for areas over all of them, with DuckDB and with Spark.

Usage: portfolio_compare.py FOLDER [FILES] [SPARK_MASTER]    (default: 500 local[2])

Fails when the two differ. Releases, numbers of walls and units vary from file to file, always in the same way.
"""

from __future__ import annotations

import subprocess
import sys
import time
from pathlib import Path

import vnifc

RELEASES = ("IFC2X3", "IFC4", "IFC4X3_ADD2")
STOREYS = 5
RATINGS = (None, "EI30", "EI60", "EI90")
EXAMPLE = Path(__file__).parents[1] / "examples" / "portfolio.py"


def make(path: Path, number: int) -> None:
    model = vnifc.create(RELEASES[number % len(RELEASES)])
    length = model.create("IfcSIUnit", UnitType="LENGTHUNIT", Prefix="MILLI" if number % 2 else None, Name="METRE")
    area = model.create("IfcSIUnit", UnitType="AREAUNIT", Name="SQUARE_METRE")
    model.create("IfcProject", UnitsInContext=model.create("IfcUnitAssignment", Units=[length, area]))
    storeys = [model.create("IfcBuildingStorey", Name=f"Storey {i}") for i in range(STOREYS)]
    for i, storey in enumerate(storeys):
        walls = [model.create("IfcWall", Name=f"W{j}") for j in range(20 + number % 60)]
        model.assign_container(walls, storey)
        for j, wall in enumerate(walls):
            size = vnifc.Typed("IfcAreaMeasure", 1.0 + (number * 7 + i * 3 + j) % 40 / 4)
            wall.set_property("Qto_WallBaseQuantities.NetSideArea", size)
            if rating := RATINGS[(number + j) % len(RATINGS)]:
                wall.set_property("Pset_WallCommon.FireRating", rating)
    model.save(path)


def asked(*arguments: str) -> tuple[str, float]:
    begin = time.perf_counter()
    done = subprocess.run([sys.executable, str(EXAMPLE), *arguments], capture_output=True, text=True)
    if done.returncode != 0:
        raise SystemExit(done.stderr)
    return done.stdout, time.perf_counter() - begin


def main() -> None:
    folder = Path(sys.argv[1])
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 500
    master = sys.argv[3] if len(sys.argv) > 3 else "local[2]"
    folder.mkdir(parents=True, exist_ok=True)
    for i in range(count):
        if not (folder / f"{i:04}.ifc").exists():
            make(folder / f"{i:04}.ifc", i)
    size = sum(path.stat().st_size for path in folder.glob("*.ifc"))
    duck, in_duck = asked(str(folder))
    spark, in_spark = asked(str(folder), master)
    print(duck, end="")
    print(f"{count} files, {size / 1e6:.0f} MB: DuckDB {in_duck:.1f} s, Spark with {master} {in_spark:.1f} s")
    if duck != spark:
        raise SystemExit(f"Spark says something else:\n{spark}")


if __name__ == "__main__":
    main()
