#!/usr/bin/env python3
"""Checks that the tables of docs/events.md list every record that the client can make, with its details, and no other.
Tests compare the program with the files that are read here. Takes the repository's root."""
import json
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
page = (root / "docs/events.md").read_text(encoding="utf-8")
complaints = []


def read(name):
    return (root / "tests" / name).read_text(encoding="utf-8")


def rows_under(heading):
    """The cells of the rows of the table under a heading."""
    section = page.split(f"\n## {heading}\n")[1].split("\n## ")[0]
    rows = [line[2:-2].split(" | ") for line in section.splitlines() if line.startswith("| ")][1:]
    complaints.extend(f"no word about personal data: {row}" for row in rows
                      if not re.fullmatch("No|(Possible|Yes): .*", row[-1]))
    return rows


class Row:
    """A row of the table of events, and what was not seen yet: of its combinations, its details, and of those in
    parentheses a record without them."""

    def __init__(self, cells):
        self.name = "|".join(cells[:3])
        self.is_made = not cells[4].startswith("*nothing today*")
        self.details = set(re.findall("`(.*?)`", cells[3]))
        self.is_open = "*" in cells[3]
        self.optional = set(re.findall(r"\(`(.*?)`\)", cells[3]))
        self.unseen_details = set(self.details)
        self.always_seen = set(self.optional)
        self.unseen = {(category, subcategory, event) for category in cells[0].split(" or ")
                       for subcategory in cells[1].split(" or ") for event in cells[2].split(" or ")}


rows = [Row(cells) for cells in rows_under("Events")]
row_of = {combination: row for row in rows for combination in row.unseen}


def note(record, is_made):
    """Notes a record, "Category|Subcategory|Event|key=value;key=value", in its row."""
    *names, details = record.split("|", 3)
    combination = tuple(f"`{name}`" if name else "—" for name in names)
    if names[0] == "Plan":
        combination = ("*host's text*",) * 3
    elif not names[0]:
        combination = ("*empty*", "—", "—")
    elif combination not in row_of:
        combination = (*combination[:2], "*host's text*")
    row = row_of.get(combination)
    if row is None or is_made and not row.is_made:
        complaints.append(f"lacks {record}, or has it as not made")
    elif row.is_made == is_made:
        keys = {detail.split("=")[0] for detail in details.split(";") if detail}
        row.unseen.discard(combination)
        row.unseen_details -= keys
        row.always_seen &= keys
        complaints.extend(f"lacks {key} of {record}" for key in keys - row.details if not row.is_open)
        complaints.extend(f"has {key} without parentheses, which {record} lacks"
                          for key in row.details - row.optional - keys)


# What a session with every notification stores, and what the client reports of itself.
for line in (read("tools/sample-host/everything.items") + read("docs/client.items")).splitlines():
    note(line, True)
for line in ["User|||Username=u", "Application|Crash Report|e|", *read("docs/kinds.items").splitlines()]:
    note(line, False)
for row in rows:
    complaints += [f"nothing makes {unseen}" for unseen in row.unseen | row.unseen_details]
    complaints += [f"has {key} in parentheses, which every record of {row.name} has" for key in row.always_seen]


def members(value, path=""):
    if isinstance(value, dict):
        return {name for key, item in value.items() for name in members(item, f"{path}.{key}")}
    if isinstance(value, list):
        return {name for item in value for name in members(item, path + "[]")}
    return {f"`{path[1:]}`"}


event = dict.fromkeys(["Category", "Subcategory", "Event", "InstallationId", "SessionId", "Timestamp"], "")
for heading, record in (("What every event carries", {**event, "Details": {"*": ""}}),
                        ("The environment", json.loads(read("docs/environment.json")))):
    in_page = {cells[0] for cells in rows_under(heading)}
    complaints += [f"{heading}: lacks {name}, or nothing makes it" for name in in_page ^ members(record)]
print("\n".join(f"docs/events.md: {complaint}" for complaint in complaints) or f"{len(rows)} kinds of events are listed")
sys.exit(1 if complaints else 0)
