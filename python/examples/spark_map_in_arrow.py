"""Properties of many files through mapInArrow: for a Spark without data sources in Python.

Usage: spark_map_in_arrow.py FOLDER
"""

from __future__ import annotations

import os
import sys
from collections.abc import Iterable, Iterator
from pathlib import Path

import pyarrow as pa
from pyspark.sql import SparkSession

import vnifc

# The columns to take over; Spark has no dictionaries, which become texts.
SCHEMA = pa.schema([("file", pa.string()), ("object", pa.int64()), ("set", pa.string()), ("name", pa.string()), ("value", pa.string())])


def properties(batches: Iterable[pa.RecordBatch]) -> Iterator[pa.RecordBatch]:
    for batch in batches:
        for path in batch.column("path").to_pylist():
            table = pa.table(vnifc.open(path).properties())
            table = table.append_column("file", pa.repeat(pa.scalar(Path(path).name), len(table)))
            yield from table.select(SCHEMA.names).cast(SCHEMA).to_batches()


def main() -> None:
    os.environ.setdefault("PYSPARK_PYTHON", sys.executable)
    spark = SparkSession.builder.master("local[2]").config("spark.ui.enabled", "false").getOrCreate()
    paths = [(str(path.resolve()),) for path in sorted(Path(sys.argv[1]).glob("*.ifc"))]
    files = spark.createDataFrame(paths, "path string").repartition(max(1, len(paths) // 8))
    frame = files.mapInArrow(properties, "file string, object bigint, set string, name string, value string")
    for row in frame.groupBy("set", "name").count().orderBy("set", "name").collect():
        print(f"{row[0]}.{row[1]} {row[2]}")
    spark.stop()


if __name__ == "__main__":
    main()
