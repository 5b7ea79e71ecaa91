#!/usr/bin/env python3
"""Merges the reports that snmp-inventory wrote on several hosts.

usage: deploy/merge-reports.py [--output FOLDER] [--failed NAME]… [NAME=]FILE…

NAME is the host that FILE comes from; default: the file's name without ".json". In FOLDER (default: the current one) it replaces three files, each
in one step:

  agents.json    the addresses that any host saw, in the form of the tool's own document
  report.json    one report of the same form as the merged ones; where several hosts saw an agent, the
                 one that was told most counts, among equals the first by name
  seen.json      "seen": for each address the hosts that saw it; "failed": the hosts without a report,
                 which are those named by --failed and those whose file is none

Files are not trusted: each must be a report, to the last member and octet of an address. Members that no
report has are left out. Exit status 0: all files were good; 1: at least one host has failed, and nothing
is written if all have; 2: wrong command line. What is wrong with a file is said on standard error.
"""

import argparse
import json
import os
import pathlib
import re
import sys
import tempfile

MAX_OCTETS = 16 * 1024 * 1024
MAX_AGENTS = 65536
MAX_SUPPLIES = 200

# No leading zeros: they mean octal numbers to some programs.
OCTET = r"(25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])"
ADDRESS = rf"{OCTET}(\.{OCTET}){{3}}"


class Wrong(Exception):
    """Why a file is no report."""


def is_flag(value):
    return isinstance(value, bool)


def is_text(value):
    # JSON can spell half a surrogate pair, which is no character.
    return isinstance(value, str) and 0 < len(value) <= 1024 and not re.search("[\ud800-\udfff]", value)


def matches(pattern):
    return lambda value: isinstance(value, str) and re.fullmatch(pattern, value) is not None


def between(least, most):
    return lambda value: isinstance(value, int) and not is_flag(value) and least <= value <= most


is_label = matches("[A-Za-z][A-Za-z0-9-]*")
is_counter = between(0, 2**32 - 1)
is_integer = between(-(2**31), 2**31 - 1)

# The members of a report and of its supplies, in the order in which they are written; as in
# docs/inventory.schema.json.
SUPPLY = {
    "name": is_text,
    "type": is_label,
    "class": is_label,
    "level": is_integer,
    "capacity": is_integer,
    "unit": is_label,
    "percent": between(0, 100),
}
AGENT = {
    "hostname": matches(ADDRESS),
    "answers": is_flag,
    "name": is_text,
    "description": is_text,
    "location": is_text,
    "contact": is_text,
    "objectID": matches(r"[0-9]+(\.[0-9]+)*"),
    "uptime": is_counter,
    "printer": is_flag,
    "model": is_text,
    "serial": is_text,
    "status": is_label,
    "pages": is_counter,
    "supplies": lambda value: isinstance(value, list) and 0 < len(value) <= MAX_SUPPLIES,
}
OF_PRINTERS = {"model", "serial", "status", "pages", "supplies"}


def known(entry, members):
    """The entry's members that a report may have, each checked."""
    if not isinstance(entry, dict):
        raise Wrong("an entry is no object")
    found = {name: entry[name] for name in members if name in entry}
    for name, value in found.items():
        if not members[name](value):
            raise Wrong(f"wrong {name}: {json.dumps(value)[:60]}")
    return found


def agent_of(entry):
    """The agent that an entry of a report tells of."""
    agent = known(entry, AGENT)
    if "hostname" not in agent:
        raise Wrong("an entry without hostname")
    if agent.get("answers") is not True and not agent.keys() <= {"hostname", "answers"}:
        raise Wrong("a silent agent that tells something")
    if agent.get("printer") is not True and agent.keys() & OF_PRINTERS:
        raise Wrong("no printer, but tells what printers do")
    if "supplies" in agent:
        agent["supplies"] = [known(supply, SUPPLY) for supply in agent["supplies"]]
        if any("percent" in s and not s.keys() >= {"level", "capacity"} for s in agent["supplies"]):
            raise Wrong("a percentage of nothing")
    return agent


def read(path):
    """The agents of a report, by their addresses."""
    try:
        with open(path, "rb") as file:
            octets = file.read(MAX_OCTETS + 1)
        if len(octets) > MAX_OCTETS:
            raise Wrong("too large")
        entries = json.loads(octets.decode("utf-8"))
    except OSError as error:
        raise Wrong(error.strerror) from error
    except (ValueError, RecursionError) as error:
        raise Wrong("no JSON") from error
    if not isinstance(entries, list) or len(entries) > MAX_AGENTS:
        raise Wrong("no array of agents")
    agents = {}
    for entry in entries:
        agent = agent_of(entry)
        agents.setdefault(agent["hostname"], agent)
    return agents


def replace(path, text):
    """Puts a file with the text in the place of `path`, or leaves it as it is."""
    handle, new = tempfile.mkstemp(prefix=f".{path.name}.", dir=path.parent)
    try:
        with os.fdopen(handle, "w", encoding="utf-8") as file:
            file.write(text)
            file.flush()
            os.fsync(file.fileno())
        os.chmod(new, 0o644)
        os.replace(new, path)
    except BaseException:
        os.unlink(new)
        raise


def numeric(address):
    return [int(octet) for octet in address.split(".")]


def compact(value):
    return json.dumps(value, ensure_ascii=False, separators=(",", ":"))


def arguments(words):
    parser = argparse.ArgumentParser(usage=__doc__.strip(), add_help=True)
    parser.add_argument("--output", type=pathlib.Path, default=pathlib.Path("."))
    parser.add_argument("--failed", action="append", default=[])
    parser.add_argument("reports", nargs="*")
    chosen = parser.parse_args(words)
    pairs = [each.rpartition("=")[::2] for each in chosen.reports]
    chosen.reports = [(name or pathlib.PurePath(file).stem, file) for name, file in pairs]
    names = chosen.failed + [name for name, _ in chosen.reports]
    if not names or len(set(names)) < len(names):
        parser.error("one FILE or --failed NAME for each host")
    return chosen


def main(words):
    chosen = arguments(words)
    failed, reports = set(chosen.failed), {}
    for name, path in chosen.reports:
        try:
            reports[name] = read(path)
        except Wrong as wrong:
            print(f"merge-reports: {path}: {wrong}", file=sys.stderr)
            failed.add(name)
    if failed:
        print(f"merge-reports: no report from: {', '.join(sorted(failed))}", file=sys.stderr)
    if not reports:
        print("merge-reports: no host has a report, so nothing is written", file=sys.stderr)
        return 1

    seen, told = {}, {}
    for name in sorted(reports):
        for address, agent in reports[name].items():
            seen.setdefault(address, []).append(name)
            rank = (agent.get("answers", False), len(agent))
            if address not in told or rank > told[address][0]:
                told[address] = (rank, agent)
    # The tool sorts by bytes, a report by numbers.
    tools = [{"hostname": address} for address in sorted(seen)]
    merged = [told[address][1] for address in sorted(seen, key=numeric)]
    hosts = {"seen": {address: seen[address] for address in sorted(seen, key=numeric)}}
    hosts["failed"] = sorted(failed)
    replace(chosen.output / "agents.json", compact(tools))
    replace(chosen.output / "report.json", compact(merged) + "\n")
    replace(chosen.output / "seen.json", json.dumps(hosts, ensure_ascii=False, indent=2) + "\n")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
