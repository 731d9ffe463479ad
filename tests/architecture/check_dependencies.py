#!/usr/bin/env python3
"""Checks that every package which CMake looks for is declared for Debian and vcpkg too. Takes the repository's root."""
import json
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])

# The packages that CMake looks for, with the names of their parts in Debian and vcpkg. None: not provided there.
NAMES = {
    "benchmark": ("libbenchmark-dev", "benchmark"),
    "Boost": ("libboost-dev", "boost-asio boost-beast boost-uuid"),
    "CLI11": ("libcli11-dev", "cli11"),
    "cpp-httplib": ("libcpp-httplib-dev", "cpp-httplib"),
    "CURL": ("libcurl4-openssl-dev", "curl"),
    "Doxygen": ("doxygen", None),
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


def names_in_manifest(manifest):
    entries = manifest["dependencies"] + [entry for feature in manifest["features"].values()
                                          for entry in feature["dependencies"]]
    return {entry if isinstance(entry, str) else entry["name"] for entry in entries} - {manifest["name"]}


declared = (
    set(re.sub(r"#.*", "", (root / "cmake/set-up.sh").read_text(encoding="utf-8").split("\n)\n")[0]).split()),
    names_in_manifest(json.loads((root / "vcpkg.json").read_text(encoding="utf-8"))),
)
lists = [path for folder in ("cmake", "host", "Core", "Application", "tools", "tests", "benchmarks", "fuzz")
         for path in (root / folder).rglob("*") if path.name == "CMakeLists.txt" or path.suffix == ".cmake"]
looked_for = {name for path in lists
              for pattern in (r"find_package\((\w+)", r"pkg_check_modules\(.* ([\w-]+)\)", r"find_path\(\w+ ([\w/.-]+)")
              for name in re.findall(pattern, path.read_text(encoding="utf-8"))}

complaints = [f"CMake looks for {name}, which the table here does not know" for name in looked_for - NAMES.keys()]
complaints += [f"nothing looks for {name} any longer" for name in NAMES.keys() - looked_for]
for place, known, theirs in zip(("cmake/set-up.sh", "vcpkg.json"), declared, zip(*NAMES.values())):
    wanted = {name for names in theirs if names for name in names.split()}
    complaints += [f"{place} lacks {name}" for name in sorted(wanted - known)]
    if place != "cmake/set-up.sh":  # which also declares programs
        complaints += [f"{place} has {name}, which nothing looks for" for name in sorted(known - wanted)]
print("\n".join(complaints) or f"{len(looked_for)} packages are declared everywhere")
sys.exit(1 if complaints else 0)
