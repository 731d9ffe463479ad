#!/usr/bin/env python3
"""Checks that each SQL query of docs/collector.md finds something in the store of a collector. Takes the repository's
root and the collector."""
import base64
import http.client
import json
import pathlib
import re
import sqlite3
import ssl
import subprocess
import sys
import tempfile
import time

root, collector = map(pathlib.Path, sys.argv[1:])


def event(category, subcategory, name):
    now = time.strftime("%Y-%m-%dT%H:%M:%S.000Z", time.gmtime())
    return {"Category": category, "Subcategory": subcategory, "Event": name, "InstallationId": "first",
            "SessionId": "A", "Timestamp": now, "Details": {"Line Number": "7"}}


events = [event("Command", "Started", "Copy"), event("Application", "Crashed", "Access violation"),
          event("Application", "Asserted", "Floor plan"), 7]
environment = {"InstallationId": "first", "SessionId": "A", "CurrentActiveApplication": {"Version": "2027.1"}}
package = json.dumps({"version": "3.1", "environments": [environment], "events": events})


def send(address, authority):
    tls = ssl.create_default_context(cafile=authority)
    connection = http.client.HTTPSConnection(address, context=tls, timeout=20)
    connection.request("POST", "/authenticated/customer-care.php", package,
                       {"Content-Type": "application/json",
                        "Authorization": "Basic " + base64.b64encode(b"user:secret").decode()})
    return connection.getresponse().status


with tempfile.TemporaryDirectory() as name:
    directory = pathlib.Path(name)
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj",
                    "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", "key.pem", "-out", "cert.pem"],
                   cwd=directory, check=True, stderr=subprocess.DEVNULL)
    (directory / "users").write_text("user:secret\n")
    with subprocess.Popen([collector, "--listen", "127.0.0.1:0", "--certificate", "cert.pem", "--key", "key.pem",
                           "--credentials", "users", "--store", "store.db"],
                          cwd=directory, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True) as server:
        try:
            status = send(server.stdout.readline().split()[-1], directory / "cert.pem")
        finally:
            server.terminate()
    if status != 204:
        sys.exit(f"the collector answered {status}")

    page = (root / "docs" / "collector.md").read_text(encoding="utf-8")
    queries = re.findall(r"^```sql\n(.*?)^```", page, re.MULTILINE | re.DOTALL)
    store = sqlite3.connect(directory / "store.db")
    empty = [query for query in queries if not store.execute(query, {"installation": "first"}).fetchall()]
    for query in empty:
        print(f"This query finds nothing:\n{query}")
    print(f"{len(queries)} queries")
    sys.exit(1 if empty or len(queries) < 10 else 0)
