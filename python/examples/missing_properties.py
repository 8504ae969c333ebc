"""Reports what elements of a folder's models lack a property, by file and entity. Files that cannot be read are told.

Usage: missing_properties.py FOLDER ENTITY SET PROPERTY
"""

from __future__ import annotations

import sys
from pathlib import Path

import duckdb

import vnifc

QUERY = """
    select entity, count(*) as missing
    from elements
    where id not in (select object from properties where name = $name and value is not null and value <> '')
    group by entity order by entity
"""


def missing_properties(folder: Path, entity: str, set_name: str, name: str) -> list[tuple[str, str, int]]:
    report: list[tuple[str, str, int]] = []
    for path in sorted(folder.glob("*.ifc")):
        try:
            model = vnifc.open(path)
            elements = model.table(entity, columns=["GlobalId"])
            properties = model.properties(entity, sets=[set_name])
        except vnifc.Error as error:
            report.append((path.name, str(error), 0))
            continue
        with duckdb.connect() as database:
            database.register("elements", elements)
            database.register("properties", properties)
            report += [(path.name, *row) for row in database.execute(QUERY, {"name": name}).fetchall()]
    return report


if __name__ == "__main__":
    for file, what, count in missing_properties(Path(sys.argv[1]), *sys.argv[2:5]):
        print(f"{file}: {what} {count}")
