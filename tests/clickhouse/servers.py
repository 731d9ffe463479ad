"""The servers of the tests, all on loopback: ClickHouse, ZooKeeper, collectors, HAProxy, and a sender of packages."""

import base64
import contextlib
import http.client
import json
import os
import re
import signal
import socket
import ssl
import subprocess
import time
import urllib.error
import urllib.request
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
PROGRAM = Path(os.environ.get("QEL_PROGRAMS", ROOT / "build" / "release" / "bin")) / "qel-collector"
NAME = "localhost"
PASSWORD = "a 'quoted' \"pass:word\" $y$"

CONFIG = """<yandex>
  <logger><level>warning</level><log>{directory}/server.log</log><errorlog>{directory}/error.log</errorlog></logger>
  <http_port>{http}</http_port><tcp_port>{tcp}</tcp_port>
  <interserver_http_port>{interserver}</interserver_http_port><interserver_http_host>127.0.0.1</interserver_http_host>
  <listen_host>127.0.0.1</listen_host>
  <path>{directory}/data/</path><tmp_path>{directory}/tmp/</tmp_path>
  <users_config>{directory}/users.xml</users_config>
  <default_profile>default</default_profile><default_database>default</default_database>
  <mark_cache_size>100000000</mark_cache_size><timezone>Asia/Tokyo</timezone>
  {more}
</yandex>
"""

USERS = """<yandex>
  <profiles><default>{settings}</default></profiles><quotas><default/></quotas>
  <users>{users}</users>
</yandex>
"""

USER = """<{name}><password>{password}</password><networks><ip>127.0.0.1</ip></networks>
  <profile>default</profile><quota>default</quota></{name}>"""


def free_ports(count):
    with contextlib.ExitStack() as stack:
        listeners = [stack.enter_context(socket.create_server(("127.0.0.1", 0))) for _ in range(count)]
        return [listener.getsockname()[1] for listener in listeners]


def wait_until(condition, what, seconds=30):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError(f"{what} did not happen within {seconds} s")
        time.sleep(0.05)


def answers(port):
    with socket.socket() as connection:
        return connection.connect_ex(("127.0.0.1", port)) == 0


class Server:
    """A process that is ended with the test."""

    def __init__(self, command, log, environment=None):
        self.log = Path(log)
        with self.log.open("a") as output:
            self.process = subprocess.Popen([str(part) for part in command], stdout=output, stderr=output,
                                            env={**os.environ, **(environment or {})})

    def wait_for(self, port):
        wait_until(lambda: answers(port) or self.process.poll() is not None, f"{self.log}: an answer")
        if self.process.poll() is not None:
            raise RuntimeError(self.log.read_text()[-2000:])

    def kill(self, number=signal.SIGKILL):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGCONT)
            self.process.send_signal(number)
        return self.process.wait(30)


class ClickHouse:
    """A ClickHouse server that can be killed and started again. `wrapper` is put before its command."""

    def __init__(self, directory, more="", settings="", ports=None, wrapper=()):
        self.directory = Path(directory)
        self.directory.mkdir(parents=True, exist_ok=True)
        self.port, self.tcp, self.interserver = ports or free_ports(3)
        self.wrapper = wrapper
        (self.directory / "config.xml").write_text(CONFIG.format(
            directory=self.directory, http=self.port, tcp=self.tcp, interserver=self.interserver, more=more))
        escaped = PASSWORD.replace('"', "&quot;")
        users = USER.format(name="default", password="") + USER.format(name="collector", password=escaped)
        (self.directory / "users.xml").write_text(USERS.format(settings=settings, users=users))
        self.credentials = self.directory / "credentials"
        self.credentials.touch(0o600)
        self.credentials.write_text(f"collector:{PASSWORD}\n")
        self.start()

    def start(self):
        self.server = Server([*self.wrapper, "clickhouse-server", f"--config-file={self.directory}/config.xml"],
                             self.directory / "output")
        self.server.wait_for(self.port)

    def kill(self):
        self.server.kill()

    def address(self, database):
        return f"clickhouse://127.0.0.1:{self.port}/{database}"

    def query(self, statement, database="default", settings=""):
        url = f"http://127.0.0.1:{self.port}/?database={database}&{settings}"
        try:
            with urllib.request.urlopen(url, statement.encode(), timeout=60) as answer:
                return answer.read().decode()
        except urllib.error.HTTPError as error:
            raise RuntimeError(f"{statement}: {error.read().decode()}") from None

    def rows(self, statement, database):
        """The values of each row; numbers of 64 bits are strings."""
        return json.loads(self.query(statement + " FORMAT JSONCompact", database))["data"]

    def run_script(self, file, database):
        for statement in re.split(r";$", Path(file).read_text(), flags=re.M):
            if statement.strip():
                self.query(statement, database)


