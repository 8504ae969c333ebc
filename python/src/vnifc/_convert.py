"""From tables to the formats of other packages, each imported when it is asked for."""

from __future__ import annotations

import os
from importlib import import_module
from typing import Any

from ._types import Error


def _imported(module: str, extra: str) -> Any:
    try:
        return import_module(module)
    except ImportError as error:
        raise Error(f"this needs {module}, which is not installed: pip install 'vnifc[{extra}]'") from error


def to_arrow(table: Any) -> Any:
    return _imported("pyarrow", "pandas").table(table)


def to_pandas(table: Any) -> Any:
    _imported("pandas", "pandas")
    return to_arrow(table).to_pandas()


def to_polars(table: Any) -> Any:
    return _imported("polars", "polars").DataFrame(table)


def to_parquet(table: Any, path: str | os.PathLike[str]) -> None:
    _imported("pyarrow.parquet", "pandas").write_table(to_arrow(table), path)
