#!/usr/bin/env python3
"""Checks that tests/not-on-windows.txt names only programs, sources and tests that exist, each with a reason. Takes the
repository's root."""
import pathlib
import re
import sys

tests = pathlib.Path(sys.argv[1], "tests")
sources = {path.name: path.read_text(encoding="utf-8") for path in tests.rglob("*.cpp")}
lists = "".join(path.read_text(encoding="utf-8") for path in tests.rglob("CMakeLists.txt"))


def exists(name):
    if name.endswith(".cpp"):
        return name in sources
    if "." in name:
        test = re.compile(r"TEST(?:_F)?\(%s,\s+%s\)" % tuple(name.split(".")))
        return any(test.search(text) for text in sources.values())
    return re.search(rf"qel_add_(?:program_)?test\(\s*{name}\s", lists)


lines = [line for line in (tests / "not-on-windows.txt").read_text(encoding="utf-8").splitlines()
         if not line.startswith("#")]
complaints = [f"tests/not-on-windows.txt: no such thing, or no sentence as reason: {line}" for line in lines
              if not re.fullmatch(r"\S+ +[A-Z].* .*\.", line) or not exists(line.split()[0])]
print("\n".join(complaints) or f"{len(lines)} exceptions on Windows have a reason")
sys.exit(1 if complaints else 0)
