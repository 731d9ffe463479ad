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
EVENT = '"Borrowed"'


def openssl(*arguments):
    subprocess.run(["openssl", *arguments], check=True, capture_output=True)


def make_credentials(work):
    new_key = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2"]
    openssl("req", "-x509", *new_key, "-subj", "/CN=Test CA", "-keyout", work / "ca.key", "-out", work / "ca.pem")
    openssl("req", "-x509", "-CA", work / "ca.pem", "-CAkey", work / "ca.key", *new_key, "-subj", f"/CN={server_name}",
            "-addext", f"subjectAltName=DNS:{server_name}", "-addext", "basicConstraints=critical,CA:FALSE",
            "-keyout", work / "server.key", "-out", work / "server.pem")
    (work / "secret").write_text("kept quiet\n")
    (work / "credentials").write_text("consumer:kept quiet\n")
    for secret in work.iterdir():
        secret.chmod(0o600)


def play_session(work, address):
    """Returns what the consumer said on standard error."""
    command = [consumer, work / "data", server_name, address, work / "ca.pem", work / "secret"]
    session = subprocess.run(command, stderr=subprocess.PIPE, text=True, timeout=60, check=False)
    if session.returncode != 0:
        sys.exit(f"the consumer ended with {session.returncode}: {session.stderr}")
    return session.stderr


def rows_with_event(file, query):
    with sqlite3.connect(f"{file.as_uri()}?mode=ro", uri=True) as database:
        return sum(EVENT in text for (text,) in database.execute(query))


def main(work):
    make_credentials(work)
    (work / "data").mkdir()
    said = play_session(work, "127.0.0.1:1")
    if log_prefix and log_prefix[0] not in said:
        sys.exit(f"nothing came through the consumer's own log, but: {said}")
    kept = rows_with_event(work / "data" / "ItemDatabase.db", "SELECT json FROM Items")

    command = [collector, "--listen", "127.0.0.1:0", "--certificate", work / "server.pem", "--key",
               work / "server.key", "--credentials", work / "credentials", "--store", work / "received.db"]
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as server:
        try:
            said = play_session(work, server.stdout.readline().split()[-1])
        finally:
            server.terminate()
    received = rows_with_event(work / "received.db", "SELECT text FROM events")
    print(f"kept without a server: {kept}; received: {received}\n{said}")
    return 0 if (kept, received) == (1, 2) else 1


with tempfile.TemporaryDirectory() as directory:
    sys.exit(main(pathlib.Path(directory)))
