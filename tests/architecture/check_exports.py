#!/usr/bin/env python3
"""Checks that the shared library exports what its headers mark for export, with nested classes, and nothing else of its
own, and that the host libraries export no functions of the C libraries that they may contain. Takes the repository's
root, the tool that lists symbols (nm for ELF, objdump for Windows), the library and the host libraries. The standard
library's templates are skipped."""
import pathlib
import re
import sys

from exports import demangled, exported

# Marked, but complete in their headers: there is nothing of them to export.
HEADER_ONLY = {"ActivateParameter", "WebUpdateReporterInterface", "IssueListInformationInterface"}
# What nm prints before the class of a symbol that is none of its operations.
KIND = re.compile(r"(?:vtable|VTT|typeinfo|typeinfo name|guard variable|(?:non-)?virtual thunk) (?:for|to) ")
OWNER = re.compile(r"qel::log::analytics::(?:[a-z]\w*::)*(\w+)")
MARK = re.compile(r"^(?:class|struct) QEL_ANALYTICS_EXPORT (\w+)|^QEL_ANALYTICS_EXPORT [^;{]*?(\w+)\(", re.MULTILINE)
# Mangled names show what is the standard library's; demangled ones may begin with a return type.
STANDARD = re.compile(r"_Z(?:T[VTIS]|GV)?(?:Z?N?K?(?:S[tabsiod]|9__gnu_cxx)|P?F)")

root, tool, library, *host_libraries = sys.argv[1:]
names = exported(tool, library)
marked = {match[1] or match[2] for header in pathlib.Path(root, "Application").rglob("*.h")
          for match in MARK.finditer(header.read_text(encoding="utf-8"))}
own = [KIND.sub("", name) for mangled, name in zip(names, demangled(names)) if not STANDARD.match(mangled)]
owner_of = {name: match[1] if (match := OWNER.match(name)) else None for name in own}
complaints = [f"exported, but not marked: {name}" for name, owner in owner_of.items() if owner not in marked]
complaints += [f"marked, but not exported: {name}" for name in sorted(marked - HEADER_ONLY - set(owner_of.values()))]
complaints += [f"exported by {host_library}, but no C++: {name}" for host_library in host_libraries
               for name in exported(tool, host_library) if not name.startswith("_Z")]
print("\n".join(complaints) or f"{len(marked)} classes and functions are exported, and nothing else")
sys.exit(1 if complaints or not own else 0)
