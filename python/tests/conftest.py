from __future__ import annotations

from collections.abc import Iterator
from pathlib import Path

import pytest

import vnifc

RELEASES = ("IFC2X3", "IFC4", "IFC4X3", "IFC4X3_ADD2")
TEMPLATE = Path(__file__).parents[2] / "examples" / "layer" / "house.ifc.in"


def house_text(release: str) -> str:
    """The small house that the examples in C++ use too."""
    early = release == "IFC2X3"
    # Files that say IFC4X3 are of its last text; the early one serves these.
    schema = "IFC4X2" if release == "IFC4X3" else release
    text = TEMPLATE.read_text(encoding="utf-8").replace("@RELEASE@", schema)
    return text.replace("@WALL@", "" if early else ",$").replace("@DOOR@", "" if early else ",$,$,$")


@pytest.fixture(params=RELEASES)
def house(request: pytest.FixtureRequest) -> Iterator[vnifc.Model]:
    yield vnifc.open_text(house_text(request.param))


@pytest.fixture
def model() -> vnifc.Model:
    return vnifc.create("IFC4")
