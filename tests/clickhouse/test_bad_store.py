"""What goes wrong with ClickHouse."""

import random
import signal
import time

from case import ClickHouseTest, event, package
from servers import PASSWORD, ROOT, ClickHouse, free_ports, wait_until


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
            "DROP TABLE session_days_view": "it has no materialised view session_days_view: create .* and fill .*",
            "INSERT INTO events (key) VALUES ('1');DROP TABLE session_days": "it has events, but no summary of them: .*",
            "ALTER TABLE session_days DROP COLUMN memory": "the table session_days has no column memory",
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
            more = ["--create"] if "has events" in message else []
            cases.append((address(database), self.clickhouse.credentials, message, *more))
        for store, credentials, message, *more in cases:
            output, status = self.site.output_of(*self.site.command(store, "--store-credentials", credentials, *more))
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

    def test_reports_an_outage_once(self):
        self.clickhouse.credentials.chmod(0o644)
        self.addCleanup(self.clickhouse.credentials.chmod, 0o600)
        collector = self.collector("--create")
        self.assertGreater(collector.metric("store_bytes"), 0)
        self.clickhouse.kill()
        wait_until(lambda: collector.metric("ready") == 0, "the notice of the outage without any package")
        self.assertFalse(collector.is_ready())
        for figure in ("versions", "crashes", "live"):
            self.assertIn("cannot use the store", self.get(collector, figure)["error"])
        self.clickhouse.start()
        wait_until(lambda: "packages again, after" in collector.log.read_text(), "the recovery")
        self.assertEqual(collector.metric("ready"), 1)
        self.assertGreater(collector.metric("store_bytes"), 0)
        log = collector.log.read_text()
        for line in ("the store takes no packages: cannot use the store",
                     "cannot answer a reader: cannot use the store", "other users of this machine may open"):
            self.assertEqual(log.count(line), 1, log)

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
