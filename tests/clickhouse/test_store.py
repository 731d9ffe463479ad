"""Collectors that store packages in ClickHouse."""

import contextlib
import itertools
import json
import random
import shutil
import signal
import sqlite3
import tempfile
import threading
import time
import unittest
from pathlib import Path

from servers import PASSWORD, ROOT, ClickHouse, Collector, HaProxy, Sender, Site, Server, ZooKeeper, free_ports, \
    wait_until


def event(number, session="S-1", **members):
    return json.dumps({"Category": "Command", "Subcategory": "Started", "Event": f"event {number}",
                       "InstallationId": "I-1", "SessionId": session,
                       "Timestamp": f"2026-11-{1 + number % 20:02}T10:00:00.{number % 1000:03}Z", **members})


def package(*events, environments=()):
    return f'{{"version": "3.1", "environments": [{",".join(environments)}], "events": [{",".join(events)}]}}'


class ClickHouseTest(unittest.TestCase):
    """One ClickHouse server for all tests of a class, and a database for each test."""

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
        collector = Collector(self.site, clickhouse.address(self.database), "--store-credentials",
                              clickhouse.credentials, *options)
        self.addCleanup(collector.kill, signal.SIGTERM)
        return collector

    def send(self, server, body, user="ada"):
        """Sends a package to a collector, and returns the status of the answer."""
        with contextlib.closing(Sender(self.site, server.port, user)) as sender:
            return sender.send(body)

    def rows(self, statement, clickhouse=None):
        return (clickhouse or self.clickhouse).rows(statement, self.database)

    def expect_each_once(self, texts, clickhouse=None):
        stored = [text for text, in self.rows("SELECT text FROM events FINAL", clickhouse)]
        lost = set(texts) - set(stored)
        self.assertEqual(([*lost][:3], len(stored)), ([], len(set(texts))))


