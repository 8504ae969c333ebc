"""Sets properties of many objects as a CSV file says it, a line each: SELECTOR;SET.PROPERTY;VALUE.

Usage: bulk_edit.py IN OUT CSV
"""

from __future__ import annotations

import csv
import sys

import vnifc


def value_of(text: str) -> vnifc.Typed | str | bool | float | None:
    """What a person means: true, false, nothing, a number with a decimal point, or text."""
    plain: dict[str, bool | None] = {"true": True, "false": False, "": None}
    if text in plain:
        return plain[text]
    try:
        return float(text) if "." in text else text
    except ValueError:
        return text


def bulk_edit(source: str, target: str, table: str) -> int:
    model = vnifc.open(source)
    changed = 0
    with open(table, encoding="utf-8", newline="") as lines:
        for selector, path, text in csv.reader(lines, delimiter=";"):
            changed += model.set_property(model.find(selector), path, value_of(text))
    model.save(target)
    return changed


if __name__ == "__main__":
    print(bulk_edit(*sys.argv[1:4]), "objects changed")
