#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Debian's Prometheus scrapes a simulated sensor whose networks carry hostile names; its
query API must show one corvane_network_signal_dbm series per network and the names
exactly. promtool checks the /metrics body first.
Usage: prometheus_check.py SENSOR-COMMAND..."""
import json
import subprocess
import tempfile
import time
import urllib.parse
import urllib.request

from sensor_harness import Sensor, check, free_port, require, sensor_command

EXPECTED_NAMES = {
    "02:00:00:00:00:01": "Home",
    "02:00:00:00:00:02": 'say "hi"',
    "02:00:00:00:00:03": "back\\slash\\",
    "02:00:00:00:00:04": "two\nlines",
    "02:00:00:00:00:05": "<script>alert(1)</script>",
    "02:00:00:00:00:06": "<img src=x onerror=alert(1)>",
    "02:00:00:00:00:07": "Café 📶 ☕",
    "02:00:00:00:00:08": "\ufffd\ufffdA",
    "02:00:00:00:00:09": "",
}


def query(port, expression):
    url = f"http://127.0.0.1:{port}/api/v1/query?" + urllib.parse.urlencode({"query": expression})
    with urllib.request.urlopen(url, timeout=10) as reply:
        answer = json.load(reply)
    check(answer["status"] == "success", f"query {expression}: {answer}")
    return answer["data"]["result"]


def main():
    prometheus, promtool = require(["prometheus", "promtool"], "prometheus")
    with Sensor(sensor_command()) as sensor, tempfile.TemporaryDirectory() as tmp:
        status, headers, body = sensor.get("metrics")
        check(status == 200, f"/metrics answered {status}")
        check(headers["Content-Type"].startswith("text/plain; version=0.0.4"),
              f"content type {headers['Content-Type']}")
        lint = subprocess.run([promtool, "check", "metrics"], input=body, capture_output=True)
        check(lint.returncode == 0,
              "promtool check metrics: " + (lint.stdout + lint.stderr).decode(errors="replace"))
        print("promtool check metrics: ok")

        target = sensor.url[len("http://"):].rstrip("/")
        port = free_port()
        config = f"{tmp}/prometheus.yml"
        with open(config, "w") as f:
            f.write("global:\n  scrape_interval: 1s\n  scrape_timeout: 1s\n"
                    "scrape_configs:\n  - job_name: corvane\n"
                    f"    static_configs:\n      - targets: ['{target}']\n")
        server = subprocess.Popen(
            [prometheus, f"--config.file={config}", f"--storage.tsdb.path={tmp}/data",
             f"--web.listen-address=127.0.0.1:{port}", "--log.level=warn"],
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        try:
            series = []
            deadline = time.monotonic() + 60
            while time.monotonic() < deadline:
                try:
                    series = query(port, "corvane_network_signal_dbm")
                    if len(series) >= len(EXPECTED_NAMES):
                        break
                except OSError:
                    pass  # not listening yet
                time.sleep(0.5)
            bssids = sorted(s["metric"]["bssid"] for s in series)
            check(bssids == sorted(EXPECTED_NAMES),
                  f"one signal series per network expected, got {bssids}")
            for s in series:
                check(s["metric"]["job"] == "corvane", f"labels {s['metric']}")
                check(-100 <= float(s["value"][1]) <= -20, f"signal {s['value']}")

            info = query(port, "corvane_network_info")
            names = {s["metric"]["bssid"]: s["metric"].get("ssid", "") for s in info}
            check(names == EXPECTED_NAMES, f"names as Prometheus stored them: {names}")
            up = query(port, 'up{job="corvane"}')
            check(up and up[0]["value"][1] == "1", f"up: {up}")
            associated = query(port, "corvane_interface_associated_info")
            check(len(associated) == 1 and associated[0]["metric"]["bssid"] == "02:00:00:00:00:01",
                  f"interface: {associated}")
            print(f"prometheus: {len(series)} signal series, names intact")
        finally:
            server.terminate()
            try:
                server.wait(timeout=20)
            except subprocess.TimeoutExpired:
                server.kill()
                server.wait()


if __name__ == "__main__":
    main()
