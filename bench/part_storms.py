"""Storms: how many of the agents that answer a broadcast all at once are in the document, and what
others find in the same network."""

import os
import pathlib
import re
import shutil
import tempfile

import lab_run
import picture
from report import table

TITLE = "agents that answer all at once"

AGENTS = [250, 1000, 5000, 20000]

# What is asked for, and what Linux makes of it: it doubles every wish for its own bookkeeping, but
# not its default. The two small ones stand for a program that does not ask at all, and for an
# earlier kernel's net.core.rmem_max of 208 kB, which clamps the wish.
BUFFERS = {
    "not asked: 208 kB": 106496,
    "asked, limit 208 kB: 416 kB": 212992,
    "asked, limit 4 MB: 8 MB": 4194304,
}
DEFAULT = "asked, limit 4 MB: 8 MB"

# Least octets of a frame. One of 1,514 occupies a buffer of 2 kB, which is what the drivers of
# usual network cards take for each frame, however short.
CHARGES = {"small": 0, "card": 1514}

WORDS = {"small": "small datagrams", "card": "the card's case"}

SECONDS_OTHERS = 20  # for one of the others on the large subnet


def measure(build, quick):
    """SNMPDISCOVERY_BENCH_RUNS in the environment is the number of runs of each case (1)."""
    tool, simulator = build / "SNMPDiscovery", build / "lab" / "lab_simulator"
    runs = int(os.environ.get("SNMPDISCOVERY_BENCH_RUNS", "1"))
    storms = {}
    for charge, frame in CHARGES.items():
        for buffer in [DEFAULT] if quick else BUFFERS:
            for agents in [20000] if quick else AGENTS:
                results = [
                    storm(tool, simulator, agents, frame, BUFFERS[buffer])
                    for _ in range(runs)
                ]
                storms[f"{charge}/{buffer}/{agents}"] = results
    others = {"250 in a /24": beside(tool, simulator, 24, 250, quick)}
    if not quick:
        others["20,000 in a /17"] = beside(tool, simulator, 17, 20000, quick)
    return {"storms": storms, "others": others}


def storm(tool, simulator, agents, frame, buffer):
    """How many agents are in the document."""
    topology = lab_run.campus(
        simulator, "--first", "198.18.1.0", "--agents", agents, "--frame", frame
    )
    with tempfile.TemporaryDirectory() as folder:
        pathlib.Path(folder, "snmp.conf").write_text(f"clientRecvBuf {buffer}\n")
        env = dict(os.environ, SNMPCONFPATH=folder)
        result = lab_run.observe(topology, [tool], env=env)
    return len(lab_run.found(result))


# Each prints a line for an agent that it found; the expression takes the address out of it.
OTHERS = {
    "nmap -sU -p161": ("nmap", "nmap -n -sU -p161 -oG - {network}",
                       r"Host: (\S+) .*161/open/udp"),
    "nmap -T5 -sU -p161": ("nmap", "nmap -n -T5 -sU -p161 -oG - {network}",
                           r"Host: (\S+) .*161/open/udp"),
    "onesixtyone": ("onesixtyone", "onesixtyone -i {list} public", r"^(\S+) \[public\]"),
    "braa": ("braa", "braa public@{range}:.1.3.6.1.2.1.1.3.0", r"^([\d.]+):"),
    "CUPS, backend snmp": ("/usr/lib/cups/backend/snmp",
                           "env CUPS_SERVERROOT={folder} /usr/lib/cups/backend/snmp",
                           r"add_cache\(.*addrname=\"([\d.]+)\""),
}


def beside(tool, simulator, prefix, agents, quick):
    """The tool and the others one after the other, each in the same network."""
    first = {17: "198.18.1.0", 24: "192.0.2.3"}[prefix]
    topology = lab_run.campus(
        simulator, "--first", first, "--agents", agents, "--frame", 0, prefix=prefix
    )
    result = lab_run.observe(topology, [tool])
    rows = {"SNMPDiscovery": outcome(len(lab_run.found(result)), result)}
    with tempfile.TemporaryDirectory() as folder:
        places = inputs(pathlib.Path(folder), prefix)
        for name, (program, command, expression) in OTHERS.items():
            slow = name.startswith(("onesixtyone", "CUPS"))
            if shutil.which(program) is None or (quick and slow):
                continue
            line = command.format(**places).split()
            result = lab_run.observe(topology, line, seconds=SECONDS_OTHERS)
            text = result["out"] + "\n" + result["err"]
            addresses = set(re.findall(expression, text, flags=re.MULTILINE))
            rows[name] = outcome(len(addresses), result)
    return {"agents": agents, "rows": rows}


