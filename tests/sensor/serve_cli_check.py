#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""--serve from the outside: a malformed value is explained with the usage (exit 2), a port
that is taken ends the run with the reason (exit 5), and a free one is served and said.
Usage: serve_cli_check.py PROGRAM"""
import os
import socket
import subprocess
import sys
import tempfile

from sensor_harness import Sensor, check


def run(program, *arguments):
    with tempfile.TemporaryDirectory() as settings:
        env = dict(os.environ, XDG_CONFIG_HOME=settings, QT_LOGGING_RULES="default.info=false")
        return subprocess.run([program, "--headless", "--backend=simulated", "--cycles", "2",
                               "--interval", "0", *arguments],
                              capture_output=True, text=True, timeout=60, env=env)


def main():
    program = sys.argv[1]
    bad = run(program, "--serve", "127.0.0.1:http")
    check(bad.returncode == 2, f"malformed --serve: exit {bad.returncode}")
    check('"http" is no port number from 0 to 65535' in bad.stderr and "--serve" in bad.stderr,
          f"malformed --serve: {bad.stderr}")

    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        taken.listen()
        port = taken.getsockname()[1]
        busy = run(program, "--serve", f"127.0.0.1:{port}")
    check(busy.returncode == 5, f"taken port: exit {busy.returncode}, {busy.stderr}")
    check(f"Cannot serve on 127.0.0.1 port {port}" in busy.stderr, f"taken port: {busy.stderr}")

    local = run(program, "--serve", "localhost:0")
    check(local.returncode == 0, f"loopback: exit {local.returncode}, {local.stderr}")
    check("Serving the survey on http://127.0.0.1:" in local.stderr, f"loopback: {local.stderr}")
    check("Warning" not in local.stderr, f"a loopback address drew the warning: {local.stderr}")

    with Sensor([program, "--headless", "--backend=simulated", "--serve", "0"]) as sensor:
        status = sensor.json("api/status")
        check(status["networks"] > 0 and status["scansTotal"] > 0, f"status: {status}")
    print("--serve: explained, refused and served as expected")


if __name__ == "__main__":
    main()
