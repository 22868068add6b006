#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Debian's chromium, headless, loads the live page of a simulated sensor. After the first
refresh its DOM must hold one table row per network, and a network named like markup
must show as that text and create no element.
Usage: browser_check.py SENSOR-COMMAND..."""
import subprocess
import urllib.parse
import tempfile
from html.parser import HTMLParser

from sensor_harness import Sensor, check, require, sensor_command

HOSTILE = "<img src=x onerror=alert(1)>"


class PageReader(HTMLParser):
    def __init__(self):
        super().__init__()
        self.rows = []          # bssid of each table row, in order
        self.cells = []         # text of every table cell
        self.tags = []          # every start tag, for the elements a name could sneak in
        self.cycle = None
        self._in_cell = False

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        self.tags.append(tag)
        if tag == "body":
            self.cycle = attrs.get("data-cycle")
        elif tag == "tr" and "data-bssid" in attrs:
            self.rows.append(attrs["data-bssid"])
        elif tag == "td":
            self._in_cell = True
            self.cells.append("")

    def handle_endtag(self, tag):
        if tag == "td":
            self._in_cell = False

    def handle_data(self, data):
        if self._in_cell:
            self.cells[-1] += data


def load(chromium, url):
    """The page's DOM after its first refreshes, in a fresh profile."""
    with tempfile.TemporaryDirectory() as profile:
        dump = subprocess.run(
            [chromium, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", f"--user-data-dir={profile}", "--virtual-time-budget=5000",
             "--dump-dom", url],
            capture_output=True, timeout=120)
    check(dump.returncode == 0, "chromium failed: " + dump.stderr.decode(errors="replace"))
    page = PageReader()
    page.feed(dump.stdout.decode())
    check(page.cycle not in (None, ""), f"the page never refreshed (body data-cycle empty): {url}")
    return page


def main():
    (chromium,) = require(["chromium"], "chromium")
    with Sensor(sensor_command()) as sensor:
        known = sorted(n["bssid"] for n in sensor.json("api/networks")["networks"])
        page = load(chromium, sensor.url)
        check(sorted(page.rows) == known,
              f"one row per network expected: rows {sorted(page.rows)}, networks {known}")
        check(HOSTILE in page.cells, f"the hostile name is not shown as text: {page.cells[:40]}")
        check("img" not in page.tags, "a network name created an <img> element")
        check(page.tags.count("script") == 1, "a network name created a <script> element")
        print(f"chromium: {len(page.rows)} rows after cycle {page.cycle}, names shown as text")

        # The window's search rule: name, BSSID or comment, ignoring case.
        for search, expected in [("SAY", ["02:00:00:00:00:02"]),
                                 ("00:0", known),
                                 ("0:00:05", ["02:00:00:00:00:05"]),
                                 ("IMG SRC", ["02:00:00:00:00:06"]),
                                 ("nothing like it", [])]:
            rows = load(chromium, sensor.url + "?" + urllib.parse.urlencode({"search": search})).rows
            check(sorted(rows) == sorted(expected), f"search {search!r}: rows {rows}")
        print("chromium: the search box matches as the window does")

        # Sorting by a column: numbers by their value, texts as text.
        networks = {n["bssid"]: n for n in sensor.json("api/networks")["networks"]}
        rows = load(chromium, sensor.url + "?sort=Channel").rows
        channels = [networks[b]["channel"] for b in rows]
        check(channels == sorted(channels) and len(rows) == len(known),
              f"sorted by channel: {channels}")
        rows = load(chromium, sensor.url + "?sort=BSSID&order=desc").rows
        check(rows == sorted(known, reverse=True), f"sorted by BSSID, descending: {rows}")
        print("chromium: the table sorts by a column")


if __name__ == "__main__":
    main()
