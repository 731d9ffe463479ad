"""The figures of a store in ClickHouse, beside those of an SQLite file with the same rows."""

import json
import random
import time

from case import ClickHouseTest, package
from servers import PROGRAM

HOSTILE = ("<script>alert(1)</script>", "'; DROP TABLE events; --", "\\' OR 1 = 1", "\u202e\x00\x1b[31m", "%s{0}`\"")


def record(session, installation, second, category, subcategory="", event="", **details):
    row = {"Category": category, "Subcategory": subcategory, "Event": event, "InstallationId": installation,
           "SessionId": session, "Timestamp": time.strftime("%Y-%m-%dT%H:%M:%S.", time.gmtime(1777593600 + second)) +
           f"{second % 1000:03}Z", "Details": details}
    return json.dumps({name: value for name, value in row.items() if value or name == "Category"})


def packages():
    """Sessions with crashes, commands and readings, rows without identity or time, and hostile texts."""
    chance = random.Random(7)
    for number in range(40):
        session, installation = f"{{AB-{number:04}}}", f"I-{number % 9}"
        day = number * 170_000
        rows, environments = [], []
        for second in range(day, day + chance.randrange(5, 60)):
            kind = chance.randrange(6)
            command = chance.choice(("Move", "Draw duct", *HOSTILE))
            if kind < 2:
                rows.append(record(session, installation, second, "Command", ("Started", "Cancelled")[kind], command))
            elif kind == 2:
                rows.append(record(session, installation, second, "MemoryUsage", "Application", "Runtime",
                                   Max=chance.choice((str(chance.randrange(10 ** 6)), "much", "-5")), Min="1"))
            elif kind == 3 and chance.random() < 0.2:
                details = {"Exception Code": chance.choice(("3221225477", HOSTILE[0]))}
                rows.append(record(session, installation, second, "Application", "Crashed", "", **details))
            else:
                rows.append(record(session, installation, second, chance.choice(("Graphic", "", HOSTILE[1])), "Action"))
        if number % 3 == 0:
            rows.append(record(session, installation, day + 99, "Application", "Stopped"))
        for version in chance.choice(((), ("14.1",), ("14.1", "14.2"), (HOSTILE[2],), ("",))):
            environments.append(json.dumps({
                "InstallationId": installation, "SessionId": session, "CurrentActiveApplication": {"Version": version},
                "Timestamp": f"2026-05-01T00:00:{len(environments):02}.000Z"}))
        yield package(*rows, rows[0], "bad \x01\xff" + HOSTILE[number % 5], environments=environments)
    yield package(*(record("{AB-0002}", "I-2", 40 * number, f"Category {number % 60}") for number in range(200)))
    yield package('{"Category":"No identity"}', '{"Category":"No time","SessionId":"{AB-0001}","Timestamp":"never"}',
                  '{"Category":"Other","InstallationId":"I-1","Timestamp":"2026-05-05T00:00:00.000Z"}')


class FiguresTest(ClickHouseTest):
    FILTERS = ({}, {"from": "2026-06-01"}, {"until": "2026-06-15"}, {"from": "2026-05-02", "until": "2026-05-30"},
               {"from": "0001-01-01", "until": "9999-12-31"},
               {"version": "14.2"}, {"version": HOSTILE[2]}, {"installation": "I-4"}, {"installation": HOSTILE[1]},
               {"version": "14.1", "installation": "I-1", "from": "2026-05-01", "until": "2026-07-31"})
    MORE = {"sessions": ({"session": "ab-000"}, {"end": "crashed"}, {"end": "stopped", "limit": 3}, {"end": "unknown"}),
            "live": ({"limit": 7},), "refused": ({"limit": 2}, {"from": "2000-01-01"}, {"until": "2000-01-01"})}

    def test_both_stores_give_the_same_answers_before_clickhouse_has_merged(self):
        file = self.directory / "figures.db"
        ours = self.start(file)
        for body in packages():
            self.assertEqual(self.send(ours, body), 204)
        address = ("--store", self.clickhouse.address(self.database), "--store-credentials", self.clickhouse.credentials)
        imported, status = self.site.output_of(PROGRAM, "import", file, "--create", *address)
        self.assertEqual(status, 0, imported)
        self.clickhouse.query("SYSTEM STOP MERGES")
        self.addCleanup(self.clickhouse.query, "SYSTEM START MERGES")
        theirs = self.start(address[1], *address[2:], "--batch-time", "200")
        for number, body in enumerate(packages()):
            if number % 2:
                self.assertEqual(self.send(theirs, body), 204)
        for figure in self.FIGURES:
            for parameters in (*self.FILTERS, *self.MORE.get(figure, ())):
                if figure == "filters" and parameters or figure == "refused" and \
                        {"version", "installation"} & set(parameters):
                    continue
                with self.subTest(figure=figure, **parameters):
                    answers = [self.get(collector, figure, **parameters) for collector in (ours, theirs)]
                    for answer in answers:
                        if figure == "live":  # other cursors, and no difference between a missing and an empty text
                            answer["rows"] = [[cell or "" for cell in row[1:]] for row in answer["rows"]]
                            answer.pop("cursor", None)
                    self.assertEqual(answers[1]["rows"], answers[0]["rows"])
                    self.assertEqual(answers[1], answers[0])
        for session in ("{AB-0001}", "{AB-0007}", "none", HOSTILE[1], "ab0031", "ab-003", "{ab-", "AB-01"):
            self.assertEqual(self.get(theirs, "session", id=session), self.get(ours, "session", id=session))

    def test_live_shows_each_row_once_and_in_order(self):
        collector = self.collector("--create", "--batch-time", "200")
        packages_of_rows = [[record("S-1", "I-1", 10 * number + row, "Graphic", "Action") for row in range(10)]
                            for number in range(5)]
        examined = self.get(collector, "live", installation="nobody")["cursor"]
        self.assertGreater(int(examined[1:14]), 1000 * (time.time() - 65))
        seen, cursor = [], ""
        for rows in (*packages_of_rows[:3], packages_of_rows[0], *packages_of_rows[3:]):
            self.assertEqual(self.send(collector, package(*rows)), 204)
            time.sleep(0.6)
            for _ in range(2):
                found = self.get(collector, "live", limit=8, after=cursor)["rows"]
                seen.extend(row[-1] for row in found)
                cursor = found[-1][0] if found else cursor
        expected = [row for rows in packages_of_rows for row in rows]
        self.assertEqual(seen, expected[2:])  # without a cursor the newest rows are shown
        self.assertEqual([row[-1] for row in self.get(collector, "live", after=examined)["rows"]], expected)
        self.assertIn("cursor", self.get(collector, "live", after="1' OR 1")["error"])
