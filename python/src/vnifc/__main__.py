"""The command-line tool: ``python -m vnifc info house.ifc``."""

from __future__ import annotations

import os
import sys
from pathlib import Path


def main() -> None:
    """Becomes the tool that the package brings along, with the arguments of this program."""
    tool = str(Path(__file__).parent / "bin" / "vnifc")
    sys.stdout.flush()
    os.execv(tool, ["vnifc", *sys.argv[1:]])


if __name__ == "__main__":
    main()