def outcome(found, result):
    return {"found": found, "seconds": result["seconds"], "stopped": result["stopped"]}


def inputs(folder, prefix):
    """What the others want to be told: the subnet, and all addresses in it."""
    if prefix == 24:
        addresses = [f"192.0.2.{host}" for host in range(1, 255)]
        network = "192.0.2.0/24"
    else:
        addresses = [f"198.18.{host >> 8}.{host & 255}" for host in range(1, 32767)]
        network = "198.18.0.0/17"
    (folder / "list").write_text("\n".join(addresses) + "\n")
    (folder / "snmp.conf").write_text("Address @LOCAL\nCommunity public\nDebugLevel 2\n")
    return {"folder": folder, "list": folder / "list", "network": network,
            "range": f"{addresses[0]}-{addresses[-1]}"}


def shares(data, charge, buffer, agents):
    results = data["storms"].get(f"{charge}/{buffer}/{agents}", [])
    return [100 * found / agents for found in results]


def percent(share):
    """Never rounded up to 100."""
    return "100" if share == 100 else f"{min(share, 99.99):.2f}"


def storm_table(data, charge):
    rows = []
    for buffer in BUFFERS:
        row = [buffer]
        for agents in AGENTS:
            found = shares(data, charge, buffer, agents)
            if not found:
                row.append("–")
            elif min(found) == max(found):
                row.append(percent(found[0]))
            else:
                row.append(f"{percent(min(found))} to {percent(max(found))}")
        rows.append(row)
    return table([f"{WORDS[charge]}: % of the agents", *(f"{agents:,}" for agents in AGENTS)], rows)


def others_table(data):
    rows = []
    names = ["SNMPDiscovery", *OTHERS]
    for name in names:
        row = [name]
        for case in ("250 in a /24", "20,000 in a /17"):
            result = data["others"].get(case, {}).get("rows", {}).get(name)
            if result is None:
                row += ["–", "–"]
                continue
            share = 100 * result["found"] / data["others"][case]["agents"]
            row += [percent(share),
                    f"{'stopped at ' if result['stopped'] else ''}{result['seconds']:.1f}"]
        rows.append(row)
    return table(["", "250 in a /24: %", "s", "20,000 in a /17: %", "s"], rows)


def runs_of(data):
    """How often each case was run; more often where its number of agents says so."""
    counts = {agents: {len(results) for name, results in data["storms"].items()
                       if name.endswith(f"/{agents}")} - {0}
              for agents in AGENTS}
    words = [f"{agents:,} agents {' to '.join(map(str, sorted({min(count), max(count)})))}"
             for agents, count in counts.items() if count]
    return f"Runs of each case: {', '.join(words)}. Two figures are the worst run and the best."


def tables(data):
    return {
        "storms-runs": runs_of(data),
        "storms-small": storm_table(data, "small"),
        "storms-card": storm_table(data, "card"),
        "storms-others": others_table(data),
    }


def pictures(data):
    """Both with the same axis, so that they can be compared."""
    curves = {}
    for charge in CHARGES:
        curves[charge] = []
        for buffer in reversed(BUFFERS):
            points = [(agents, min(found)) for agents in AGENTS
                      if (found := shares(data, charge, buffer, agents))]
            if points:
                curves[charge].append((buffer, points))
    worst = min(share for series in curves.values() for _, points in series for _, share in points)
    low = max(least for least in (0, 50, 70, 90) if least <= worst)
    made = {}
    for charge, words in (("small", "Small datagrams, each charged 768 octets of the buffer"),
                          ("card", "Each datagram charged 2,304 octets, as with a network card")):
        made[f"storm-{charge}.svg"] = picture.lines(
            "Agents found when all answer at once",
            f"{words}; worst run; the axis starts at {low} %", curves[charge], DEFAULT,
            "agents in the subnet", "% found", (low, 100), log_x=True)
    return made