class ZooKeeper:
    def __init__(self, directory):
        self.directory = Path(directory)
        self.directory.mkdir(parents=True)
        (self.port,) = free_ports(1)
        (self.directory / "zoo.cfg").write_text(
            f"tickTime=500\ndataDir={self.directory}\nclientPort={self.port}\nclientPortAddress=127.0.0.1\n"
            "admin.enableServer=false\n")
        (self.directory / "log4j.properties").write_text("log4j.rootLogger=OFF\n")
        self.server = Server(["java", "-cp", f"{self.directory}:/usr/share/java/zookeeper.jar",
                              "org.apache.zookeeper.server.quorum.QuorumPeerMain", self.directory / "zoo.cfg"],
                             self.directory / "output")
        self.server.wait_for(self.port)
        wait_until(self.is_serving, "ZooKeeper's start")

    def is_serving(self):
        with socket.create_connection(("127.0.0.1", self.port), 5) as connection:
            connection.sendall(b"srvr")
            return b"Mode" in connection.recv(4096)

    def kill(self):
        self.server.kill()


class Site:
    """A directory with a certificate and users, in which collectors run."""

    def __init__(self, directory):
        self.directory = Path(directory)
        self.directory.mkdir(parents=True, exist_ok=True)
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                        "-days", "2", "-subj", f"/CN={NAME}", "-addext", f"subjectAltName=DNS:{NAME}",
                        "-keyout", "key.pem", "-out", "certificate.pem"],
                       check=True, stderr=subprocess.DEVNULL, cwd=self.directory)
        users = self.directory / "users"
        users.touch(0o600)
        users.write_text("ada:secret\nbob:secret\n")
        self.readers = self.directory / "readers"
        self.readers.touch(0o600)
        self.readers.write_text("rita:secret\n")

    def command(self, store, *options, port=0):
        return [PROGRAM, "--listen", f"127.0.0.1:{port}", "--certificate", self.directory / "certificate.pem",
                "--key", self.directory / "key.pem", "--credentials", self.directory / "users", "--store", store,
                *options]

    def output_of(self, *command):
        """What a command that ends by itself prints, and its status."""
        result = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                text=True, timeout=60)
        return result.stdout, result.returncode


class Collector:
    """A collector with an admin listener, which can be killed and started again at its ports."""

    def __init__(self, site, store, *options, environment=None):
        self.environment = environment
        self.port, self.admin = free_ports(2)
        self.log = site.directory / f"collector-{self.port}.log"
        self.command = site.command(store, "--admin", f"127.0.0.1:{self.admin}", *options, port=self.port)
        self.start()

    def start(self):
        self.server = Server(self.command, self.log, self.environment)
        self.server.wait_for(self.port)

    def kill(self, number=signal.SIGKILL):
        return self.server.kill(number)

    def is_ready(self):
        try:
            with urllib.request.urlopen(f"http://127.0.0.1:{self.admin}/ready", timeout=10) as answer:
                return answer.status == 200
        except OSError:
            return False

    def metric(self, name):
        with urllib.request.urlopen(f"http://127.0.0.1:{self.admin}/metrics", timeout=10) as answer:
            return float(re.search(rf"^qel_collector_{name} (.*)", answer.read().decode(), re.M)[1])


class HaProxy:
    """HAProxy before two collectors, with the configuration that is deployed."""

    def __init__(self, directory, collectors):
        (self.port,) = free_ports(1)
        text = (ROOT / "deploy" / "collector" / "haproxy.cfg").read_text()
        text = re.sub(r"maxconn .*", "maxconn 100", text)
        text = re.sub(r"  (user|group) .*\n", "", text)
        text = text.replace("bind :443", f"bind 127.0.0.1:{self.port}").replace("balance source", "balance roundrobin")
        for address, collector in zip(("192.0.2.11:8443", "192.0.2.12:8443"), collectors):
            text = text.replace(address, f"127.0.0.1:{collector.port} port {collector.admin}")
        (Path(directory) / "haproxy.cfg").write_text(text)
        self.server = Server(["haproxy", "-db", "-f", Path(directory) / "haproxy.cfg"], Path(directory) / "haproxy.log",
                             {"PATH": os.environ["PATH"] + ":/usr/sbin"})
        self.server.wait_for(self.port)

    def kill(self):
        self.server.kill()


class Sender:
    """A client that keeps its connection, as long as it is answered with 204."""

    def __init__(self, site, port, user="ada"):
        self.port = port
        self.tls = ssl.create_default_context(cafile=site.directory / "certificate.pem")
        self.user = user
        self.connection = None

    def send(self, body, seconds=30):
        """Returns the status of the answer; None without one."""
        try:
            if self.connection is None:
                plain = socket.create_connection(("127.0.0.1", self.port), seconds)
                self.connection = http.client.HTTPSConnection(NAME, timeout=seconds)
                self.connection.sock = self.tls.wrap_socket(plain, server_hostname=NAME)
            headers = {"Content-Type": "application/json", "Authorization": self.authorization()}
            self.connection.request("POST", "/authenticated/customer-care.php", body.encode(), headers)
            answer = self.connection.getresponse()
            answer.read()
            status = answer.status
        except (OSError, http.client.HTTPException):
            status = None
        if status != 204:
            self.close()
        return status

    def send_until_stored(self, body, stop=lambda: False):
        while not stop():
            if self.send(body) == 204:
                return True
            time.sleep(0.1)
        return False

    def authorization(self):
        return "Basic " + base64.b64encode(f"{self.user}:secret".encode()).decode()

    def close(self):
        if self.connection is not None:
            self.connection.close()
            self.connection = None
