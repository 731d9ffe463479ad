#!/usr/bin/env python3
"""Checks that tests/not-on-windows.txt names only programs, sources and tests that exist, each with a reason. Takes the
repository's root."""
import pathlib
import re
import sys

tests = pathlib.Path(sys.argv[1], "tests")
sources = [*tests.rglob("*.cpp"), *tests.rglob("CMakeLists.txt")]
text = "".join(path.read_text(encoding="utf-8") for path in sources)
known = {path.name for path in sources} | set(re.findall(r"qel_add_(?:program_)?test\(\s*(\w+)", text))
known |= {".".join(names) for names in re.findall(r"^TEST(?:_F)?\((\w+),\s+(\w+)\)", text, re.MULTILINE)}
lines = [line for line in (tests / "not-on-windows.txt").read_text(encoding="utf-8").splitlines()
         if not line.startswith("#")]
complaints = [f"tests/not-on-windows.txt: no such thing, or no sentence as reason: {line}" for line in lines
              if not re.fullmatch(r"\S+ +[A-Z].* .*\.", line) or line.split()[0] not in known]
print("\n".join(complaints) or f"{len(lines)} exceptions on Windows have a reason")
sys.exit(1 if complaints else 0)
