#!/usr/bin/env python3
"""Checks that each example of C++ or CMake in the documentation stands in a file under docs/snippets/, which the build
compiles, or tests/consumer/, which a test builds and runs, and that links between the pages lead somewhere. Takes the
repository's root."""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
pages = [root / "README.md", *sorted(root.glob("docs/**/*.md"))]
compiled = [path.read_text(encoding="utf-8") for pattern in ("docs/snippets/*.cpp", "tests/consumer/*.cpp")
            for path in root.glob(pattern)]
# An example leaves out the indentation of what it stands in.
project = re.sub(r"^ +", "", (root / "tests/consumer/CMakeLists.txt").read_text(encoding="utf-8"), flags=re.MULTILINE)
complaints = []
examples = 0
for page in pages:
    text = page.read_text(encoding="utf-8")
    for example in re.findall(r"^```cpp\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
        examples += 1
        if not any(example in source for source in compiled):
            complaints.append(f"{page}: an example stands in no compiled file:\n{example}")
    for example in re.findall(r"^```cmake\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
        examples += 1
        if re.sub(r"^ +", "", example, flags=re.MULTILINE) not in project:
            complaints.append(f"{page}: an example stands in no project that is built:\n{example}")
    for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", text):
        if not (page.parent / link).exists():
            complaints.append(f"{page}: {link} does not exist")
print("\n".join(complaints) or f"{examples} examples and all links of {len(pages)} pages are sound")
sys.exit(1 if complaints or examples == 0 else 0)
