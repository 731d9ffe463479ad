#!/usr/bin/env python3
"""Checks that the library of the C interface exports the functions of its header and nothing else. Takes the tool that
lists the symbols (nm for ELF, objdump for Windows), the library and the header."""
import pathlib
import re
import sys

from exports import exported

tool, library, header = sys.argv[1:]
names = set(exported(tool, library))
declared = re.findall(r"^QEL_ANALYTICS_API .*?(qel_analytics_\w+)\(",
                      pathlib.Path(header).read_text(encoding="utf-8"), re.MULTILINE)
complaints = [f"exported, but not declared: {name}" for name in sorted(names - set(declared))]
complaints += [f"declared, but not exported: {name}" for name in sorted(set(declared) - names)]
print("\n".join(complaints) or f"{len(declared)} functions are exported, and nothing else")
sys.exit(1 if complaints or not declared else 0)
