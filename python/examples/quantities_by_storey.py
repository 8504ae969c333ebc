"""Sums the quantities of a model's elements by storey, entity and quantity, in SI units.

Usage: quantities_by_storey.py FILE
"""

from __future__ import annotations

import sys

import pandas

import vnifc


def quantities_by_storey(path: str) -> pandas.DataFrame:
    model = vnifc.open(path)
    quantities = model.quantities("IfcElement").to_pandas()
    places = model.table("IfcElement", columns=["storey"]).to_pandas()
    placed = quantities.merge(places[["id", "storey"]], left_on="object", right_on="id")
    # Categories that do not occur together would make rows of their own.
    groups = placed.groupby(["storey", "entity", "name"], observed=True, dropna=False)
    return groups["si_value"].agg(["sum", "count"]).reset_index()


if __name__ == "__main__":
    print(quantities_by_storey(sys.argv[1]).to_string(index=False))
