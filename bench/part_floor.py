"""What a run costs beyond its fixed waits: time, processor, memory, and the road of one answer."""

import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import tempfile

import lab_run
from report import table

TITLE = "what a run costs beyond its fixed waits"

WAITS = 7.0  # seconds: the pause after the first pass, and the second pass's gathering
WAITS_ALONE = 4.0  # without any subnet: two pauses

SUBNETS = [1, 50, 300, 1000]
RESPONDERS = [0, 250, 20000]
INTERFACES_ON_A_WIRE = 40

# Numbers of answers of two runs under callgrind; what differs is the cost of the difference.
FEW, MANY = 1000, 4000


def measure(build, quick):
    tool, simulator = build / "SNMPDiscovery", build / "lab" / "lab_simulator"
    runs = 1 if quick else 10
    storm = lab_run.campus(simulator, "--first", "198.18.1.0", "--agents", 250)
    walls, parts = beyond_the_waits(tool, storm, runs, 1 if quick else 5)
    static = static_tool()
    if static is not None:
        static = beyond_the_waits(static, storm, runs, 1 if quick else 5)
    responders = {}
    for number in [250] if quick else RESPONDERS:
        network = campus_of(simulator, number)
        responders[str(number)] = cost(lab_run.observe(network, [tool]))
    subnets = {}
    for number in [50] if quick else SUBNETS:
        line = ["sh", "-c", 'ulimit -n 10000 && exec "$0"', tool]
        result = lab_run.observe(many_subnets(number), line, seconds=60)
        subnets[str(number)] = cost(result)
    return {
        "static": static and {"walls": static[0], "parts": static[1]},
        "walls": walls,
        "real_time": os.sched_getscheduler(0) != os.SCHED_OTHER,
        "parts": parts,
        "responders": responders,
        "subnets": subnets,
        "road": road(build),
    }


def static_tool():
    """The newest static executable of scripts/cross for this processor, or None."""
    name = f"SNMPDiscovery-*-linux-{platform.machine()}-static/SNMPDiscovery"
    found = (lab_run.ROOT / "build" / "dist").glob(name)
    return max(found, key=lambda path: path.stat().st_mtime, default=None)


def beyond_the_waits(tool, storm, runs, part_runs):
    """The times of whole runs, and the parts of one."""
    walls = []
    with lab_run.in_memory(tool):
        for _ in range(runs):
            result = lab_run.observe(storm, [tool])
            if len(lab_run.found(result)) != 250:
                raise SystemExit(f"{len(lab_run.found(result))} of 250 agents")
            walls.append(result["seconds"])
        return walls, start_and_end(tool, part_runs)


def campus_of(simulator, number):
    if number == 0:
        return lab_run.campus(simulator, "--first", "198.18.1.0", "--community", "other")
    return lab_run.campus(simulator, "--first", "198.18.1.0", "--agents", number)


def many_subnets(number):
    """A host with so many interfaces, and nobody who answers. Many share a wire: what counts here
    is the host."""
    subnets, interfaces = {}, []
    for index in range(number):
        wire = f"w{index // INTERFACES_ON_A_WIRE}"
        subnets[wire] = "198.18.0.0/15"
        address = f"198.18.{index // 64}.{index % 64 * 4 + 1}/30"
        interfaces.append({"name": f"e{index}", "subnet": wire, "addresses": address})
    return {"subnets": subnets, "host": {"interfaces": interfaces}, "agents": []}


def cost(result):
    names = ("seconds", "processor", "memory", "switches", "received", "lost")
    return {name: result[name] for name in names}


def start_and_end(tool, runs):
    """The least seconds and processor seconds of: a process that only shows its help, a run without
    any subnet and without any MIB module, and one with all modules, both less their pauses. The
    least, since what else the machine does only ever adds."""
    alone = {"subnets": {}, "host": {"interfaces": []}, "agents": []}

    def least(command, waits):
        results = [lab_run.observe(alone, command) for _ in range(runs)]
        return {
            "seconds": round(min(each["seconds"] for each in results) - waits, 4),
            "processor": min(each["processor"] for each in results),
        }

    with tempfile.TemporaryDirectory() as folder:
        bare = pathlib.Path(folder, "SNMPDiscovery")
        shutil.copy2(tool, bare)
        return {
            "help": least([tool, "--help"], 0),
            "without modules": least([bare], WAITS_ALONE),
            "with modules": least([tool], WAITS_ALONE),
        }


# Inclusive instructions of these functions, as callgrind_annotate prints their names.
FUNCTIONS = {
    "get": "UVARNETSNMP::SNMPSession::Get(",
    "turn": "UVARNETSNMP::SNMPSession::ServeOnce(",
    "info": ":snmp_sess_select_info ",
    "read": ":snmp_sess_read ",
    "trampoline": "UVARNETSNMP::SNMPSession::Callback(",
    "clone": ":snmp_clone_pdu ",
    "callback": "SNMPDiscoveryApp::SNMPCallback(",
    "text": ":inet_ntoa ",
    "insert": "SNMPDiscoveryApp::AddIP(",
}


