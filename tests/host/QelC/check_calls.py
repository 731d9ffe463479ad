#!/usr/bin/env python3
"""Runs a program that calls the C interface. Compares what it prints with calls.txt, and what it stores with
calls.items. Takes the program, after the command that runs it if it needs one."""
import collections
import difflib
import json
import pathlib
import socket
import sqlite3
import subprocess
import sys
import tempfile

here = pathlib.Path(__file__).parent


def summary(text):
    """An event in one line, without the texts that are long and the GUIDs that are counted."""
    event = json.loads(text)
    names = [event.get(name, "") for name in ("Category", "Subcategory", "Event")]
    details = [f"{key}={value}" for key, value in event.get("Details", {}).items() if key != "Id"]
    return "|".join(name if len(name) < 100 else f"{len(name)} bytes" for name in names + [";".join(details)])


def stored(file):
    """Each different event with its number, then the environments."""
    with sqlite3.connect(file) as database:
        items = [summary(text) for text, in database.execute("SELECT json FROM Items ORDER BY ID")]
        environments = [text for text, in database.execute("SELECT json FROM Environments ORDER BY ID")]
    counts = collections.Counter(item for item in items if not item.startswith("MemoryUsage|"))
    lines = [f"{count} {item}" for item, count in sorted(counts.items())]
    for text in environments:
        environment = json.loads(text)
        lines += [f"{environment['SessionId']} {len(environment['InstallationId'])}",
                  environment["CurrentActiveApplication"]["Name"]]
        lines += [f"{program['Name']} {program['WebUpdate']}" for program in environment["InstalledApplications"]]
    return "".join(f"{line}\n" for line in lines)


def differences(name, actual):
    expected = (here / name).read_text(encoding="utf-8")
    return list(difflib.unified_diff(expected.splitlines(), actual.splitlines(), name, "actual", lineterm=""))


with tempfile.TemporaryDirectory() as directory, socket.create_server(("127.0.0.1", 0)) as silent:
    for name in ("kept", "withdrawn", "locked"):
        pathlib.Path(directory, name).mkdir()
    locked = sqlite3.connect(pathlib.Path(directory, "locked/SupportDatabase.db"), isolation_level=None)
    locked.execute("BEGIN EXCLUSIVE")
    address = "127.0.0.1:%d" % silent.getsockname()[1]
    run = subprocess.run([*sys.argv[1:], address], cwd=directory, stdout=subprocess.PIPE, check=True, timeout=100)
    printed = run.stdout.decode("utf-8", "backslashreplace").replace("\r\n", "\n")
    complaints = differences("calls.txt", printed) + differences(
        "calls.items", stored(pathlib.Path(directory, "kept/SupportDatabase.db")))
print("\n".join(complaints[:100]) or "all calls return and store what is expected")
sys.exit(1 if complaints else 0)
