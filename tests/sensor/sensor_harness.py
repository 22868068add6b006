# SPDX-License-Identifier: GPL-3.0-or-later
"""Shared parts of the checks that drive real clients against a sensor: finding the
Debian tools (skip locally with the apt-get line, fail in CI), starting the simulated
sensor and talking to it over loopback HTTP."""
import json
import os
import shutil
import socket
import subprocess
import sys
import urllib.error
import urllib.request

SKIP = 77


def require(programs, package):
    """Paths of `programs`, or leave: exit 77 locally, 1 in CI where they must be there."""
    paths = [shutil.which(p) or shutil.which(p, path="/usr/bin:/usr/sbin:/bin") for p in programs]
    if all(paths):
        return paths
    line = f"sudo apt-get update && sudo apt-get install -y --no-install-recommends {package}"
    if os.environ.get("CI") == "true":
        print(f"FAIL: {package} is missing in CI. Install it with:\n  {line}", file=sys.stderr)
        sys.exit(1)
    print(f"SKIP: {package} is missing. Install it with:\n  {line}", file=sys.stderr)
    sys.exit(SKIP)


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


class Sensor:
    """The simulated sensor, from start to kill; `url` ends with a slash."""

    def __init__(self, command):
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.url = self.process.stdout.readline().strip()
        if not self.url.startswith("http://127.0.0.1:"):
            self.stop()
            raise SystemExit(f"FAIL: the sensor did not start (said {self.url!r})")

    def get(self, path):
        with urllib.request.urlopen(self.url + path, timeout=10) as reply:
            return reply.status, reply.headers, reply.read()

    def json(self, path):
        return json.loads(self.get(path)[2])

    def stop(self):
        self.process.kill()
        self.process.wait()

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.stop()


def sensor_command():
    """The command line that starts a sensor: everything after the check's own options."""
    return sys.argv[1:]


def check(condition, message):
    if not condition:
        raise SystemExit("FAIL: " + message)
