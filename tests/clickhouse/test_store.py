"""Collectors that store packages in ClickHouse."""

import itertools
import json
import random
import signal
import sqlite3
import threading
import time

from case import ClickHouseTest, event, package
from servers import PROGRAM, ClickHouse, Collector, HaProxy, Sender, free_ports, wait_until


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
        self.expect_summary()

    def test_uses_tls_and_trusts_no_unknown_certificate(self):
        (port,) = free_ports(1)
        files = self.site.directory
        encrypted = ClickHouse(self.directory / "encrypted", f"""<https_port>{port}</https_port><openSSL><server>
          <certificateFile>{files}/certificate.pem</certificateFile><privateKeyFile>{files}/key.pem</privateKeyFile>
          <verificationMode>none</verificationMode><loadDefaultCAFile>false</loadDefaultCAFile>
          </server></openSSL>""")
        self.addCleanup(encrypted.kill)
        store = f"clickhouses://localhost:{port}/{self.database}"
        options = ("--store-credentials", encrypted.credentials, "--create")
        output, status = self.site.output_of(*self.site.command(store, *options))
        self.assertRegex(output, f"cannot use the store {store}: SSL certificate problem: self.signed certificate")
        self.assertEqual(status, 1)
        collector = Collector(self.site, store, *options, environment={"SSL_CERT_FILE": f"{files}/certificate.pem"})
        self.addCleanup(collector.kill, signal.SIGTERM)
        self.assertEqual(self.send(collector, package(event(1))), 204)
        self.expect_each_once([event(1)], encrypted)

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
        erase = (PROGRAM, "erase", "--yes", "--store",
                 self.clickhouse.address(self.database), "--store-credentials", self.clickhouse.credentials)
        time.sleep(1.1)  # rows of the second in which the erasure begins may stay
        self.assertEqual(self.site.output_of(*erase, "--installation", "o'brien"),
                         ("events 1, environments 1, refused texts 1\nerased 3 rows\n", 0))
        self.assertEqual(self.site.output_of(*erase, "--user", "bob"),
                         ("events 1, environments 0, refused texts 1\nerased 2 rows\n", 0))
        self.expect_each_once([event(0)])
        self.assertEqual(self.rows("SELECT count() FROM refused"), [["0"]])
        self.assertEqual(self.rows("SELECT DISTINCT installation, user FROM session_days"), [["I-1", "ada"]])

    def test_deletes_rows_after_their_retention(self):
        self.collector("--create", "--batch-time", "200").kill(signal.SIGTERM)
        for text, received in (("old", "now() - 3 * 86400"), ("new", "now()")):
            self.clickhouse.query(f"INSERT INTO events (text, received) SELECT '{text}', {received}", self.database)
        self.collector("--retention", "2")
        wait_until(lambda: self.rows("SELECT text FROM events") == [["new"]] and
                   self.rows("SELECT received_day = toDate(now(), 'UTC') FROM session_days") == [[1]], "the deletion")

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
        command = (PROGRAM, "import", store, "--store", self.clickhouse.address(self.database),
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
