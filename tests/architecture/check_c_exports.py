#!/usr/bin/env python3
"""Checks that the library of the C interface exports the functions of its header and nothing else. Takes the tool that
lists the symbols (nm for ELF, objdump for Windows), the library and the header."""
import pathlib
import re
import subprocess
import sys

tool, library, header = sys.argv[1:]
if library.endswith(".dll"):
    listing = subprocess.run([tool, "-p", library], check=True, capture_output=True, text=True).stdout
    exported = re.findall(r"^\t\[ *\d+\] (?:\+base\[.*?\] *[0-9a-f]+ )?(\S+)$",
                          listing.split("[Ordinal/Name Pointer] Table")[1].split("\n\n")[0], re.MULTILINE)
else:
    listing = subprocess.run([tool, "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    exported = [line.split()[-1] for line in listing.splitlines()]
declared = re.findall(r"^QEL_ANALYTICS_API .*?(qel_analytics_\w+)\(",
                      pathlib.Path(header).read_text(encoding="utf-8"), re.MULTILINE)
complaints = [f"exported, but not declared: {name}" for name in sorted(set(exported) - set(declared))]
complaints += [f"declared, but not exported: {name}" for name in sorted(set(declared) - set(exported))]
print("\n".join(complaints) or f"{len(declared)} functions are exported, and nothing else")
sys.exit(1 if complaints or not declared else 0)