class StoreTest(ClickHouseTest):
    def test_each_row_is_stored_once_although_collectors_and_clickhouse_are_killed(self):
        options = ("--behind", "127.0.0.1", "--create")
        collectors = [self.collector(*options), self.collector(*options)]
        proxy = HaProxy(self.directory, collectors)
        self.addCleanup(proxy.kill)
        stop = threading.Event()
        stored = []

        def send(client):
            sender = Sender(self.site, proxy.port)
            for first in itertools.count(client * 1_000_000, 50):
                if stop.is_set():
                    return sender.close()
                texts = [event(number, f"S-{client}") for number in range(first, first + 50)]
                sender.send_until_stored(package(*texts))
                stored.extend(texts)
                if random.random() < 0.3:  # as if the answer had been lost
                    sender.send_until_stored(package(*texts[10:], *texts[:10]))

        clients = [threading.Thread(target=send, args=(client,)) for client in range(8)]
        for client in clients:
            client.start()
        for victim in (collectors[0], self.clickhouse, collectors[1], self.clickhouse):
            before = len(stored)
            wait_until(lambda: len(stored) > before + 800, "progress")
            victim.kill()
            time.sleep(random.uniform(0.1, 1))
            victim.start()
        before = len(stored)
        wait_until(lambda: len(stored) > before + 800, "progress after all kills")
        stop.set()
        for client in clients:
            client.join()
        self.expect_each_once(stored)

    def test_rows_have_the_columns_of_their_texts(self):
        collector = self.collector("--create", "--batch-time", "200")
        full = ('{"Category":"C", "Subcategory" : "a\\"b\\u00e9","Event":"E","InstallationId":"I","SessionId":"S",'
                '"Timestamp":"2026-11-21T09:30:05.123Z","Details":{"k":"v","\\u006b2":"\\n\\\\","n":-1.5,'
                '"o":{"x":["}"]},"e":""},"Details":{"late":"1"}}')
        times = {"2026-11-21T09:30:05": [1795253405, 0], "2105-12-31T23:59:59.999Z": [4291747199, 999],
                 **dict.fromkeys(("2026-02-30T00:00:00.000Z", "1969-12-31T23:59:59.999Z", "2500-01-01T00:00:00.000Z",
                                  "x"), [0, 0])}
        others = [json.dumps({"Timestamp": time}) for time in times]
        environment = '{"SessionId":"S","CurrentActiveApplication":{"Name":"{","Version":"2026\\u002e1"}}'
        body = package(full, '{"Details":"none"}', '{"Details":[{}]}', *others, "{}", "{}", "bad\x01",
                       environments=(environment, "{}"))
        self.assertEqual(self.send(collector, body), 204)
        self.assertEqual(
            self.rows("SELECT text, session, installation, day, time, time_ms, category, subcategory, event, "
                      "arrayStringConcat(detail_keys, '|'), arrayStringConcat(detail_values, '|'), user, count "
                      "FROM events WHERE category = 'C'"),
            [[full, "S", "I", "2026-11-21", "2026-11-21 09:30:05", 123, "C", 'a"bé', "E", "k|k2|n|o|e",
              'v|\n\\|-1.5|{"x":["}"]}|', "ada", 1]])
        self.assertEqual({json.loads(text)["Timestamp"]: time for text, *time in self.rows(
            "SELECT text, toUInt32(time), time_ms FROM events WHERE text LIKE '{\"Timestamp%'")}, times)
        self.assertEqual(self.rows("SELECT count, length(detail_keys) FROM events WHERE text = '{}'"), [[2, "0"]])
        self.assertEqual(self.rows("SELECT text, session, version FROM environments ORDER BY text"),
                         [[environment, "S", "2026.1"], ["{}", "", ""]])
        self.assertEqual(self.rows("SELECT text, reason, user, count FROM refused"),
                         [["bad\x01", "row is no JSON object", "ada", 1]])

    def test_the_highest_count_and_then_the_first_arrival_wins(self):
        collector = self.collector("--create", "--batch-time", "200")
        for user, body in (("ada", package("{}")), ("bob", package("{}")), ("bob", package(event(1), event(1))),
                           ("ada", package(event(1)))):
            self.assertEqual(self.send(collector, body, user), 204)
            time.sleep(1.1)
        self.assertEqual(self.rows("SELECT length(text) > 2, user, count FROM events FINAL ORDER BY count"),
                         [[0, "ada", 1], [1, "bob", 2]])

    def test_erases_what_an_installation_or_a_user_has_sent(self):
        collector = self.collector("--create", "--batch-time", "200")
        theirs = event(1, InstallationId="o'brien")
        body = package(event(0), theirs, 'bad "o\'brien"', environments=(theirs,))
        self.assertEqual(self.send(collector, body), 204)
        self.assertEqual(self.send(collector, package(event(2), "bad"), "bob"), 204)
        erase = (self.site.command(self.clickhouse.address(self.database))[0], "erase", "--yes", "--store",
                 self.clickhouse.address(self.database), "--store-credentials", self.clickhouse.credentials)
        time.sleep(1.1)  # rows of the second in which the erasure begins may stay
        self.assertEqual(self.site.output_of(*erase, "--installation", "o'brien"),
                         ("events 1, environments 1, refused texts 1\nerased 3 rows\n", 0))
        self.assertEqual(self.site.output_of(*erase, "--user", "bob"),
                         ("events 1, environments 0, refused texts 1\nerased 2 rows\n", 0))
        self.expect_each_once([event(0)])
        self.assertEqual(self.rows("SELECT count() FROM refused"), [["0"]])

    def test_deletes_rows_after_their_retention(self):
        self.collector("--create", "--batch-time", "200").kill(signal.SIGTERM)
        for text, received in (("old", "now() - 3 * 86400"), ("new", "now()")):
            self.clickhouse.query(f"INSERT INTO events (text, received) SELECT '{text}', {received}", self.database)
        self.collector("--retention", "2")
        wait_until(lambda: self.rows("SELECT text FROM events") == [["new"]], "the deletion")

    def test_imports_each_row_of_an_sqlite_store_once(self):
        store = self.directory / "store.db"
        old = Collector(self.site, store)
        self.addCleanup(old.kill, signal.SIGTERM)
        texts = [event(number, f"S-{number % 7}") for number in range(3000)]
        for first in range(0, 3000, 1000):
            self.assertEqual(self.send(old, package(*texts[first:first + 1000])), 204)
        body = package("{}", "{}", "bad\t\x01'", environments=('{"SessionId":"S-1"}',))
        self.assertEqual(self.send(old, body, "bob"), 204)
        new = self.collector("--create")
        self.assertEqual(self.send(new, package(*texts[:100])), 204)
        command = (self.site.command(store)[0], "import", store, "--store", self.clickhouse.address(self.database),
                   "--store-credentials", self.clickhouse.credentials)
        for _ in range(2):
            self.assertEqual(self.site.output_of(*command),
                             ("imported events 3001, environments 1, refused texts 1\n", 0))
        self.expect_each_once([*texts, "{}"])
        self.assertEqual(self.rows("SELECT hex(text), user, count FROM refused FINAL"),
                         [["bad\t\x01'".encode().hex().upper(), "bob", 1]])
        with sqlite3.connect(store) as connection:
            stored = connection.execute("SELECT substr(hex(key), 1, 48), count, user, substr(received, 1, 19), text "
                                        "FROM events WHERE id > 100").fetchall()
        found = self.rows("SELECT hex(key), count, user, replaceOne(toString(received), ' ', 'T'), text "
                          "FROM events FINAL")
        self.assertEqual([*set(stored) - set(map(tuple, found))][:3], [])


