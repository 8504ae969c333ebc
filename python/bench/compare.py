"""Measures this package beside others on one file: opening, ``wall.Name``, all property values, memory.

Usage: compare.py FILE [PYTHON]

PYTHON is an interpreter that has the other packages (IfcOpenShell, ifcfast; those that are missing are left out), this
program's own otherwise. Every package is measured in processes of its own, in turns; the fastest of three counts. Each
does what its documentation shows. Times are in seconds but for names, in nanoseconds; memory is the process's peak in MB.
"""

from __future__ import annotations

import json
import subprocess
import sys

TURNS = 3

COMMON = """
import json, resource, sys, time

def timed(work):
    begin = time.perf_counter()
    result = work()
    return result, time.perf_counter() - begin

def peak():
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1e3

path, figures = sys.argv[1], {}
"""

NAMES = """
def names():
    for _ in range(5):
        for each in products:
            each.Name

figures["products"] = len(products)
_, taken = timed(names)
figures["name"] = taken / len(products) / 5 * 1e9
"""

PROGRAMS = {
    "vnifc": COMMON
    + """
import vnifc

model, figures["open"] = timed(lambda: vnifc.open(path))
figures["opened"] = peak()
products = list(model.by_type("IfcProduct"))
"""
    + NAMES
    + """
def values():
    count = 0
    for each in model.by_type("IfcObject"):
        for pset in each.psets.values():
            for name, value in pset.items():
                count += 1
    return count

figures["values"], figures["iterate"] = timed(values)
figures["peak"] = peak()
print(json.dumps(figures))
""",
    "vnifc, as a table": COMMON
    + """
import vnifc

model, figures["open"] = timed(lambda: vnifc.open(path))
figures["opened"] = peak()
table, figures["iterate"] = timed(lambda: model.properties("IfcObject"))
figures["values"], figures["peak"] = len(table), peak()
print(json.dumps(figures))
""",
    "IfcOpenShell": COMMON
    + """
import ifcopenshell, ifcopenshell.util.element

model, figures["open"] = timed(lambda: ifcopenshell.open(path))
figures["opened"] = peak()
products = list(model.by_type("IfcProduct"))
"""
    + NAMES
    + """
def values():
    count = 0
    for each in model.by_type("IfcObject"):
        for pset in ifcopenshell.util.element.get_psets(each).values():
            for name, value in pset.items():
                count += name != "id"
    return count

figures["values"], figures["iterate"] = timed(values)
figures["peak"] = peak()
print(json.dumps(figures))
""",
    "ifcfast, as a table": COMMON
    + """
import ifcfast

model, figures["open"] = timed(lambda: ifcfast.open(path, use_cache=False, write_cache=False))
figures["opened"] = peak()
table, figures["iterate"] = timed(lambda: (model.psets, model.quantities))
figures["values"], figures["peak"] = len(table[0]) + len(table[1]), peak()
print(json.dumps(figures))
""",
}


def measure(file: str, others: str) -> dict[str, dict[str, float]]:
    best: dict[str, dict[str, float]] = {}
    for _ in range(TURNS):
        for name, program in PROGRAMS.items():
            python = sys.executable if name.startswith("vnifc") else others
            done = subprocess.run([python, "-c", program, file], capture_output=True, text=True)
            if done.returncode != 0:
                last = done.stderr.strip().splitlines()[-1:] or ["status " + str(done.returncode)]
                print(f"{name}: {last[0]}", file=sys.stderr)
                continue
            figures = json.loads(done.stdout)
            known = best.setdefault(name, figures)
            best[name] = {key: min(value, known[key]) for key, value in figures.items()}
    return best


def main() -> None:
    file = sys.argv[1]
    columns = ("open", "name", "iterate", "values", "opened", "peak")
    print(f"{'':22}" + "".join(f"{each:>12}" for each in columns))
    for name, figures in measure(file, sys.argv[2] if len(sys.argv) > 2 else sys.executable).items():
        print(f"{name:22}" + "".join(f"{figures[each]:>12.2f}" if each in figures else f"{'-':>12}" for each in columns))


if __name__ == "__main__":
    main()
