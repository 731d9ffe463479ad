"""Packages of a customer base: sessions of many installations, as the client records them."""

import datetime
import json
import random

VERBS = ["Draw", "Move", "Copy", "Rotate", "Split", "Insert", "Connect", "Label"]
THINGS = ["duct", "pipe", "branch piece", "cable tray", "opening"]
COMMANDS = [f"{verb} {thing}" for thing in THINGS for verb in VERBS]
VERSIONS = ["26.2", "27.0", "27.1", "27.2"]
CODES = [3221225477, 3221225477, 3221225477, 3221226505, 3221225725]
OTHERS = [("Graphic", "Action", "ViewOpened", {"Scale": "1:50", "View": "Schematic"}),
          ("IssueListStorage", "Issue", "Added", {"Description": "The pipe touches the cable tray", "Priority": "2"}),
          ("IssueListAction", "Issue", "ContextMenu", {"Action": "Collapse all", "Source": "TreeControl"}),
          ("Save", "SaveProject", "AutoSave", {"ProjectFilePath": "P:/School.project", "Succeeded": "True"}),
          ("Presentation", "Focused", "Floor 2, ventilation", {}),
          ("Help", "Action", "Searched", {"Words": "fire damper"}),
          ("Project", "Opened", "School extension", {})]


def package_of(kind, texts):
    return ('{"version": "3.1", "%s": [%s]}' % (kind, ",".join(texts))).encode()


class Session:
    """The rows of one run of the program."""

    def __init__(self, chance, days):
        self.chance = chance
        now = datetime.datetime.now(datetime.timezone.utc).replace(minute=0, second=0, microsecond=0)
        age = int(days * chance.random() ** 1.2)
        if (now.weekday() - age) % 7 > 4 and chance.random() < 0.8:  # few work at weekends
            age = min(age + 3, days - 1)
        number = int(900 * chance.random() ** 2)
        self.installation = f"QEL-{20000 + number}"
        self.version = VERSIONS[max(0, 3 - (age + number % 25) // 25)]
        self.id = guid(chance)
        self.moment = now - datetime.timedelta(days=age, minutes=chance.randrange(60, 540))
        self.texts = []

    def environment(self):
        return json.dumps({"InstallationId": self.installation, "SessionId": self.id, "Timestamp": self.stamp(),
                           "CurrentActiveApplication": {"Name": "Ventilation", "Version": self.version},
                           "OS": {"Name": "Windows 11"}})

    def stamp(self):
        return self.moment.isoformat(timespec="milliseconds")[:23] + "Z"

    def add(self, category, subcategory, event, details):
        self.moment += datetime.timedelta(milliseconds=self.chance.randrange(200, 20_000))
        values = ", ".join(f'"{name}": "{value}"' for name, value in details.items())
        self.texts.append(f'{{"Category": "{category}", "Subcategory": "{subcategory}", "Event": "{event}", '
                          f'"InstallationId": "{self.installation}", "SessionId": "{self.id}", '
                          f'"Timestamp": "{self.stamp()}"' + (f', "Details": {{{values}}}}}' if values else "}"))

    def record(self):
        chance = self.chance
        self.add("Application", "Started", "Ventilation", {"Exception Code": 0})
        size = chance.lognormvariate(13.4, 0.5)
        command = ""
        for step in range(int(chance.expovariate(1 / 40)) + 2):
            number = min(int(chance.expovariate(1 / 9)), len(COMMANDS) - 1)
            command = COMMANDS[number]
            name = command.lower().replace(" ", ".")
            self.add("Command", "Started", command, {"ID": name, "Location": "toolbar"})
            ending = "Cancelled" if chance.random() < 0.04 + 0.3 * (number % 7 == 5) else "Accepted"
            self.add("Command", ending, command, {"ID": name})
            if step % 12 == 0:
                reading = {"Max": int(size * (1 + step / 90)), "Min": int(size * 0.8)}
                self.add("MemoryUsage", "Application", "Runtime", reading)
            if chance.random() < 0.5:
                self.add(*chance.choice(OTHERS))
        self.end()

    def end(self):
        chance = self.chance
        if chance.random() < (0.05 if self.version == "27.1" else 0.012):
            is_known_fault = self.version == "27.1" and chance.random() < 0.7
            command = "Insert branch piece" if is_known_fault else chance.choice(COMMANDS[:6])
            self.add("Command", "Started", command, {"ID": command.lower().replace(" ", "."), "Location": "menu"})
            self.add("Application", "Crashed", "Ventilation", {"Exception Code": chance.choice(CODES)})
        elif chance.random() < 0.95:
            self.add("Application", "Stopped", "Ventilation", {"Exception Code": 0})


def guid(chance):
    text = f"{chance.getrandbits(128):032X}"
    return "-".join((text[:8], text[8:12], text[12:16], text[16:20], text[20:]))


def packages(rows, days=90, rows_of_package=3300):
    """Packages with at least this many events. Always the same ones on one day."""
    chance = random.Random(16)
    events, environments, made = [], [], 0
    while made < rows:
        session = Session(chance, days)
        environments.append(session.environment())
        session.record()
        made += len(session.texts)
        events += session.texts
        if len(events) >= rows_of_package or made >= rows:
            yield package_of("environments", environments)
            yield package_of("events", events)
            events, environments = [], []
