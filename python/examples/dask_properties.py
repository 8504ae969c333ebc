"""Properties of many files on all cores with Dask, which runs the same on a cluster of its own.

Usage: dask_properties.py FOLDER
"""

from __future__ import annotations

import sys
from pathlib import Path
from typing import Any

import dask.dataframe as dd
import pandas as pd

import vnifc

COLUMNS = ["object", "set", "name", "value"]


def properties(path: Path) -> pd.DataFrame:
    frame: pd.DataFrame = vnifc.open(path).properties().to_pandas()[COLUMNS]
    # The categories of two files differ.
    return frame.astype({"object": "int64", "set": "string", "name": "string", "value": "string"}).assign(file=path.name)


def main() -> None:
    from_map: Any = dd.from_map  # has no types
    frame = from_map(properties, sorted(Path(sys.argv[1]).glob("*.ifc")))
    counts = frame.groupby(["set", "name"]).size().compute(scheduler="processes")
    for (group, name), count in counts.sort_index().items():
        print(f"{group}.{name} {count}")


if __name__ == "__main__":
    main()
