#!/usr/bin/env python3
"""Checks what may include what.

Includes between folders, and between those of the library, run one way. Third-party headers stay in the .cpp files and
the private headers under host/; the tools use libraries of their own. Only host/ and tools/ ask which platform they are on.
Takes the repository's root.
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]', re.MULTILINE)
STANDARD_HEADER = re.compile(r"^(?:[a-z_]+|stdint\.h)$")  # the latter for headers that C can include
GENERATED = {"QelAnalyticsExport.h"}
# A folder may include itself and the folders before it. QelBroadcaster, QelIssueUi and QelNotification use Core, which
# uses the rest of the host framework. QelC is an interface of the library for other languages.
LIBRARY = "Application/Log/Analytics/"
FLOORS = ["Items/", "Database/", "ServerConnection/", "SystemEnvironment/", "Reports/", "Listeners/", "Client/"]
LAYERS = ["host/", "Core/", "host/QelBroadcaster/", "host/QelIssueUi/", "host/QelNotification/",
          *(LIBRARY + floor for floor in FLOORS), "host/QelC/", "tools/"]
# Public headers, which are installed, include none of these.
PRIVATE = set(re.findall(r"^ +(\S+\.h)", (root / "cmake/QelPublicHeaders.cmake").read_text(), re.MULTILINE))
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
C_INTERFACE = "host/QelC/qel_analytics.h"  # one file, because hosts in other languages translate it


def layer_of(path):
    return LAYERS.index(max((layer for layer in LAYERS if path.startswith(layer)), key=len))


def complaints_about(path):
    """Every line of the file that breaks a rule."""
    text = (root / path).read_text(encoding="utf-8")
    takes_third_parties = path.startswith("tools/") or (
        path.startswith("host/") and (path.endswith(".cpp") or path in PRIVATE))
    for bracket, name in INCLUDE.findall(text):
        if bracket == "<":
            if not takes_third_parties and not STANDARD_HEADER.match(name):
                yield f"{path}: <{name}> is no header of the standard library"
        elif name not in GENERATED and not (root / name).is_file():
            yield f"{path}: {name} is no path from the repository's root"
        elif name not in GENERATED and layer_of(name) > layer_of(path) and (path, name) not in EXCEPTIONS:
            yield f"{path}: {LAYERS[layer_of(path)]} must not include {name}"
        elif name in PRIVATE and path.endswith(".h") and not path.startswith("tools/") and path not in PRIVATE:
            yield f"{path}: a public header must not include {name}"
    if not path.startswith(("host/", "tools/")) and "_WIN32" in text:
        yield f"{path}: asks for the platform, which only host/ and tools/ do"
    if (lines := text.count("\n")) > (most := MOST_LINES[pathlib.Path(path).suffix]) and path != C_INTERFACE:
        yield f"{path}: has {lines} lines, more than {most}"


files = sorted(str(path.relative_to(root)) for top in {layer.split("/")[0] for layer in LAYERS}
               for path in (root / top).rglob("*") if path.suffix in {".h", ".cpp"})
complaints = [complaint for path in files for complaint in complaints_about(path)]
print("\n".join(complaints) or f"{len(files)} files include what they may")
sys.exit(1 if complaints or not files else 0)