class BadStoreTest(ClickHouseTest):
    """What goes wrong with ClickHouse reaches the log in one clear line, and loses no row."""

    def test_names_what_is_wrong_at_the_start(self):
        address = self.clickhouse.address
        create = self.clickhouse.query
        self.collector("--create").kill(signal.SIGTERM)
        wrong = self.directory / "wrong"
        wrong.touch(0o600)
        wrong.write_text("collector:se$cret$\n")
        (closed,) = free_ports(1)
        changes = {
            "ALTER TABLE events DROP COLUMN user": "the table events has no column user",
            "ALTER TABLE environments MODIFY COLUMN count UInt64":
                "the column environments.count has the type UInt64 instead of UInt32",
            "DROP TABLE refused": "it has no table refused; --create creates the tables",
            "DROP TABLE schema_version": "it has no table schema_version; --create creates the tables",
            "INSERT INTO schema_version VALUES (2, now())": "a newer version of the collector made it",
            "DROP TABLE refused;CREATE TABLE refused (key String, text String) ENGINE = MergeTree ORDER BY text":
                "the table refused must have the engine ReplacingMergeTree and be ordered by key",
        }
        cases = [(f"clickhouse://127.0.0.1:{closed}/x", self.clickhouse.credentials, "Couldn't connect to server"),
                 (address("x"), self.clickhouse.credentials, "there is no such database; --create creates it"),
                 (address(self.database), wrong, "Wrong password for user collector")]
        for number, (statements, message) in enumerate(changes.items()):
            database = f"{self.database}_{number}"
            create(f"CREATE DATABASE {database}")
            self.clickhouse.run_script(ROOT / "deploy" / "clickhouse" / "single.sql", database)
            for statement in statements.split(";"):
                create(statement, database)
            cases.append((address(database), self.clickhouse.credentials, message))
        for store, credentials, message in cases:
            output, status = self.site.output_of(*self.site.command(store, "--store-credentials", credentials))
            self.assertRegex(output, f"(?s)^qel-collector: cannot use the store {store}: .*{message}\\n$")
            self.assertEqual(status, 1)
            self.assertNotIn("se$cret", output)

    def test_keeps_no_part_of_a_batch_in_doubt(self):
        collector = self.collector("--create", "--batch-time", "200")
        body = package(event(1), "bad", environments=("{}",))
        for table in ("refused", "environments", "events"):
            self.clickhouse.query(f"RENAME TABLE {table} TO hidden", self.database)
            self.assertEqual(self.send(collector, body), 503)
            self.assertFalse(collector.is_ready())
            self.clickhouse.query(f"RENAME TABLE hidden TO {table}", self.database)
            wait_until(collector.is_ready, "the recovery")
        self.assertEqual(self.send(collector, body), 204)
        self.expect_each_once([event(1)])
        self.assertIn("doesn't exist", collector.log.read_text())
        self.assertNotIn(PASSWORD, collector.log.read_text())

    def test_answers_503_in_time_while_clickhouse_hangs(self):
        collector = self.collector("--create", "--batch-time", "200")
        self.assertEqual(self.send(collector, package(event(1))), 204)
        self.clickhouse.server.process.send_signal(signal.SIGSTOP)
        self.addCleanup(self.clickhouse.server.process.send_signal, signal.SIGCONT)
        begin = time.monotonic()
        self.assertEqual(self.send(collector, package(event(2))), 503)
        self.assertLess(time.monotonic() - begin, 7)
        self.assertFalse(collector.is_ready())
        self.clickhouse.server.process.send_signal(signal.SIGCONT)
        wait_until(collector.is_ready, "the recovery")
        self.assertEqual(self.send(collector, package(event(2))), 204)
        self.expect_each_once([event(1), event(2)])

    def test_answers_503_while_the_disk_of_clickhouse_is_full(self):
        directory = self.directory / "small"
        (directory / "data").mkdir(parents=True)
        mount = f'mount -t tmpfs -o size=24m tmpfs {directory}/data && exec "$@"'
        small = ClickHouse(directory, wrapper=("unshare", "--user", "--map-root-user", "--mount", "sh", "-c", mount, "sh"))
        self.addCleanup(small.kill)
        collector = self.collector("--create", "--batch-time", "200", clickhouse=small)
        texts, status = [], 204
        while status == 204:
            self.assertLess(len(texts), 50)
            texts.append(event(len(texts), padding=random.randbytes(1_000_000).hex()))
            status = self.send(collector, package(texts[-1]))
        self.assertEqual(status, 503)
        self.assertRegex(collector.log.read_text(), "503: .*(No space left|Not enough space)")


