"""Values and JSON: json_benchmark's times and heap as tables and a picture."""

import ctypes.util
import json
import os
import subprocess

import picture
from report import table

TITLE = "values and JSON beside other libraries"

OWN = "Value"
REFERENCE = "nlohmann"
LIBRARIES = ["Value", "nlohmann", "RapidJSON", "RapidJSON (string)", "Poco", "JsonCpp"]
FLOORS = ["peek and get", "sgetc and sbumpc", "containers", "text copied"]
DOCUMENTS = ["hosts", "mixed"]
OPERATIONS = ["read", "write", "build", "copy", "destroy"]


def run_benchmark(build, quick, *options, **environment):
    """The best of several repetitions, which come in random order: what disturbs a measurement on a
    shared machine only ever makes it longer. Times are the processor's."""
    size = ["--bytes=1000000", "--arrays=100000"] if quick else []
    output = subprocess.run(
        [build / "bench" / "json_benchmark", *size, *options, "--benchmark_format=json",
         f"--benchmark_repetitions={5 if quick else 9}",
         "--benchmark_enable_random_interleaving=true"],
        check=True, stdout=subprocess.PIPE, timeout=1200, env={**os.environ, **environment}).stdout
    result = json.loads(output)
    milliseconds, heap = {}, {}
    for run in result["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        name = run["run_name"].split("/iterations:")[0]
        milliseconds[name] = round(min(milliseconds.get(name, 1e9), run["cpu_time"]), 3)
        if "heap" in run:
            document, _, library = name.split("/")
            heap[f"{document}/{library}"] = int(run["heap"])
    values = {document: int(result["context"][f"{document} values"]) for document in DOCUMENTS}
    return {"milliseconds": milliseconds, "heap": heap, "values": values}


def measure(build, quick):
    allocator = ctypes.util.find_library("mimalloc")
    if not allocator:
        raise SystemExit("no libmimalloc: scripts/install-dependencies --bench gets it")
    preloaded = run_benchmark(build, quick, "--benchmark_filter=^(hosts|mixed)/",
                              LD_PRELOAD=allocator)
    return {**run_benchmark(build, quick), "preloaded": preloaded["milliseconds"]}


def ratio(data, document, operation, library, to=REFERENCE):
    times = data["milliseconds"]
    name = f"{document}/{operation}/"
    if name + library not in times or name + to not in times:
        return None
    return times[name + to] / times[name + library]


def shown(number, places=2):
    return "–" if number is None else f"{number:,.{places}f}"


def ratios(data, document):
    rows = []
    for operation in OPERATIONS:
        cells = [ratio(data, document, operation, library) for library in LIBRARIES]
        rows.append([operation, *(shown(cell, 0 if cell and cell > 20 else 2) for cell in cells)])
    return table([f"{document}, nlohmann = 1", *LIBRARIES], rows)


def times(data, document):
    names = LIBRARIES + FLOORS
    rows = []
    for operation in OPERATIONS:
        row = [data["milliseconds"].get(f"{document}/{operation}/{name}") for name in names]
        rows.append([operation, *(shown(cell, 1) for cell in row)])
    return table([f"{document}, ms", *names], rows)


def preloaded(data, document):
    rows = []
    for operation in OPERATIONS:
        row = [data["preloaded"].get(f"{document}/{operation}/{name}") for name in LIBRARIES]
        rows.append([operation, *(shown(cell, 1) for cell in row)])
    return table([f"{document}, ms with mimalloc", *LIBRARIES], rows)


def memory(data):
    rows = []
    for document in DOCUMENTS:
        values = data["values"][document]
        row = [data["heap"].get(f"{document}/{library}") for library in LIBRARIES]
        rows.append([f"{document} ({values:,.0f} values)",
                     *(shown(cell and cell / values, 0) for cell in row)])
    return table(["bytes per value", *LIBRARIES], rows)


def depth(data):
    shapes = sorted({name.split("/")[0] for name in data["milliseconds"]
                     if name.startswith(("chain", "list"))},
                    key=lambda shape: (shape.split()[0], int(shape.split()[1])))
    rows = []
    for shape in shapes:
        count = int(shape.split()[1])
        cells = [data["milliseconds"][f"{shape}/{operation}/{OWN}"] for operation in OPERATIONS]
        kind, arrays = shape.split()
        rows.append([f"{kind} of {int(arrays):,}", *(shown(cell * 1e6 / count, 0) for cell in cells)])
    return table(["ns per array", *OPERATIONS], rows)


def tables(data):
    return {
        **{f"json-{document}-ratios": ratios(data, document) for document in DOCUMENTS},
        **{f"json-{document}-times": times(data, document) for document in DOCUMENTS},
        **{f"json-{document}-preloaded": preloaded(data, document) for document in DOCUMENTS},
        "json-memory": memory(data),
        "json-depth": depth(data),
    }


def pictures(data):
    groups = []
    for document in DOCUMENTS:
        for operation in OPERATIONS[:-1]:
            rows = [(library, ratio(data, document, operation, library)) for library in LIBRARIES]
            groups.append((f"{document}: {operation}", rows))
    return {"json.svg": picture.bars(
        "Values and JSON beside other libraries",
        "Speed as a multiple of nlohmann's on the same document; longer is faster; destroy: see the table",
        groups, OWN, mark=1.0)}
