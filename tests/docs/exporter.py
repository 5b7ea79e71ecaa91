"""Runs snmp_exporter and Prometheus on the loopback of the lab until Prometheus has asked
every target, and prints what it knows: its targets, and the levels of their supplies.

usage: exporter.py EXPORTER SNMP-YML PROMETHEUS-YML STORAGE"""

import json
import subprocess
import sys
import time
import urllib.parse
import urllib.request

EXPORTER, SNMP, PROMETHEUS, STORAGE = sys.argv[1:]
API = "http://127.0.0.1:9090/api/v1/"


def ask(what):
    with urllib.request.urlopen(API + what, timeout=5) as answer:
        return json.load(answer)["data"]


def targets():
    """The active targets, once each has been asked; None before."""
    try:
        active = ask("targets")["activeTargets"]
    except OSError:
        return None
    asked = active and all(each["health"] != "unknown" for each in active)
    return active if asked else None


commands = (
    [EXPORTER, f"--config.file={SNMP}", "--web.listen-address=127.0.0.1:9116"],
    ["prometheus", f"--config.file={PROMETHEUS}", f"--storage.tsdb.path={STORAGE}",
     "--web.listen-address=127.0.0.1:9090", "--log.level=warn"],
)
running = [subprocess.Popen(each, stdout=sys.stderr) for each in commands]
try:
    limit = time.monotonic() + 60
    while (found := targets()) is None and time.monotonic() < limit:
        time.sleep(0.5)
    levels = ask("query?query=" + urllib.parse.quote("prtMarkerSuppliesLevel"))["result"]
    print(json.dumps({"targets": found, "levels": levels}))
finally:
    for each in running:
        each.terminate()
    for each in running:
        each.wait()
