#!/usr/bin/env python3
"""Checks that each C++, C, Python or CMake example of the documentation is part of a program that the build compiles or a
test runs, that links between the pages lead to files, and that lists are complete. Takes the repository's root."""
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

# The page of session scripts lists the notifications, the control lines and the sample host's options, and no others.
script = (root / "docs/session-script.md").read_text(encoding="utf-8")
in_page = {name for cell in re.findall(r"^\| (.*?) \|", script, re.MULTILINE)
           for name in re.findall(r'`(?:\{")?([\w-]+)', cell)} - {"notify"}
in_code = {name for path in (*root.glob("host/QelNotification/*.cpp"), *root.glob("tools/sample-host/*.cpp"))
           for name in re.findall(r'(?:Notification|Kind)\{"(\w+)"|(?:add|add_flag|flag_callback)\(\s*"(--[\w-]+)"',
                                  path.read_text(encoding="utf-8"))}
complaints += [f"docs/session-script.md lacks {name}, or only that page has it"
               for name in in_page ^ {"".join(names) for names in in_code} - {"notify"}]
print("\n".join(complaints) or f"{examples} examples and all links of {len(pages)} pages are sound")
sys.exit(1 if complaints or examples == 0 else 0)
