"""Models as a data source of Spark 4.

    from vnifc.spark import VnifcDataSource

    spark.dataSource.register(VnifcDataSource)
    frame = spark.read.format("vnifc").option("table", "properties").load("models/*.ifc")

Options:

``table``
    ``properties`` (the default), ``quantities``, ``relations``, ``findings``, or an entity: ``IfcWall``.
``entity``, ``sets``
    Of properties and quantities: those of objects of an entity, in sets of these names (separated by commas), alone.
``columns``
    Of an entity's table: attributes and facets, separated by commas. They are needed, since releases differ in theirs.
``onError``
    ``fail`` (the default): a file that cannot be read ends the job. ``skip``: it has no rows; the table ``findings``
    has a row of the code ``unreadable`` for it in any case.
``partitionBytes``
    So many bytes of files make a partition (64 MB); larger files have one of their own.

Every row begins with ``file`` and ``release``. Of Spark itself nothing is imported but when Spark asks.
"""

from __future__ import annotations

import glob
import os
from collections.abc import Iterator, Sequence
from dataclasses import dataclass
from typing import Any

from pyspark.sql.datasource import DataSource, DataSourceReader, InputPartition

import vnifc

_FIXED = {
    "properties": "object bigint, entity string, global_id string, set string, name string, value string, number double, "
    "type string, unit string, si_value double, from_type boolean",
    "relations": "relation bigint, entity string, relating bigint, relating_entity string, related bigint, "
    "related_entity string",
    "findings": "severity string, line bigint, column bigint, instance bigint, code string, keyword string, "
    "attribute string, found string, expected string",
}
_FIXED["quantities"] = _FIXED["properties"]


@dataclass
class _Files(InputPartition):
    paths: Sequence[str]


class VnifcDataSource(DataSource):
    """The data source ``vnifc``."""

    @classmethod
    def name(cls) -> str:
        return "vnifc"

    def schema(self) -> str:
        table = self.options.get("table", "properties")
        columns = _FIXED.get(table)
        if columns is None:
            named = [each.strip() for each in self.options.get("columns", "").split(",") if each.strip()]
            columns = ", ".join(["id bigint", "entity string", *(f"`{each}` string" for each in named)])
        return "file string, release string, " + columns

    def reader(self, schema: Any) -> _Reader:
        return _Reader(dict(self.options), [field.name for field in schema.fields], schema)


class _Reader(DataSourceReader):
    def __init__(self, options: dict[str, str], names: list[str], schema: Any) -> None:
        self.options = {key.lower(): value for key, value in options.items()}
        self.names = names
        self.schema = schema

    def partitions(self) -> Sequence[InputPartition]:
        paths = sorted(self._files(), key=lambda path: (-os.path.getsize(path), path))
        if not paths:
            raise vnifc.ReadError(f"there is no file {self.options.get('path', '')}")
        wanted = int(self.options.get("partitionbytes", 64 << 20))
        packed: list[list[str]] = []
        room = 0
        for path in paths:
            size = os.path.getsize(path)
            if not packed or size > room:
                packed.append([])
                room = wanted
            packed[-1].append(path)
            room -= size
        return [_Files(each) for each in packed]

    def _files(self) -> list[str]:
        path = self.options.get("path", "")
        return glob.glob(os.path.join(path, "*.ifc")) if os.path.isdir(path) else glob.glob(path, recursive=True)

    def read(self, partition: InputPartition) -> Iterator[Any]:
        import pyarrow

        from pyspark.sql.pandas.types import to_arrow_schema

        assert isinstance(partition, _Files)
        target = to_arrow_schema(self.schema)
        for path in partition.paths:
            release, table = self._table(path)
            if table is None:
                continue
            arrow = pyarrow.table(table)
            columns = []
            for field in target:
                if field.name in ("file", "release"):
                    value = os.path.basename(path) if field.name == "file" else release
                    columns.append(pyarrow.repeat(pyarrow.scalar(value, pyarrow.string()), len(arrow)).cast(field.type))
                else:
                    columns.append(_plain(arrow[field.name]).cast(field.type))
            yield from pyarrow.Table.from_arrays(columns, schema=target).to_batches(max_chunksize=1 << 16)

    def _table(self, path: str) -> tuple[str | None, Any]:
        kind = self.options.get("table", "properties")
        try:
            model = vnifc.open(path)
        except vnifc.ReadError as error:
            if kind == "findings":
                return None, _unreadable(str(error))
            if self.options.get("onerror", "fail") == "fail":
                raise
            return None, None
        entity = self.options.get("entity")
        sets = [each.strip() for each in self.options.get("sets", "").split(",") if each.strip()]
        if kind == "findings":
            return model.release, model.findings
        if kind == "properties":
            return model.release, model.properties(entity, sets)
        if kind == "quantities":
            return model.release, model.quantities(entity, sets)
        if kind == "relations":
            return model.release, model.relations(entity)
        return model.release, model.table(kind, columns=[each for each in self.names[4:]] or ["id"])


def _plain(column: Any) -> Any:
    """Without dictionaries, which Spark does not take."""
    import pyarrow

    if pyarrow.types.is_dictionary(column.type):
        return column.cast(column.type.value_type)
    return column


def _unreadable(message: str) -> Any:
    import pyarrow

    numbers = pyarrow.array([None], pyarrow.uint64())
    texts = {"severity": "error", "code": "unreadable", "found": message, "expected": "a model"}
    names = ("severity", "line", "column", "instance", "code", "keyword", "attribute", "found", "expected")
    return pyarrow.table(
        {
            each: numbers
            if each in ("line", "column", "instance")
            else pyarrow.array([texts.get(each)], pyarrow.string())
            for each in names
        }
    )
