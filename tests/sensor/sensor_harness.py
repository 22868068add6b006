# SPDX-License-Identifier: GPL-3.0-or-later
"""Shared parts of the checks that drive real clients against a sensor: finding the
Debian tools (skip locally with the apt-get line, fail in CI), starting the program as a
sensor and talking to it over loopback HTTP."""
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
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
    """A sensor program, from start to kill. It says where it serves on standard error
    ("Serving the survey on http://127.0.0.1:PORT/ ..."); `url` ends with a slash."""

    def __init__(self, command):
        # Settings of its own, so that no stored interval or comment of the user's counts.
        self.settings = tempfile.TemporaryDirectory()
        env = dict(os.environ, QT_LOGGING_RULES="default.info=false",
                   XDG_CONFIG_HOME=self.settings.name)
        self.process = subprocess.Popen(command, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.PIPE, text=True, env=env)
        self.url = None
        said = []
        for line in self.process.stderr:
            said.append(line)
            match = re.search(r"http://127\.0\.0\.1:\d+/", line)
            if match:
                self.url = match.group(0)
                break
        if self.url is None:
            self.stop()
            raise SystemExit("FAIL: the sensor did not start; it said:\n" + "".join(said))
        # Keep reading what it says, or it would block once the pipe is full.
        threading.Thread(target=self.process.stderr.read, daemon=True).start()

    def get(self, path):
        with urllib.request.urlopen(self.url + path, timeout=10) as reply:
            return reply.status, reply.headers, reply.read()

    def json(self, path):
        return json.loads(self.get(path)[2])

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.settings.cleanup()

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
