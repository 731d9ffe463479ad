#!/usr/bin/env python3
"""Checks that the tables of docs/events.md list every record that the client makes, with its details, and no other.
Tests compare the program with the files that this script reads. Takes the repository's root."""
import itertools
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
    complaints.extend(f"no statement about personal data: {row}" for row in rows
                      if not re.fullmatch("No|(Possible|Yes): .*", row[-1]))
    return rows


class Row:
    """A row of the table of events, and the details of each record that it describes."""

    def __init__(self, cells):
        self.unseen = set(itertools.product(*(cell.split(" or ") for cell in cells[:3])))
        self.details = set(re.findall("`(.*?)`", cells[3]))
        self.optional = set(re.findall(r"\(`(.*?)`\)", cells[3]))
        self.is_open = "*" in cells[3]
        self.records = []


rows = [Row(cells) for cells in rows_under("Events") if not cells[4].startswith("*nothing today*")]
row_of = {combination: row for row in rows for combination in row.unseen}

# What a session with every notification stores, and what the client reports of itself:
# "Category|Subcategory|Event|key=value;key=value".
for record in (read("tools/sample-host/everything.items") + read("docs/client.items")).splitlines():
    *names, details = record.split("|", 3)
    combination = tuple(f"`{name}`" if name else "—" for name in names)
    if names[0] == "Plan":
        combination = ("*host's text*",) * 3
    elif not names[0]:
        combination = ("*empty*", "—", "—")
    elif combination not in row_of:
        combination = (*combination[:2], "*host's text*")
    if row := row_of.get(combination):
        row.unseen.discard(combination)
        row.records.append({detail.split("=")[0] for detail in details.split(";") if detail})
    else:
        complaints.append(f"lacks {record}")

for row in rows:
    ever, always = set().union(*row.records), row.details.intersection(*row.records)
    complaints += [f"no record has {missing}" for missing in row.unseen | row.details - ever]
    complaints += [f"lacks the detail {key}" for key in ever - row.details if not row.is_open]
    complaints += [f"wrong about whether {key} is always there" for key in always ^ (row.details - row.optional)]


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
    complaints += [f"{heading}: lacks {name}, or no record has it" for name in in_page ^ members(record)]
print("\n".join(f"docs/events.md: {complaint}" for complaint in complaints) or f"{len(rows)} kinds of events")
sys.exit(1 if complaints else 0)
