#!/usr/bin/env python3
"""Checks that each C++, C, Python or CMake example of the documentation is part of a program that the build compiles or a
test runs, and that links between the pages lead to files. Takes the repository's root."""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])


def without_indentation(text):
    return re.sub("^ +", "", text, flags=re.MULTILINE)


compiled = "".join(without_indentation(path.read_text(encoding="utf-8"))
                   for pattern in ("docs/snippets/*", "tests/docs/*.cpp", "samples/*/*")
                   for path in root.glob(pattern))
pages = [root / "README.md", *sorted(root.glob("docs/**/*.md"))]
complaints = []
examples = 0
for page in pages:
    text = page.read_text(encoding="utf-8")
    for example in re.findall(r"^```(?:cpp|cmake|c|python)\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
        examples += 1
        if without_indentation(example) not in compiled:
            complaints.append(f"{page}: no program has this example:\n{example}")
    complaints += [f"{page}: {link} does not exist" for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", text)
                   if not (page.parent / link).exists()]
own = (root / "docs/own-host-framework.md").read_text(encoding="utf-8")
complaints += [f"docs/own-host-framework.md lacks a part of {path}" for path in root.glob("samples/cpp/Own*.cpp")
               if path.read_text(encoding="utf-8") not in own]
print("\n".join(complaints) or f"{examples} examples and all links of {len(pages)} pages are sound")
sys.exit(1 if complaints or examples == 0 else 0)
