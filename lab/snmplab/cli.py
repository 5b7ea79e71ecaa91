"""The command line of the lab."""

from __future__ import annotations

import argparse
import os
import sys
from typing import List, NoReturn

from . import LabError, drawing, reading, sandbox
from .session import Session

EXIT_SKIP = 77  # of --check, as test drivers know it

_EPILOG = """\
The command runs on the topology's host, with the caller's standard input, output,
directory and environment; added are SNMP_LAB (the topology's name), SNMP_LAB_NAMESPACE
(for lab/inside) and TMPDIR (a folder that ends with the lab). The exit code is the
command's; 128 and a signal's number when the signal ended it; 125 when the lab failed;
126 or 127 when the command could not be run or found.
"""


class _Parser(argparse.ArgumentParser):
    def error(self, message: str) -> NoReturn:
        """Exits with the lab's own code: argparse's 2 could be the command's."""
        self.print_usage(sys.stderr)
        self.exit(sandbox.EXIT_LAB_FAILED, f"lab: {message}\n")


def _parser() -> argparse.ArgumentParser:
    parser = _Parser(
        prog="lab",
        usage="lab [OPTION]... -- COMMAND [ARGUMENT]...",
        description="Runs a command in a private network with SNMP agents.",
        epilog=_EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    add = parser.add_argument
    add(
        "--topology",
        metavar="NAME|FILE|JSON",
        default="demo",
        help="a topology of the lab's, a file, or JSON itself (default: demo)",
    )
    add(
        "--report",
        metavar="FILE",
        default="",
        help="write the command's exit code and seconds as a JSON object",
    )
    add("--user", action="store_true", help="use a user namespace, as root too")
    add(
        "--capture",
        metavar="FILE",
        default="",
        help="write the SNMP datagrams at the host's interfaces, one JSON object a line",
    )
    add("--verbose", action="store_true", help="tell progress on standard error")
    add("--describe", action="store_true", help="draw the topology and end")
    add("--list", action="store_true", help="name the lab's topologies and end")
    add(
        "--check",
        action="store_true",
        help="end with 0 where a lab is possible, with 77 where it is not",
    )
    return parser


def main(arguments: List[str]) -> int:
    """Carries out the command line and returns the exit code. The process must exit
    with it at once."""
    if "--" in arguments:
        split = arguments.index("--")
        own, command = arguments[:split], arguments[split + 1 :]
    else:
        own, command = arguments, []
    parser = _parser()
    options = parser.parse_args(own)
    try:
        return _act(parser, options, command)
    except LabError as error:
        print(f"lab: {error}", file=sys.stderr)
        return sandbox.EXIT_LAB_FAILED


def _act(parser, options, command: List[str]) -> int:
    if options.list:
        print("\n".join(reading.known()))
        return 0
    if options.check:
        return sandbox.run_isolated(lambda: 0, options.user, EXIT_SKIP)
    wanted = reading.load(options.topology)
    if options.describe:
        print(drawing.draw(wanted), end="")
        return 0
    if not command:
        parser.error("a command is missing")
    # /sbin may be missing from an ordinary user's path; ip, nft and snmpd are there.
    os.environ["PATH"] = os.environ.get("PATH", "/usr/bin:/bin") + ":/usr/sbin:/sbin"
    session = Session(wanted, options.capture, options.report, options.verbose)
    return sandbox.run_isolated(lambda: session.run(command), options.user)
