#!/usr/bin/env python3
"""Looks for the hardening of cmake/Hardening.cmake in an executable, with readelf.

    hardening.py EXECUTABLE COMPILE_COMMANDS   0 if all is there, else 1 and what is missing
    hardening.py --control COMPILER            the test of the test: builds a program
                                               without any of it, which must lack it all
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile


def readelf(what, executable):
    """The output of readelf for `executable`."""
    done = subprocess.run(
        ["readelf", "--wide", what, str(executable)],
        check=True,
        capture_output=True,
        timeout=60,
        text=True,
    )
    return done.stdout


def missing(executable, static=None):
    """What the executable lacks. One that loads nothing has no loader and no dynamic symbols;
    `static` is then the same with its symbols."""
    kind = readelf("--file-header", executable)
    segments = readelf("--segments", executable)
    dynamic = readelf("--dynamic", executable)
    symbols = readelf("--symbols", static) if static else readelf("--dyn-syms", executable)
    stack = re.search(r"^ *GNU_STACK .* ([RWE ]+) 0x", segments, re.MULTILINE)
    checks = {
        "position-independent executable": re.search(r"Type: +DYN ", kind)
        and (re.search(r"\(FLAGS_1\).*\bPIE\b", dynamic) if static else "INTERP" in segments),
        "read-only relocations": "GNU_RELRO" in segments,
        "relocations at start": re.search(r"\(FLAGS(_1)?\).*\b(NOW|BIND_NOW)\b", dynamic),
        "stack that is not executable": stack and "E" not in stack.group(1),
        "stack protector": "__stack_chk_fail" in symbols,
    }
    return [name for name, found in checks.items() if not found]


def unfortified(commands):
    """Sources of the programs that are compiled without checking calls. The switch is looked
    for where it is given: it leaves a trace in the executable only where a source has a
    call whose room the compiler knows and whose use it does not."""
    entries = json.loads(pathlib.Path(commands).read_text("utf-8"))
    own = [e for e in entries if re.search(r"/(app|inventory|snmp|value)/[^/]+\.cpp$", e["file"])]
    if not own:
        return ["no source of the programs"]
    return [e["file"] for e in own if "-D_FORTIFY_SOURCE=2" not in e["command"]]


def control(compiler):
    """Control: what is missing in a program without any hardening."""
    with tempfile.TemporaryDirectory(prefix="snmpdiscovery-") as folder:
        source = pathlib.Path(folder) / "program.cpp"
        source.write_text("int main() {}\n", encoding="ascii")
        program = pathlib.Path(folder) / "program"
        switches = "-fno-pie -no-pie -fno-stack-protector -Wl,-z,norelro,-z,lazy,-z,execstack"
        subprocess.run(
            [compiler, *switches.split(), str(source), "-o", str(program)],
            check=True,
            timeout=60,
        )
        return missing(program)


def main(arguments):
    """The program."""
    if arguments[0] == "--control":
        found = control(arguments[1])
        print("missing:", ", ".join(found))
        return 0 if len(found) == 5 else 1
    executable, commands = arguments
    faults = missing(executable) + [f"checks in {file}" for file in unfortified(commands)]
    for fault in faults:
        print("missing:", fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
