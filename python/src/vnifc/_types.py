"""What the extension module gives and takes beside Python's own types: exceptions, literals, typed values."""

from __future__ import annotations

import builtins
from typing import Any, Final, final


class Error(Exception):
    """What this package raises. The message says what was found and what was expected."""


class ReadError(Error):
    """A file that cannot be read, or a release that is not known."""


class WriteError(Error):
    """A file that cannot be written. The file is as it was."""


class NotFound(Error, builtins.LookupError):
    """An entity, instance or unit that does not exist, and an instance that has been erased."""


class InstanceNotFound(NotFound, builtins.KeyError):
    """There is no instance of that number or GlobalId."""

    def __str__(self) -> str:
        # KeyError would show the message in quotes.
        return Exception.__str__(self)


class AttributeError(Error, builtins.AttributeError):
    """An attribute that the entity does not have."""


class BadValue(Error, builtins.ValueError):
    """A value that does not fit where it is to go."""


class SelectorError(BadValue):
    """A faulty selector. The column counts bytes from 1."""

    column: int = 0


class Closed(Error):
    """The model has been closed."""


class Literal(str):
    """A literal of an enumeration, without dots.

    >>> Literal("SOLIDWALL") == "SOLIDWALL"
    True
    >>> Literal(".SOLIDWALL.")
    Literal('SOLIDWALL')
    """

    __slots__ = ()

    def __new__(cls, text: str) -> Literal:
        dotted = len(text) > 2 and text.startswith(".") and text.endswith(".")
        return super().__new__(cls, text[1:-1] if dotted else text)

    def __repr__(self) -> str:
        return f"Literal({str(self)!r})"


@final
class Unknown:
    """The type of UNKNOWN, the third value of LOGICAL. It is neither true nor false.

    >>> UNKNOWN is Unknown()
    True
    """

    __slots__ = ()
    _only: Unknown | None = None

    def __new__(cls) -> Unknown:
        if cls._only is None:
            cls._only = super().__new__(cls)
        return cls._only

    def __repr__(self) -> str:
        return "UNKNOWN"

    def __bool__(self) -> bool:
        raise TypeError("UNKNOWN is neither true nor false; compare with `is vnifc.UNKNOWN`")

    def __reduce__(self) -> str:
        return "UNKNOWN"


UNKNOWN: Final = Unknown()


class Typed:
    """A value with the type that a select gives it: IFCLENGTHMEASURE(2.5).

    >>> Typed("IfcLengthMeasure", 2.5)
    Typed('IfcLengthMeasure', 2.5)
    >>> Typed("IfcLabel", "a") == Typed("IFCLABEL", "a")
    True
    """

    __slots__ = ("type", "value")

    def __init__(self, type: str, value: Any) -> None:
        self.type: Final = type
        self.value: Final = value

    def __repr__(self) -> str:
        return f"Typed({self.type!r}, {self.value!r})"

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Typed):
            return NotImplemented
        return self.type.upper() == other.type.upper() and bool(self.value == other.value)

    def __hash__(self) -> int:
        return hash(self.type.upper())