def road(build):
    """Instructions of one answer by where they are spent, and its processor time; instructions
    only where valgrind is installed."""
    program = build / "bench" / "answer_road"
    env = dict(os.environ, SNMPCONFPATH="/nonexistent", MIBS="")

    def run(answers, *before):
        line = [*before, program, str(answers)]
        done = subprocess.run(line, env=env, check=True, timeout=120, capture_output=True, text=True)
        found = re.search(r'"read": (\d+), "seconds": ([\d.]+)', done.stdout)
        if found is None or int(found[1]) != answers:
            raise SystemExit(f"answer_road: {done.stdout} instead of {answers}")
        return float(found[2])

    seconds = [run(20000) - run(0) for _ in range(3)]
    result = {"nanoseconds": round(min(seconds) / 20000 * 1e9)}
    if shutil.which("valgrind") is None:
        return result
    counts = []
    with tempfile.TemporaryDirectory() as folder:
        for answers in (FEW, MANY):
            file = pathlib.Path(folder, str(answers))
            run(answers, "valgrind", "--tool=callgrind", "--fair-sched=yes",
                "--toggle-collect=UVARNETSNMP::SNMPSession::Get*",
                f"--callgrind-out-file={file}")
            annotated = subprocess.run(
                ["callgrind_annotate", "--inclusive=yes", "--threshold=100", file],
                check=True, timeout=120, capture_output=True, text=True).stdout
            counts.append({name: instructions(annotated, words)
                           for name, words in FUNCTIONS.items()})
    few, many = counts
    result["instructions"] = {name: round((many[name] - few[name]) / (MANY - FEW)) for name in few}
    return result


def instructions(annotated, words):
    for line in annotated.splitlines():
        found = re.match(r"\s*([\d,]+) \([ \d.]+%\)\s+(.*)", line)
        if found and words in found[2]:
            return int(found[1].replace(",", ""))
    raise SystemExit(f"callgrind_annotate names no {words}")


def milliseconds(seconds):
    return f"{1000 * seconds:.0f}"


def priority(data):
    """How a busy machine was kept from being what is measured (chrt -f 10 scripts/bench floor)."""
    return ", real-time priority" if data["real_time"] else ""


def executables(data):
    """What was measured: the name of each executable, its walls and its parts."""
    static = data.get("static")
    also = [("static executable", static["walls"], static["parts"])] if static else []
    return [("shared libraries", data["walls"], data["parts"]), *also]


def wall_table(data):
    rows = []
    for name, walls, _ in executables(data):
        ordered = sorted(walls)
        over = [milliseconds(each - WAITS)
                for each in (ordered[0], statistics.median(ordered), ordered[-1])]
        rows.append([f"{name}, 250 agents, {len(walls)} runs{priority(data)}", *over])
    return table(["ms beyond the 7 seconds of waiting", "least", "median", "most"], rows)


def parts_table(data):
    rows = []
    for part, run, without in (
        ("the process: loading, command line, exit", "help", None),
        ("Net-SNMP: set-up, files, tear-down", "without modules", "help"),
        ("Net-SNMP: reading the MIB modules", "with modules", "without modules"),
    ):
        for name, _, parts in executables(data):
            cells = [parts[run][key] - (parts[without][key] if without else 0)
                     for key in ("seconds", "processor")]
            rows.append([f"{part}; {name}", *map(milliseconds, cells)])
    return table([f"part of a run{priority(data)}", "ms", "ms of the processor"], rows)


def growth_table(data, key, what):
    rows = []
    for number, each in sorted(data[key].items(), key=lambda item: int(item[0])):
        rows.append([
            f"{int(number):,}",
            f"{each['seconds']:.2f}",
            f"{each['processor']:.2f}",
            f"{each['memory'] / 1024:.1f}",
            f"{each['switches'] / each['seconds']:,.0f}",
        ])
    return table([what, "s", "processor s", "resident MiB", "wake-ups a second"], rows)


def road_table(data):
    found = data["road"].get("instructions")
    if found is None:
        return "(valgrind is not installed)"
    rows = [
        ["Net-SNMP: receive, parse, free", found["read"] - found["trampoline"]],
        ["Net-SNMP: copy of the PDU", found["clone"]],
        ["C library: the address as text", found["text"]],
        ["ours: lock and set", found["insert"]],
        ["ours: callback, with the release of the bindings",
         found["callback"] - found["text"] - found["insert"]],
        ["ours: trampoline", found["trampoline"] - found["clone"] - found["callback"]],
        ["Net-SNMP: what to wait for", found["info"]],
        ["ours: turn of the wait, select, clock", found["get"] - found["read"] - found["info"]],
        ["all", found["get"]],
    ]
    return table(["", "instructions of one answer"], [[name, f"{n:,}"] for name, n in rows])


def tables(data):
    return {
        "floor-wall": wall_table(data),
        "floor-parts": parts_table(data),
        "floor-responders": growth_table(data, "responders", "responders"),
        "floor-subnets": growth_table(data, "subnets", "subnets"),
        "floor-road": road_table(data),
        "floor-road-time": f"{data['road']['nanoseconds']:,} ns of the processor for each answer.",
    }


def pictures(_data):
    return {}
