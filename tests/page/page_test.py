#!/usr/bin/python3
"""Reads the collector's page in Chromium, on a store of a million rows.

Needs Debian's chromium-driver and python3-selenium, and qel-collector built with the preset "release".
"""

import datetime
import json
import time
import unittest
import urllib.parse

from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

import rows
from page_site import SENDER, Browser, Site, log_in

ROWS = 1_000_000
PAGES = ["/", "/live", "/sessions", "/refused", "/system"]
HOSTILE = ["<script>window.hacked = 1</script>", "<img src=x onerror='window.hacked = 1'>", "'; DROP TABLE events; --",
           "=HYPERLINK(\"http://example.org\")", "\u202egnp.exe\u202c", "bell \u0007 escape \u001b[31m null \u0000",
           "مرحبا بالعالم", "x" * 3000, "{{constructor.constructor('window.hacked = 1')()}}",
           "Z\u0351\u036b\u0343" * 40]
NOW = datetime.datetime.now(datetime.timezone.utc)


def day(before=0):
    return (NOW - datetime.timedelta(days=before)).strftime("%Y-%m-%d")


def event(session, name, **members):
    return {"Category": "Command", "Subcategory": "Started", "Event": name, "InstallationId": "QEL-1",
            "SessionId": session, "Timestamp": NOW.strftime("%Y-%m-%dT%H:%M:%S.000Z"), **members}


def hostile_packages():
    """A session for each text, which is in each of its members. Each session ends with a crash."""
    events, environments = [], []
    for number, text in enumerate(HOSTILE):
        session = f"{number:08X}{text}"
        common = {"InstallationId": text, "SessionId": session, "Timestamp": event("", "")["Timestamp"]}
        environments.append({**common, "CurrentActiveApplication": {"Name": text, "Version": text}})
        events += [event(session, text, **common, Details={text: text}),
                   event(session, text, **common, Category=text, Subcategory=text),
                   event(session, text, **common, Category="Application", Subcategory="Crashed",
                         Details={"Exception Code": text})]
    refused = [f"no package {text}".encode() for text in HOSTILE] + [b"no package \xff\xfe\x80"]
    return [rows.package_of("environments", map(json.dumps, environments)),
            rows.package_of("events", map(json.dumps, events)), *refused]


def setUpModule():
    global site, browser
    site = Site()
    unittest.addModuleCleanup(site.close)
    site.send(*rows.packages(ROWS), *hostile_packages())
    browser = Browser(site)
    unittest.addModuleCleanup(browser.close)


class PageTest(unittest.TestCase):
    def setUp(self):
        browser.emulate(1280)
        browser.complaints()

    def assert_quiet(self, of):
        self.assertEqual(browser.complaints(), [], of)
        self.assertIsNone(browser.run("return window.hacked ?? null"), of)

    def open(self, path):
        browser.open(path)
        browser.wait_until_loaded()


