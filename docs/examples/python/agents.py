#!/usr/bin/env python3
"""Prints a numbered table of the agents that SNMPDiscovery finds.

usage: agents.py [OPTION OF SNMPDiscovery]...
"""

import ipaddress
import json
import os
import subprocess
import sys


def discover(options):
    """The addresses that the tool found, in numeric order. Raises OSError when it cannot
    be started, subprocess.TimeoutExpired when it hangs (a run takes seven seconds), and
    ValueError when it gave no document. Standard error is passed through."""
    tool = os.environ.get("SNMPDISCOVERY", "SNMPDiscovery")
    # The exit code says nothing (64 after every good run), so it is not checked.
    done = subprocess.run(
        [tool, *options],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        check=False,
        timeout=30,
    )
    entries = json.loads(done.stdout)
    return sorted(ipaddress.IPv4Address(entry["hostname"]) for entry in entries)


def main():
    """The program."""
    try:
        found = discover(sys.argv[1:])
    except (OSError, subprocess.TimeoutExpired, ValueError) as error:
        print(f"agents.py: SNMPDiscovery gave no document: {error}", file=sys.stderr)
        return 1
    print("No.\tAddress")
    for number, address in enumerate(found, 1):
        print(f"{number}\t{address}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
