#!/usr/bin/env python3
"""Lets the consumer play two sessions: one while there is no server, whose event must be kept, and one with a collector,
which must receive both events. Takes the consumer, the collector, the server's name and, where one is to be seen on
standard error, a text that the consumer's log begins with."""
import pathlib
import sqlite3
import subprocess
import sys
import tempfile

consumer, collector, server_name, *log_prefix = sys.argv[1:]


def main(work):
    (work / "data").mkdir()
    (work / "secret").write_text("kept quiet\n")
    (work / "credentials").write_text("consumer:kept quiet\n")
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                    "-subj", f"/CN={server_name}", "-addext", f"subjectAltName=DNS:{server_name}",
                    "-keyout", work / "key", "-out", work / "certificate"], check=True, capture_output=True)
    for secret in ("secret", "credentials", "key"):
        (work / secret).chmod(0o600)

    def play_session(address):
        command = [consumer, work / "data", server_name, address, work / "certificate", work / "secret"]
        return subprocess.run(command, stderr=subprocess.PIPE, text=True, timeout=60, check=True).stderr

    said = play_session("127.0.0.1:1")
    command = [collector, "--listen", "127.0.0.1:0", "--certificate", work / "certificate", "--key", work / "key",
               "--credentials", work / "credentials", "--store", work / "received.db"]
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as server:
        try:
            said += play_session(server.stdout.readline().split()[-1])
        finally:
            server.terminate()
    query = "SELECT count(*) FROM events WHERE text LIKE '%\"Borrowed\"%'"
    received = sqlite3.connect(work / "received.db").execute(query).fetchone()[0]
    print(f"received: {received}\n{said}")
    return 0 if received == 2 and all(prefix in said for prefix in log_prefix) else 1


with tempfile.TemporaryDirectory() as directory:
    sys.exit(main(pathlib.Path(directory)))
