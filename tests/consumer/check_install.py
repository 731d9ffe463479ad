#!/usr/bin/env python3
"""Installs the build afresh and checks that no installed header includes one that is not. Takes cmake, the build
directory and the prefix."""
import pathlib
import re
import shutil
import subprocess
import sys

cmake, build, prefix = sys.argv[1:]
shutil.rmtree(prefix, ignore_errors=True)
subprocess.run([cmake, "--install", build, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL)

root = pathlib.Path(prefix, "include", "qel-analytics")
headers = sorted(root.rglob("*.h"))
complaints = [f"{header}: {name} is not installed" for header in headers
              for name in re.findall(r'^#include "(.+)"', header.read_text(encoding="utf-8"), re.MULTILINE)
              if not (root / name).is_file()]
print("\n".join(complaints) or f"{len(headers)} installed headers need no other of this repository")
sys.exit(1 if complaints or not headers else 0)