class Figures(PageTest):
    """The figures are those of the rows that were sent."""

    def expected(self, first, last, version, installation):
        """The totals from the rows themselves, without the collector's summaries."""
        of_version = {session for session, text in site.query("SELECT session, text FROM environments")
                      if not version or json.loads(text)["CurrentActiveApplication"]["Version"] == version}
        totals = {"events": 0, "sessions": set(), "crashes": 0}
        active, commands = {}, {}
        for session, install, time_, category, subcategory, name, count in site.query(
                "SELECT session, installation, time, category, subcategory, event, count FROM events WHERE time >= ?"
                " AND time < ? AND (? = '' OR installation = ?)", first, last + "~", installation, installation):
            if session not in of_version:
                continue
            totals["events"] += count
            totals["sessions"].add(session)
            totals["crashes"] += category == "Application" and subcategory == "Crashed"
            active.setdefault(time_[:10], set()).add(install)
            if category == "Command" and subcategory == "Started":
                commands[name] = commands.get(name, 0) + count
        most = max(commands, key=commands.get)
        sessions = len(totals["sessions"])
        shown = [totals["events"], sessions, max(map(len, active.values())), totals["crashes"]]
        rate = f"{round(1000 * totals['crashes'] / sessions, 1):.3g}"
        return [f"{value:,}" for value in shown] + [rate], [most, f"{commands[most]:,}"]

    def test_figures_agree_with_the_rows(self):
        busiest = site.query("SELECT installation FROM events GROUP BY 1 ORDER BY count(*) DESC LIMIT 1")[0][0]
        for query, (first, last, version, installation) in {
                "?days=90": (day(89), day(), "", ""),
                f"?from={day(40)}&until={day(20)}&version=27.1": (day(40), day(20), "27.1", ""),
                f"?days=all&installation={busiest}": ("0", "9", "", busiest)}.items():
            with self.subTest(query):
                self.open("/" + query)
                totals, command = self.expected(first, last, version, installation)
                self.assertEqual(browser.texts("[data-total]"), totals)
                self.assertEqual(browser.texts("[data-figure=commands] tbody tr:first-child > *")[:2], command)
                self.assert_quiet(query)

    def test_first_paint(self):
        """The quickest of three, because other programs delay the browser, too."""
        times = []
        for _ in range(3):
            self.open("/")
            times.append(browser.run("return performance.getEntriesByName('first-contentful-paint')[0].startTime"))
        self.assertLess(min(times), 1000)

    def test_values_of_a_chart_as_a_table(self):
        self.open("/?days=7")
        browser.run("document.querySelector('[data-figure=installations-by-day] details').open = true")
        browser.wait(lambda: browser.texts("[data-figure=installations-by-day] tbody tr"), "the table")
        expected = site.query("SELECT substr(time, 1, 10), count(DISTINCT installation) FROM events WHERE time >= ?"
                              " GROUP BY 1 ORDER BY 1", day(6))
        shown = browser.texts("[data-figure=installations-by-day] tbody td")
        self.assertEqual(shown, [str(number) for _, number in expected])

    def test_version_with_most_crashes_leads_to_a_session(self):
        self.open("/?days=90")
        cells = browser.texts("[data-figure=crashes] tbody tr:first-child > *")
        self.assertEqual(cells[:3], ["27.1", "0xC0000005", "Insert branch piece"])
        browser.click("[data-figure=crashes] tbody tr:first-child td:last-child a")
        browser.wait(lambda: "/session/" in browser.driver.current_url, "the session's page")
        report = browser.texts("body")[0]
        self.assertIn(cells[5], report)
        self.assertIn("Insert branch piece", report)
        self.assert_quiet("the report")


class Lists(PageTest):
    def test_search_for_sessions(self):
        installation, count = site.query("SELECT installation, count(DISTINCT session) FROM events GROUP BY 1"
                                         " HAVING count(DISTINCT session) < 200 ORDER BY 2 DESC LIMIT 1")[0]
        self.open("/sessions")
        self.assertEqual(len(browser.texts("tbody tr")), 200)
        browser.find("[name=installation]").send_keys(installation, Keys.ENTER)
        browser.wait(lambda: browser.texts("#status") == [f"{count} sessions"], "the sessions of the installation")
        self.assertIn(f"installation={installation}", browser.driver.current_url)
        crashed = site.query("SELECT count(*) FROM events WHERE subcategory = 'Crashed' AND category = 'Application'"
                             " AND installation = ?", installation)[0][0]
        Select(browser.find("[name=end]")).select_by_value("crashed")
        browser.wait(lambda: browser.texts("#status")[0].split()[0] == str(crashed), "the crashed ones")
        self.assertEqual(browser.texts("tbody td:last-child"), ["✕ Crashed"] * crashed)
        browser.driver.back()
        browser.wait(lambda: browser.texts("#status") == [f"{count} sessions"], "the earlier filters")
        self.assert_quiet("sessions")

    def test_refused_texts_show_their_bytes(self):
        self.open("/refused")
        texts = browser.texts("pre.refused")
        self.assertEqual(len(texts), len(HOSTILE) + 1)
        for text in (HOSTILE[0], "bell U+0007 escape U+001B[31m null U+0000", "U+202Egnp.exeU+202C", "\ufffd" * 3):
            self.assertIn("no package " + text, texts)
        self.assert_quiet("refused")


class Live(PageTest):
    def test_event_arrives_within_two_seconds(self):
        self.open("/live")
        name = f"arrives {time.time()}"
        site.send(rows.package_of("events", [json.dumps(event("LIVE", name))]))
        answered = time.monotonic()
        browser.wait(lambda: name in browser.texts("#events tr:first-child button")[:1], "the event")
        self.assertLess(time.monotonic() - answered, 2)
        browser.find("#events tr:first-child button").send_keys(Keys.ENTER)
        self.assertEqual(json.loads(browser.texts("#events pre")[0])["Event"], name)
        self.assertEqual(browser.texts("#pause"), ["Continue"])
        site.send(rows.package_of("events", [json.dumps(event("LIVE", "while paused"))]))
        time.sleep(1.5)
        self.assertNotIn("while paused", browser.texts("#events button"))
        browser.click("#pause")
        browser.wait(lambda: "while paused" in browser.texts("#events button"), "the event after the pause")
        self.assert_quiet("live")


