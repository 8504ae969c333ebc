"""Models as a data source of Spark 4.

    import vnifc.spark

    vnifc.spark.register(spark)
    frame = spark.read.format("vnifc").option("table", "properties").load("models/*.ifc")

Options:

``table``
    ``properties`` (the default), ``quantities``, ``relations``, ``findings``, or an entity: ``IfcWall``.
``entity``, ``sets``
    Of properties and quantities: those of objects of an entity, in sets of these names (separated by commas), alone.
``columns``
    Of an entity's table: attributes and facets, separated by commas. They are needed, since releases differ in theirs.
    Of other tables: those that are wanted, all of them otherwise. Spark does not tell a source in Python which columns
    a query uses.
``onError``
    ``fail`` (the default): a file that cannot be read ends the job. ``skip``: it has no rows; the table ``findings``
    has a row of the code ``unreadable`` for it in any case.
``partitionBytes``
    So many bytes of files make a partition (64 MB); larger files have one of their own.

Every row begins with ``file`` and ``release``. With Spark 4.1 and later, `register` lets the source see the filters of
a query: ``file = ...`` and ``file IN (...)`` choose the files to read, the same on ``set`` and ``entity = ...`` what is
made of properties, quantities and relations. Of Spark itself nothing is imported but when Spark asks.
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
        named = _names(self.options.get("columns", ""))
        if table not in _FIXED:
            columns = ", ".join(["id bigint", "entity string", *(f"`{each}` string" for each in named)])
        elif named:
            known = dict(each.split(" ") for each in _FIXED[table].split(", "))
            for each in named:
                if each not in known:
                    raise vnifc.NotFound(f"the table {table} has no column {each}: expected {', '.join(known)}")
            columns = ", ".join(f"{each} {known[each]}" for each in named)
        else:
            columns = _FIXED[table]
        return "file string, release string, " + columns

    def reader(self, schema: Any) -> _Reader:
        return _Reader(dict(self.options), [field.name for field in schema.fields], schema)


class _FilteringDataSource(VnifcDataSource):
    """As a class of its own, since Spark refuses readers that take filters where that is off."""

    def reader(self, schema: Any) -> _Reader:
        return _FilteringReader(dict(self.options), [field.name for field in schema.fields], schema)


def register(spark: Any) -> None:
    """Makes ``vnifc`` a format of the session and, with Spark 4.1 and later, lets it see the filters of queries."""
    takes_filters = hasattr(DataSourceReader, "pushFilters")
    if takes_filters:
        spark.conf.set("spark.sql.python.filterPushdown.enabled", "true")
    spark.dataSource.register(_FilteringDataSource if takes_filters else VnifcDataSource)


def _names(text: str) -> list[str]:
    return [each.strip() for each in text.split(",") if each.strip()]


class _Reader(DataSourceReader):
    def __init__(self, options: dict[str, str], names: list[str], schema: Any) -> None:
        self.options = {key.lower(): value for key, value in options.items()}
        self.names = names
        self.schema = schema
        # What the filters of a query leave; None: everything.
        self.files: set[str] | None = None
        self.sets: set[str] | None = None
        self.entity: str | None = None

    def partitions(self) -> Sequence[InputPartition]:
        paths = sorted(self._files(), key=lambda path: (-os.path.getsize(path), path))
        if not paths:
            raise vnifc.ReadError(f"there is no file {self.options.get('path', '')}")
        if self.files is not None:
            paths = [path for path in paths if os.path.basename(path) in self.files]
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

        if not isinstance(partition, _Files):
            return  # there are none
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
        try:
            return model.release, self._rows(model, kind)
        except vnifc.NotFound:
            if self.entity is None:
                raise
            return None, None  # the query asks for an entity that this release does not have

    def _rows(self, model: vnifc.Model, kind: str) -> Any:
        entity = self.options.get("entity") or self.entity
        sets = _names(self.options.get("sets", ""))
        if self.sets is not None:
            sets = [each for each in sets if each in self.sets] if sets else sorted(self.sets)
            if not sets:
                return None
        if kind == "findings":
            return model.findings
        if kind == "properties":
            return model.properties(entity, sets)
        if kind == "quantities":
            return model.quantities(entity, sets)
        if kind == "relations":
            return model.relations(entity)
        return model.table(kind, columns=[each for each in self.names[4:]] or ["id"])


class _FilteringReader(_Reader):
    def pushFilters(self, filters: list[Any]) -> list[Any]:  # noqa: N802
        table = self.options.get("table", "properties")
        for each in filters:
            kind, column = type(each).__name__, getattr(each, "attribute", ())
            if kind not in ("EqualTo", "In"):
                continue
            values = {each.value} if kind == "EqualTo" else set(each.value)
            if column == ("file",):
                self.files = values if self.files is None else self.files & values
            elif column == ("set",) and table in ("properties", "quantities"):
                self.sets = values if self.sets is None else self.sets & values
            elif column == ("entity",) and len(values) == 1 and table in ("properties", "quantities", "relations"):
                # One that the options name goes first.
                if not self.options.get("entity"):
                    (self.entity,) = values
        # Spark applies all of them once more: an entity comes with its subtypes.
        return filters


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
