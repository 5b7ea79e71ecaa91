"""Runs of the tool and of others in the private test network, with what they cost."""

import contextlib
import json
import mmap
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "lab"))

from snmplab import api  # noqa: E402  (beside the folder above)


def observe(topology, command, seconds=30.0, env=None):
    """What became of `command` on the host of `topology`: see snmplab.observer."""
    return api.observe_in_lab(topology, list(map(str, command)), seconds=seconds, env=env)


@contextlib.contextmanager
def in_memory(tool):
    """Holds what `tool` reads (itself, its libraries, its modules) in memory meanwhile. A virtual
    machine may give memory back within seconds, and each page that the disc has to bring again
    makes a run longer: that would measure the disc."""
    told = subprocess.run(["ldd", tool], check=False, timeout=10, capture_output=True, text=True)
    libraries = re.findall(r"(/\S+) \(0x", told.stdout)
    if not libraries and "statically linked" not in told.stdout:
        raise SystemExit(f"ldd {tool}: {told.stdout}{told.stderr}")
    with contextlib.ExitStack() as held:
        for path in (tool, *libraries, *(tool.parent / "mibs").iterdir()):
            with open(path, "rb") as file:
                flags = mmap.MAP_SHARED | mmap.MAP_POPULATE
                mapped = mmap.mmap(file.fileno(), 0, flags=flags, prot=mmap.PROT_READ)
            held.enter_context(mapped)
        yield


def found(result):
    """The addresses in the tool's document."""
    return {entry["hostname"] for entry in json.loads(result["out"])}


def campus(simulator, *options, prefix=17):
    """A host in one subnet with simulated agents; the address of the simulator itself is one
    where no agent is."""
    network, own, number = {
        17: ("198.18.0.0/17", "198.18.0.1", "198.18.0.2"),
        24: ("192.0.2.0/24", "192.0.2.1", "192.0.2.2"),
    }[prefix]
    return {
        "subnets": {"campus": network},
        "host": {
            "interfaces": [{"name": "eth0", "subnet": "campus", "addresses": own}]
        },
        "agents": [
            {
                "name": "storm",
                "kind": "program",
                "addresses": {"campus": number},
                "command": [str(simulator), *map(str, options)],
            }
        ],
    }