class ClusterTest(ClickHouseTest):
    """Two replicas of one shard, each insert confirmed by both."""

    CONFIG = """<zookeeper><node><host>127.0.0.1</host><port>{zookeeper}</port></node>
        <session_timeout_ms>2000</session_timeout_ms></zookeeper>
      <distributed_ddl><path>/clickhouse/task_queue/ddl</path></distributed_ddl>
      <macros><shard>1</shard><replica>{replica}</replica></macros>
      <remote_servers><analytics><shard><internal_replication>true</internal_replication>
        <replica><host>127.0.0.1</host><port>{first}</port></replica>
        <replica><host>127.0.0.1</host><port>{second}</port></replica>
      </shard></analytics></remote_servers>"""

    @classmethod
    def start_servers(cls):
        zookeeper = ZooKeeper(cls.directory / "zookeeper")
        cls.addClassCleanup(zookeeper.kill)
        ports = [free_ports(3), free_ports(3)]
        cls.replicas = []
        for replica in (0, 1):
            more = cls.CONFIG.format(zookeeper=zookeeper.port, replica=replica, first=ports[0][1], second=ports[1][1])
            settings = "<insert_quorum>2</insert_quorum>"
            server = ClickHouse(cls.directory / f"replica{replica}", more, settings, ports[replica])
            cls.addClassCleanup(server.kill)
            cls.replicas.append(server)

    def test_each_row_is_on_both_replicas_and_counted_once(self):
        self.database = "analytics"
        first, second = self.replicas
        for replica in self.replicas:
            replica.query("CREATE DATABASE analytics")
        first.run_script(ROOT / "deploy" / "clickhouse" / "cluster.sql", "analytics")
        collectors = [self.collector("--batch-time", "200", clickhouse=replica) for replica in self.replicas]
        stored = []

        def send(client):
            with contextlib.closing(Sender(self.site, collectors[client % 2].port)) as sender:
                for first_number in range(client * 1000, client * 1000 + 200, 20):
                    texts = [event(number, f"S-{client}") for number in range(first_number, first_number + 20)]
                    sender.send_until_stored(package(*texts))
                    stored.extend(texts)

        clients = [threading.Thread(target=send, args=(client,)) for client in range(4)]
        for client in clients:
            client.start()
        for client in clients:
            client.join()
        for replica in self.replicas:
            self.expect_each_once(stored, replica)
            self.assertEqual(self.rows("SELECT count() FROM events_local FINAL", replica), [[str(len(stored))]])
        second.kill()
        last = event(9999)
        self.assertEqual(self.send(collectors[0], package(last)), 503)
        second.start()
        with contextlib.closing(Sender(self.site, collectors[0].port)) as sender:
            sender.send_until_stored(package(last))
        for replica in self.replicas:
            self.expect_each_once([*stored, last], replica)
        erased = self.site.output_of(self.site.command("")[0], "erase", "--yes", "--installation", "I-1", "--store",
                                     first.address("analytics"), "--store-credentials", first.credentials)
        self.assertEqual(erased, (f"events {len(stored) + 1}, environments 0, refused texts 0\n"
                                  f"erased {len(stored) + 1} rows\n", 0))
