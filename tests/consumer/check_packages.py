#!/usr/bin/env python3
"""Makes the Debian packages and checks their names, what they say they depend on, and that their programs run from an
empty directory that they are unpacked into. Takes cpack, the build directory and a directory for the packages."""
import pathlib
import re
import shutil
import subprocess
import sys

cpack, build, work = sys.argv[1:]
DEPENDENCIES = {
    r"libqelanalytics\d+": ["libc6", "libcurl4", "libspdlog", "libsqlite3-0", "libssl3", "libstdc++6"],
    r"libqelanalytics-dev": ["libqelanalytics"],
    r"qel-analytics-tools": ["libcpp-httplib", "libqelanalytics", "libsqlite3-0", "libutf8proc"],
}


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


shutil.rmtree(work, ignore_errors=True)
run(cpack, "--config", f"{build}/CPackConfig.cmake", "-G", "DEB", "-B", f"{work}/packages")
complaints = []
packages = sorted(pathlib.Path(work, "packages").glob("*.deb"))
for package in packages:
    name = run("dpkg-deb", "--field", package, "Package").strip()
    depends = run("dpkg-deb", "--field", package, "Depends")
    wanted = next((wanted for pattern, wanted in DEPENDENCIES.items() if re.fullmatch(pattern, name)), None)
    if wanted is None:
        complaints.append(f"{name} is none of the packages")
    else:
        complaints += [f"{name} does not depend on {library}" for library in wanted
                       if not re.search(rf"(^|, ){re.escape(library)}", depends)]
    run("dpkg-deb", "--extract", package, f"{work}/root")
if len(packages) != len(DEPENDENCIES):
    complaints.append(f"{len(packages)} packages were made")

programs = sorted(pathlib.Path(work, "root/usr/bin").iterdir())
for program in programs:
    libraries = run("ldd", program)
    complaints += [f"{program} loads from elsewhere: {line.strip()}" for line in libraries.splitlines()
                   if "libQel" in line and f"{work}/root" not in line]
    run(program, "--version")
print("\n".join(complaints) or f"{len(packages)} packages, {len(programs)} programs that run")
sys.exit(1 if complaints or not programs else 0)
