"""A collector with a store, and a browser that reads its page."""

import base64
import contextlib
import http.client
import sqlite3
import ssl
import subprocess
import tempfile
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

ROOT = Path(__file__).resolve().parent.parent.parent
COLLECTOR = ROOT / "build" / "release" / "bin" / "qel-collector"
PATIENCE = 20


def log_in(user, secret):
    return {"Authorization": "Basic " + base64.b64encode(f"{user}:{secret}".encode()).decode()}


SENDER = log_in("customers", "sender-secret")
SECRET = "reader-secret"


class Site:
    """A collector on free ports of this machine, with a directory for its files."""

    def __init__(self):
        self.files = tempfile.TemporaryDirectory()
        directory = Path(self.files.name)
        self.store = directory / "store.db"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                        "-days", "2", "-subj", "/CN=localhost", "-keyout", "key.pem", "-out", "certificate.pem"],
                       check=True, stderr=subprocess.DEVNULL, cwd=directory)
        for name, text in {"users": "customers:sender-secret\n", "readers": f"reader:{SECRET}\n"}.items():
            (directory / name).touch(mode=0o600)
            (directory / name).write_text(text)
        with open(directory / "collector.log", "w") as log:
            self.process = subprocess.Popen(
                [COLLECTOR, "--listen", "127.0.0.1:0", "--admin", "127.0.0.1:0", "--store", self.store, "--certificate",
                 "certificate.pem", "--key", "key.pem", "--credentials", "users", "--readers", "readers"],
                stdout=subprocess.PIPE, stderr=log, text=True, cwd=directory)
        lines = sorted(self.process.stdout.readline() for _ in range(2))
        self.admin, self.listener = (line.split()[-1] for line in lines)

    def close(self):
        self.process.terminate()
        self.process.wait(60)
        self.files.cleanup()

    def send(self, *packages):
        """Returns when the collector has confirmed all of them."""
        connection = http.client.HTTPSConnection(self.listener, context=ssl._create_unverified_context(), timeout=60)
        with contextlib.closing(connection):
            for package in packages:
                connection.request("POST", "/authenticated/customer-care.php", package,
                                   {**SENDER, "Content-Type": "application/json; charset=utf-8"})
                response = connection.getresponse()
                response.read()
                if response.status != 204:
                    raise RuntimeError(f"a package was answered with {response.status}")

    def answer(self, path, headers):
        """Status and body of an answer of the page."""
        connection = http.client.HTTPSConnection(self.admin, context=ssl._create_unverified_context(), timeout=60)
        with contextlib.closing(connection):
            connection.request("GET", path, headers=headers)
            response = connection.getresponse()
            return response.status, response.read().decode()

    def query(self, sql, *values):
        with contextlib.closing(sqlite3.connect(f"file:{self.store}?mode=ro", uri=True)) as connection:
            return connection.execute(sql, values).fetchall()


class Browser:
    """Chromium without a window."""

    def __init__(self, site, secret=SECRET):
        options = webdriver.ChromeOptions()
        for argument in ("--headless=new", "--no-sandbox", "--ignore-certificate-errors", "--disable-gpu"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
        self.origin = f"https://{site.admin}"
        # Chromium keeps the secret for the later pages.
        self.driver.get(f"https://reader:{secret}@{site.admin}/refused")

    def open(self, path):
        self.driver.get(self.origin + path)

    def emulate(self, width, scheme="light"):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                    {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                    {"features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def wait(self, condition, what):
        return WebDriverWait(self.driver, PATIENCE, 0.05).until(lambda _: condition(), f"waited for {what}")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def texts(self, selector):
        """What the elements say, those included that are outside of the window."""
        script = "return [...document.querySelectorAll(arguments[0])].map((each) => each.innerText.trim())"
        return self.run(script, selector)

    def wait_until_loaded(self):
        """Waits until no figure is loading, and the status says something."""
        self.wait(lambda: not self.run("return document.querySelector('[aria-busy], .skeleton')")
                  and self.texts("#status") not in ([""], ["Loading …"]), "the page's figures")

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def click(self, selector):
        self.find(selector).click()

    def complaints(self):
        return [entry["message"] for entry in self.driver.get_log("browser") if entry["level"] != "INFO"]

    def close(self):
        self.driver.quit()
