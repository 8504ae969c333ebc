"""IFC files (ISO 16739) of every release: read, query, change, check, write; as tables for pandas and others.

>>> import vnifc
>>> model = vnifc.create("IFC4")
>>> wall = model.create("IfcWall", Name="Straße")
>>> [each.Name for each in model.by_type("IfcElement")]
['Straße']
"""

from ._core import (
    Diff,
    DiffDetail,
    Difference,
    Finding,
    Findings,
    Instance,
    Instances,
    Model,
    Rules,
    Table,
    create,
    diff,
    open,
    open_text,
)
from ._types import (
    UNKNOWN,
    AttributeError,
    BadValue,
    Closed,
    Error,
    InstanceNotFound,
    Literal,
    NotFound,
    ReadError,
    SelectorError,
    Typed,
    WriteError,
)

__all__ = [
    "UNKNOWN",
    "AttributeError",
    "BadValue",
    "Closed",
    "Diff",
    "DiffDetail",
    "Difference",
    "Error",
    "Finding",
    "Findings",
    "Instance",
    "InstanceNotFound",
    "Instances",
    "Literal",
    "Model",
    "NotFound",
    "ReadError",
    "Rules",
    "SelectorError",
    "Table",
    "Typed",
    "WriteError",
    "create",
    "diff",
    "open",
    "open_text",
]
