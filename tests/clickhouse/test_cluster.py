"""Collectors that store packages in replicas of ClickHouse."""

import contextlib
import threading

from case import ClickHouseTest, event, package
from servers import PROGRAM, ROOT, ClickHouse, Sender, ZooKeeper, free_ports


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
        for collector in collectors:
            self.assertEqual(self.get(collector, "versions")["rows"], [["", 1, 4]])
            for figure in self.FIGURES:
                self.assertTrue(self.get(collector, figure).get("rows") or figure in ("crashes", "memory", "refused"))
            for figure in ("events-by-day", "crashes", "memory", "sessions", "live"):
                self.assertEqual(self.get(collector, figure, version="none").get("rows"), [])
        second.kill()
        last = event(9999)
        self.assertEqual(self.send(collectors[0], package(last)), 503)
        second.start()
        with contextlib.closing(Sender(self.site, collectors[0].port)) as sender:
            sender.send_until_stored(package(last))
        for replica in self.replicas:
            self.expect_each_once([*stored, last], replica)
            self.expect_summary(replica)
        # Rows of the last insert with a quorum are deleted only after the next one.
        self.assertEqual(self.send(collectors[0], package(event(0, InstallationId="I-2"))), 204)
        erased = self.site.output_of(PROGRAM, "erase", "--yes", "--installation", "I-1", "--store",
                                     first.address("analytics"), "--store-credentials", first.credentials)
        self.assertEqual(erased, (f"events {len(stored) + 1}, environments 0, refused texts 0\n"
                                  f"erased {len(stored) + 1} rows\n", 0))