class AllPages(PageTest):
    def test_layout_and_console(self):
        """The hostile texts are on every page, because they arrived last."""
        report = "/session/" + urllib.parse.quote(f"00000001{HOSTILE[1]}", safe="")
        for path in [*PAGES, "/?days=all", report]:
            for width, scheme in [(360, "light"), (2560, "dark")]:
                with self.subTest(path=path, width=width):
                    browser.emulate(width, scheme)
                    browser.open(path)
                    if path != report:
                        browser.wait_until_loaded()
                    wide = browser.run("return document.documentElement.scrollWidth - window.innerWidth")
                    self.assertLessEqual(wide, 0)
                    self.assert_quiet(path)

    def test_keyboard(self):
        self.open("/")
        focused = []
        for _ in range(16):
            browser.driver.switch_to.active_element.send_keys(Keys.TAB)
            focused.append(browser.run("""const each = document.activeElement;
                const style = getComputedStyle(each);
                const hasOutline = style.outlineStyle !== 'none' && parseFloat(style.outlineWidth) >= 2;
                return [each.innerText || each.name, hasOutline]"""))
        names = [name for name, _ in focused]
        self.assertEqual(names[:8], ["Skip to the content", "Overview", "Live", "Sessions", "Refused", "System",
                                     "Refresh", "7 days"])
        self.assertEqual([name for name, is_visible in focused if not is_visible], [])
        browser.run("document.querySelector('button[data-days=\"7\"]').focus()")
        browser.driver.switch_to.active_element.send_keys(Keys.ENTER)
        browser.wait_until_loaded()
        self.assertTrue(browser.driver.current_url.endswith("/?days=7"))
        browser.driver.back()
        browser.wait(lambda: browser.texts(".presets [aria-pressed=true]") == ["30 days"], "the earlier range")


class States(PageTest):
    def test_empty_range_offers_the_days_of_the_store(self):
        self.open("/?from=2001-01-01&until=2001-01-31")
        self.assertEqual(browser.texts("[data-figure=events-by-day] .state"), ["No events in this range."])
        browser.click("#notice button")
        browser.wait_until_loaded()
        self.assertEqual(browser.texts("[data-figure=events-by-day] .state"), [])
        self.assert_quiet("an empty range")

    def test_wrong_range_is_named(self):
        self.open("/?from=2026-02-01&until=2026-01-01")
        self.assertEqual(browser.texts("#status"), ["7 of 7 figures could not be read."])
        self.assertIn("until is before from", browser.texts("#notice")[0])
        self.assertEqual(browser.texts(".state"), ["Not read."] * 7)

    def test_failed_figure_can_be_tried_again(self):
        driver = browser.driver
        driver.execute_cdp_cmd("Network.enable", {})
        driver.execute_cdp_cmd("Network.setBlockedURLs", {"urls": ["*/api/crashes*"]})
        self.open("/")
        self.assertIn("The collector does not answer.", browser.texts("[data-figure=crashes] .state")[0])
        self.assertEqual(browser.texts("#status"), ["1 of 7 figures could not be read."])
        driver.execute_cdp_cmd("Network.setBlockedURLs", {"urls": []})
        browser.click("[data-figure=crashes] .state button")
        browser.wait(lambda: browser.texts("[data-figure=crashes] tbody tr"), "the crashes")


class WrongLogIn(PageTest):
    """Runs last, because the collector limits the failed log-ins of an address."""

    def test_only_readers_get_data(self):
        statuses = set()
        for path in [*PAGES, "/api/events-by-day", "/api/crashes.csv", "/static/page.css", "/session/1"]:
            for name, headers in {"nobody": {}, "wrong secret": log_in("reader", "wrong"), "sender": SENDER}.items():
                with self.subTest(path=path, who=name):
                    status, body = site.answer(path, headers)
                    statuses.add(status)
                    self.assertLess(len(body), 500)
        self.assertEqual(statuses, {401, 429})

    def test_with_a_wrong_secret_the_browser_shows_no_page(self):
        other = Browser(site, "wrong")
        self.addCleanup(other.close)
        other.open("/")
        self.assertEqual(other.texts("main"), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
