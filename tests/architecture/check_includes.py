#!/usr/bin/env python3
"""Checks what may include what.

Includes between folders, and between those of the library, run one way, third-party headers stay in the .cpp files under host/ (the tools use libraries of
their own), and only host/ and tools/ ask which platform they are on.
Takes the repository's root; lists every line that breaks a rule and fails if there is one.
"""
import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]')
STANDARD_HEADER = re.compile(r"^[a-z_]+$")
GENERATED = {"QelAnalyticsExport.h"}
# A folder may include itself and what stands before it. QelBroadcaster and QelIssueUi stand on Core, the rest of the
# host framework below it.
LIBRARY = "Application/Log/Analytics/"
FLOORS = ["Items/", "Database/", "ServerConnection/", "SystemEnvironment/", "Reports/", "Listeners/", "Client/"]
LAYERS = ["host/", "Core/", "host/QelBroadcaster/", "host/QelIssueUi/", *(LIBRARY + floor for floor in FLOORS), "tools/"]
# What may include a higher floor of the library, and why.
PARAMETER = LIBRARY + "Client/ActivateParameter.h"  # the host's record, which each reads its own members of
EXCEPTIONS = {
    (LIBRARY + "Database/CipDatabases.cpp", PARAMETER),
    (LIBRARY + "ServerConnection/DbToServerConnection.cpp", PARAMETER),
    # A package names the table that its rows are from, an enumeration inside the interface.
    (LIBRARY + "Items/ItemWrapper.h", LIBRARY + "Database/CipDatabaseClientInterface.h"),
}
# The limits of a file's size are checked here as well.
MOST_LINES = {".h": 90, ".cpp": 300}


def layer_of(path):
    return LAYERS.index(max((layer for layer in LAYERS if path.startswith(layer)), key=len))


def includes_of(root, path):
    for number, line in enumerate((root / path).read_text(encoding="utf-8").splitlines(), 1):
        if match := INCLUDE.match(line):
            yield number, match[1] == '"', match[2]


def check_file(root, path, complaints):
    for number, quoted, name in includes_of(root, path):
        place = f"{path}:{number}"
        if quoted and name not in GENERATED:
            if not (root / name).is_file():
                complaints.append(f"{place}: {name} is no path from the repository's root")
                continue
            if layer_of(name) > layer_of(path) and (path, name) not in EXCEPTIONS:
                complaints.append(f"{place}: {LAYERS[layer_of(path)]} must not include {name}")
        third_party = not quoted and not STANDARD_HEADER.match(name)
        allowed = path.startswith("tools/") or (path.startswith("host/") and path.endswith(".cpp"))
        if third_party and not allowed:
            complaints.append(f"{place}: <{name}> is no header of the standard library")
    if not path.startswith(("host/", "tools/")) and "_WIN32" in (root / path).read_text(encoding="utf-8"):
        complaints.append(f"{path}: asks for the platform, which only host/ and tools/ do")


def check_size(root, path, complaints):
    lines = (root / path).read_text(encoding="utf-8").count("\n")
    most = MOST_LINES[pathlib.Path(path).suffix]
    if lines > most:
        complaints.append(f"{path}: has {lines} lines, more than {most}")


def main():
    root = pathlib.Path(sys.argv[1])
    files = sorted(str(path.relative_to(root)) for top in {layer.split("/")[0] for layer in LAYERS}
                   for path in (root / top).rglob("*") if path.suffix in {".h", ".cpp"})
    complaints = []
    for path in files:
        check_file(root, path, complaints)
        check_size(root, path, complaints)
    print("\n".join(complaints) or f"{len(files)} files include what they may")
    return 1 if complaints or not files else 0


sys.exit(main())
