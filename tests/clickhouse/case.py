"""What the tests of collectors with ClickHouse share."""

import base64
import contextlib
import http.client
import itertools
import json
import shutil
import signal
import ssl
import tempfile
import unittest
import urllib.parse
from pathlib import Path

from servers import NAME, ClickHouse, Collector, Sender, Site


def event(number, session="S-1", **members):
    return json.dumps({"Category": "Command", "Subcategory": "Started", "Event": f"event {number}",
                       "InstallationId": "I-1", "SessionId": session,
                       "Timestamp": f"2026-11-{1 + number % 20:02}T10:00:00.{number % 1000:03}Z", **members})


def package(*events, environments=()):
    return f'{{"version": "3.1", "environments": [{",".join(environments)}], "events": [{",".join(events)}]}}'


class ClickHouseTest(unittest.TestCase):
    """One ClickHouse server for all tests of a class, and a database for each test."""

    FIGURES = ("events-by-day", "installations-by-day", "installations-by-week", "versions", "crashes", "commands",
               "memory", "sessions", "live", "refused", "filters")

    numbers = itertools.count()

    @classmethod
    def setUpClass(cls):
        cls.directory = Path(tempfile.mkdtemp(prefix="qel-clickhouse-"))
        cls.addClassCleanup(shutil.rmtree, cls.directory)
        cls.site = Site(cls.directory / "site")
        cls.start_servers()

    @classmethod
    def start_servers(cls):
        cls.clickhouse = ClickHouse(cls.directory / "clickhouse")
        cls.addClassCleanup(cls.clickhouse.kill)

    def setUp(self):
        self.database = f"analytics{next(self.numbers)}"

    def collector(self, *options, clickhouse=None):
        clickhouse = clickhouse or self.clickhouse
        return self.start(clickhouse.address(self.database), "--store-credentials", clickhouse.credentials, *options)

    def start(self, store, *options):
        collector = Collector(self.site, store, "--readers", self.site.readers, *options)
        self.addCleanup(collector.kill, signal.SIGTERM)
        return collector

    def send(self, server, body, user="ada"):
        """Sends a package to a collector, and returns the status of the answer."""
        with contextlib.closing(Sender(self.site, server.port, user)) as sender:
            return sender.send(body)

    def rows(self, statement, clickhouse=None):
        return (clickhouse or self.clickhouse).rows(statement, self.database)

    def get(self, collector, path, **parameters):
        tls = ssl.create_default_context(cafile=self.site.directory / "certificate.pem")
        tls.check_hostname = False
        connection = http.client.HTTPSConnection("127.0.0.1", collector.admin, context=tls, timeout=60)
        credentials = base64.b64encode(b"rita:secret").decode()
        connection.request("GET", f"/api/{path}?{urllib.parse.urlencode(parameters)}",
                           headers={"Authorization": f"Basic {credentials}", "Host": NAME})
        answer = json.loads(connection.getresponse().read())
        connection.close()
        return answer

    def expect_each_once(self, texts, clickhouse=None):
        stored = [text for text, in self.rows("SELECT text FROM events FINAL", clickhouse)]
        lost = set(texts) - set(stored)
        self.assertEqual(([*lost][:3], len(stored)), ([], len(set(texts))))

    def expect_summary(self, clickhouse=None):
        """Expects that the view has summed up every event."""
        time = "toUInt64(toUInt32(time)) * 1000 + time_ms"
        tables = (("session_days", "minMerge(first), maxMerge(last)"), ("events", f"min({time}), max({time})"))
        summary, events = (self.rows(f"SELECT day, session, {times} FROM {table} GROUP BY day, session "
                                     "ORDER BY day, session", clickhouse) for table, times in tables)
        self.assertEqual(summary, events)
