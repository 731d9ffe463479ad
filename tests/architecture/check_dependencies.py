#!/usr/bin/env python3
"""Checks that every package which CMake looks for is declared for Debian and vcpkg too, and that the notices list each
library. Takes the repository's root."""
import json
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])

# The packages that CMake looks for, with the names of their parts in Debian and vcpkg. None: not provided there.
NAMES = {
    "benchmark": ("libbenchmark-dev", "benchmark"),
    "Boost": ("libboost-dev", "boost-asio boost-beast boost-uuid"),
    "chart.min.js": ("libjs-chart.js", None),
    "CLI11": ("libcli11-dev", "cli11"),
    "cpp-httplib": ("libcpp-httplib-dev", "cpp-httplib"),
    "CURL": ("libcurl4-openssl-dev", "curl"),
    "Doxygen": ("doxygen", None),
    "doxygen-awesome.css": ("doxygen-awesome-css", None),
    "GTest": ("libgtest-dev", "gtest"),
    "kainjow/mustache.hpp": ("libkainjow-mustache-dev", None),
    "libutf8proc": ("libutf8proc-dev", "utf8proc"),
    "libxcrypt": ("libcrypt-dev", "libxcrypt"),
    "nlohmann_json": ("nlohmann-json3-dev", "nlohmann-json"),
    "OpenSSL": ("libssl-dev", "openssl"),
    "PkgConfig": ("pkg-config", "pkgconf"),
    "Python3": ("python3", None),
    "spdlog": ("libspdlog-dev", "spdlog"),
    "SQLite3": ("libsqlite3-dev", "sqlite3"),
    "Threads": (None, None),
}
# What the libraries and programs need in addition: to be built, and to be tried.
PROGRAMS = {"g++", "cmake", "ninja-build", "make", "git", "ca-certificates", "openssl", "sqlite3"}
NAMES_OF_LIBRARIES = re.compile("lib(?!clang).*-dev|libjs-.*|nlohmann.*|doxygen-.*")


def names_in_manifest(manifest):
    entries = manifest["dependencies"] + [entry for feature in manifest["features"].values()
                                          for entry in feature["dependencies"]]
    return {entry if isinstance(entry, str) else entry["name"] for entry in entries} - {manifest["name"]}


def names_looked_for(*folders):
    lists = [path for folder in folders for path in (root / folder).rglob("*")
             if path.name in ("CMakeLists.txt", "QelTargets.cmake", "QelDocumentation.cmake")]
    patterns = (r"find_package\((\w+)", r"pkg_check_modules\(.* ([\w-]+)\)", r"find_path\(\w+ ([\w/.-]+)")
    return {name for path in lists for pattern in patterns
            for name in re.findall(pattern, path.read_text(encoding="utf-8"))}


# The lists of the script, without comments: to use the libraries, and to develop them.
used, developed = (set(re.sub(r"#.*", "", text).split()) for text in re.findall(
    r"^\w+=\((.*?)^\)", (root / "cmake/set-up.sh").read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL))
declared = (used | developed, names_in_manifest(json.loads((root / "vcpkg.json").read_text(encoding="utf-8"))))
needed = names_looked_for("host", "Core", "Application", "tools")
looked_for = needed | names_looked_for("cmake", "tests", "benchmarks", "fuzz")

complaints = [f"CMake looks for {name}, which the table here does not know" for name in looked_for - NAMES.keys()]
complaints += [f"nothing looks for {name} any longer" for name in NAMES.keys() - looked_for]
for place, known, theirs in zip(("cmake/set-up.sh", "vcpkg.json"), declared, zip(*NAMES.values())):
    wanted = {name for names in theirs if names for name in names.split()}
    complaints += [f"{place} lacks {name}" for name in sorted(wanted - known)]
    if place != "cmake/set-up.sh":  # which also declares programs
        complaints += [f"{place} has {name}, which nothing looks for" for name in sorted(known - wanted)]
complaints += [f"set-up.sh --use differs: {name}" for name in used - PROGRAMS ^ {NAMES[name][0] for name in needed}]

# The notices: software, packages in Debian and vcpkg, version, purpose, licence, copyright.
notices = (root / "THIRD-PARTY-NOTICES.md").read_text(encoding="utf-8")
rows = [line.split("|") for line in re.findall(r"^\| (?!software).*", notices, re.MULTILINE)]
used_anywhere = set().union(*declared, (root / "cmake/package-windows.sh").read_text(encoding="utf-8").split())
listed = [[set(re.findall(r"`(.*?)`", cell)) for cell in row[2:4]] for row in rows]
for row, packages in zip(rows, listed):
    if not (set().union(*packages) & used_anywhere and row[6].strip()):
        complaints.append(f"THIRD-PARTY-NOTICES.md has no licence for {row[1].strip()}, or nothing uses it")
libraries = ({name for name in declared[0] if NAMES_OF_LIBRARIES.fullmatch(name)}, declared[1] - {"pkgconf"})
for known, wanted in zip(zip(*listed), libraries):
    complaints += [f"THIRD-PARTY-NOTICES.md lacks {name}" for name in wanted.difference(*known)]
print("\n".join(complaints) or f"{len(looked_for)} packages are declared everywhere")
sys.exit(1 if complaints else 0)
