"""Runs the tool again and again while another user tries to slip a prepared tree into the place of
its default persistent folder. Root runs this inside a lab; it prints a JSON list with one object
for each try.

    slip_in.py EXECUTABLE MIBS OTHER
"""

import concurrent.futures
import ctypes
import itertools
import json
import os
import pathlib
import select
import shutil
import subprocess
import sys
import tempfile
import time

AT_ONCE = 9
SECONDS = 15  # for one run, which takes 4 without an interface
BEFORE = "as it was\n"

IN_ACCESS, IN_CLOSE_NOWRITE, IN_OPEN, IN_CREATE = 0x1, 0x10, 0x20, 0x100

# What lies in the prepared tree: a FIFO that keeps its reader for ever, configuration that makes
# Net-SNMP create a file, and a link that lies where the tool's state is saved.
TRAPS = ("fifo", "fifo", "configuration", "link")

# When the other user strikes: at an event in a folder of the tool's, or so many milliseconds after
# the start of the tool.
EVENTS = {
    "configuration-opened": (".snmp", IN_OPEN),
    "configuration-read": (".snmp", IN_ACCESS),
    "configuration-closed": (".snmp", IN_CLOSE_NOWRITE),
    "module-opened": ("mibs", IN_OPEN),
    "module-closed": ("mibs", IN_CLOSE_NOWRITE),
    "parent-made": ("temporary", IN_CREATE),
}
DELAYS = (0, 15, 30)
REPEATED = 2


def watch(folder, mask):
    """A descriptor that becomes readable when the event has happened."""
    libc = ctypes.CDLL(None, use_errno=True)
    descriptor = libc.inotify_init1(os.O_CLOEXEC)
    if descriptor < 0 or libc.inotify_add_watch(descriptor, os.fsencode(folder), mask) < 0:
        raise OSError(ctypes.get_errno(), "inotify", str(folder))
    return descriptor


def prepare(tree, trap, target):
    """The tree that is to become SNMPDiscoveryApp, made by the other user."""
    folder = tree / "snmp-persist"
    folder.mkdir(parents=True)
    if trap == "fifo":
        (folder / "cert_indexes").mkdir()
        os.mkfifo(folder / "cert_indexes" / "0", 0o666)
    elif trap == "configuration":
        for name in ("snmp.conf", "SNMPDiscovery.conf"):
            (folder / name).write_text(f"logOption f {target}\n", encoding="ascii")
    else:
        (folder / "SNMPDiscovery.conf").symlink_to(target)


def strike(tree, place):
    """Renames the tree, or the folder in it, to the tool's place. Whether either was possible."""
    for source, destination in ((tree, place), (tree / "snmp-persist", place / "snmp-persist")):
        try:
            os.rename(source, destination)
            return True
        except OSError:
            pass
    return False


def attack(other, folders, trap, trigger, started):
    """The other user's process; ends with 0 if something was slipped in, with 1 if not. Prints a
    line when it is ready. `started` becomes readable when the tool is about to start."""
    os.setgroups([])
    os.setgid(other)
    os.setuid(other)
    os.umask(0)
    tree = folders["temporary"] / "prepared"
    prepare(tree, trap, folders["user"] / "target")
    place = folders["temporary"] / "SNMPDiscoveryApp"
    if trigger in EVENTS:
        name, mask = EVENTS[trigger]
        event = watch(folders[name], mask)
    os.write(1, b"ready\n")
    os.read(started, 1)
    until = time.monotonic() + 4
    if trigger in EVENTS:
        select.select([event], [], [], 4)
    else:
        strikes = time.monotonic() + trigger / 1000
        while time.monotonic() < strikes:  # a busy loop, because a sleep may end too late
            pass
    slipped = strike(tree, place)
    while not slipped and time.monotonic() < until:
        time.sleep(0.05)
        slipped = strike(tree, place)
    os._exit(0 if slipped else 1)


def one_try(executable, mibs, other, _turn, trap, trigger):
    """Runs the tool once; returns the outcome as `main` prints it."""
    with tempfile.TemporaryDirectory(prefix="snmpdiscovery-") as name:
        top = pathlib.Path(name)
        top.chmod(0o755)
        folders = {each: top / each for each in ("temporary", "user", ".snmp", "tool")}
        for folder in folders.values():
            folder.mkdir(mode=0o755)
        folders["temporary"].chmod(0o1777)
        folders["mibs"] = folders["tool"] / "mibs"
        shutil.copytree(mibs, folders["mibs"])
        tool = folders["tool"] / "SNMPDiscovery"
        tool.symlink_to(executable)
        (folders[".snmp"] / "snmp.conf").write_text("# nothing\n", encoding="ascii")
        target = folders["user"] / "target"
        if trap == "link":
            target.write_text(BEFORE, encoding="ascii")

        ready, tell_ready = os.pipe()
        started, tell_started = os.pipe()
        attacker = os.fork()
        if attacker == 0:
            try:
                os.dup2(tell_ready, 1)
                attack(other, folders, trap, trigger, started)
            finally:
                os._exit(2)
        os.close(tell_ready)
        assert os.read(ready, 6) == b"ready\n", "the other user is not ready"
        env = {key: value for key, value in os.environ.items() if key != "SNMPCONFPATH"}
        env.update(TMPDIR=str(folders["temporary"]), HOME=str(top))
        os.write(tell_started, b"!")
        ended, out, err = True, b"", b""
        with subprocess.Popen(
            [tool], env=env, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE
        ) as process:
            try:
                out, err = process.communicate(timeout=SECONDS)
            except subprocess.TimeoutExpired:
                ended = False
                process.kill()
                out, err = process.communicate()
        slipped = os.waitstatus_to_exitcode(os.waitpid(attacker, 0)[1])
        for descriptor in (ready, started, tell_started):
            os.close(descriptor)
        left = target.read_text("ascii") if target.exists() else None
        return {
            "trap": trap,
            "trigger": trigger,
            "slipped": {0: True, 1: False}[slipped],
            "ended": ended,
            "code": process.returncode,
            "out": out.decode("ascii"),
            "err": err.decode("utf-8", "replace"),
            "touched": left != (BEFORE if trap == "link" else None),
        }


def main(executable, mibs, other):
    tries = list(itertools.product(range(REPEATED), TRAPS, (*EVENTS, *DELAYS)))
    # Each try in a process of its own: a fork of a process with threads can hang.
    with concurrent.futures.ProcessPoolExecutor(AT_ONCE) as pool:
        running = [pool.submit(one_try, executable, mibs, int(other), *each) for each in tries]
        json.dump([each.result() for each in running], sys.stdout)


if __name__ == "__main__":
    main(*sys.argv[1:])
