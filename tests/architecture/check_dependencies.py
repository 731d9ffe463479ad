#!/usr/bin/env python3
"""Checks that each library that CMake looks for is declared for Debian, vcpkg and Conan too. Takes the repository's
root."""
import json
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])

# What CMake looks for, and its names in Debian, vcpkg and Conan. None: not declared there.
NAMES = {
    "benchmark": ("libbenchmark-dev", "benchmark", None),
    "Boost": ("libboost-dev", "boost-uuid", "boost"),
    "CLI11": ("libcli11-dev", "cli11", "cli11"),
    "cpp-httplib": ("libcpp-httplib-dev", "cpp-httplib", "cpp-httplib"),
    "CURL": ("libcurl4-openssl-dev", "curl", "libcurl"),
    "Doxygen": ("doxygen", None, None),
    "GTest": ("libgtest-dev", "gtest", None),
    "libutf8proc": ("libutf8proc-dev", "utf8proc", "utf8proc"),
    "nlohmann_json": ("nlohmann-json3-dev", "nlohmann-json", "nlohmann_json"),
    "OpenSSL": ("libssl-dev", "openssl", "openssl"),
    "PkgConfig": ("pkg-config", None, None),
    "Python3": ("python3", None, None),
    "spdlog": ("libspdlog-dev", "spdlog", "spdlog"),
    "SQLite3": ("libsqlite3-dev", "sqlite3", "sqlite3"),
    "Threads": (None, None, None),
}

recipe = (root / "conanfile.py").read_text(encoding="utf-8")
compile(recipe, "conanfile.py", "exec")
manifest = json.loads((root / "vcpkg.json").read_text(encoding="utf-8"))
entries = sum((feature["dependencies"] for feature in manifest["features"].values()), manifest["dependencies"])
declared = {
    "cmake/set-up.sh": set(re.sub("#.*", "", (root / "cmake/set-up.sh").read_text().split("\n)\n")[0]).split()),
    "vcpkg.json": {entry if isinstance(entry, str) else entry["name"] for entry in entries} - {manifest["name"]},
    "conanfile.py": set(re.findall(r'self\.requires\("([^/]+)/', recipe)),
}
lists = [path for folder in ("cmake", "host", "Core", "Application", "tools", "tests", "benchmarks", "fuzz")
         for path in (root / folder).rglob("*") if path.name == "CMakeLists.txt" or path.suffix == ".cmake"]
looked_for = {name for path in lists if "consumer" not in path.parts
              for pattern in (r"find_package\((\w+)", r"pkg_check_modules\(.* ([\w-]+)\)")
              for name in re.findall(pattern, path.read_text(encoding="utf-8"))}

complaints = [f"CMake looks for {name}, which the table here does not know" for name in looked_for - NAMES.keys()]
complaints += [f"nothing looks for {name} any longer" for name in NAMES.keys() - looked_for]
for (place, known), theirs in zip(declared.items(), zip(*NAMES.values())):
    wanted = set(theirs) - {None}
    complaints += [f"{place} lacks {name}" for name in sorted(wanted - known)]
    if place != "cmake/set-up.sh":  # which declares programs as well
        complaints += [f"{place} has {name}, which nothing looks for" for name in sorted(known - wanted)]
print("\n".join(complaints) or f"{len(looked_for)} packages are declared everywhere")
sys.exit(1 if complaints else 0)
