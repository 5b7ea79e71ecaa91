"""Measures the parts of the benchmarks and puts the tables into bench/README.md.

Called by scripts/bench, which has built the programs. A part is a module part_NAME.py beside this
one with

    TITLE                      one line
    measure(build, quick)      a dictionary of plain data, kept in results/NAME.json; `build` is the
                               build folder, `quick` asks for a short form of the measurement
    tables(data)               {marker: Markdown text}, for the markers in README.md
    pictures(data)             {file name: SVG text}, written beside README.md

so that tables and pictures can be made again from the data without measuring.
"""

import argparse
import importlib
import json
import os
import pathlib
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
BUILD = HERE.parent / "build" / "bench"
RUNS = "SNMPDISCOVERY_BENCH_RUNS"
sys.path.insert(0, str(HERE))

import report  # noqa: E402  (beside this file)


def part_names():
    return sorted(path.stem[len("part_"):] for path in HERE.glob("part_*.py"))


def measured(part, name, build, quick):
    started = time.monotonic()
    data = {
        "machine": report.machine(),
        "date": time.strftime("%Y-%m-%d", time.gmtime()),
        "quick": quick,
        **part.measure(build, quick),
    }
    print(f"{name}: {time.monotonic() - started:.0f} s", file=sys.stderr)
    return data


def conditions(data):
    form = ", short form of the measurement" if data["quick"] else ""
    return f"Measured on {data['date']}{form}: {data['machine']}."


def arguments():
    parts = {name: importlib.import_module("part_" + name) for name in part_names()}
    parser = argparse.ArgumentParser(
        prog="scripts/bench", description=__doc__.split("\n")[0], allow_abbrev=False,
        formatter_class=argparse.RawDescriptionHelpFormatter,
        epilog="parts:\n" + "".join(f"  {name:9}{part.TITLE}\n" for name, part in parts.items())
        + f"\n{RUNS} in the environment: how often each storm is run (1; 20 take an hour)")
    parser.add_argument("--quick", action="store_true",
                        help="short measurements of small inputs; only printed, unless --write")
    parser.add_argument("--write", action="store_true", help="put the quick ones into the files too")
    parser.add_argument("--print", action="store_true", dest="only_print",
                        help="print the tables and change no file")
    parser.add_argument("--redraw", action="store_true",
                        help="make tables and pictures from the data of the last run")
    parser.add_argument("--check", action="store_true", help="only look at the arguments")
    parser.add_argument("--build", type=pathlib.Path,
                        help="measure what lies in this folder (default: build/bench, built first)")
    parser.add_argument("parts", nargs="*", metavar="PART", help="what to measure (default: all)")
    options = parser.parse_args()
    unknown = set(options.parts) - set(parts)
    if unknown:
        parser.error(f"unknown part: {', '.join(sorted(unknown))}")
    if options.write and not options.quick:
        parser.error("--write belongs to --quick")
    if options.redraw and (options.quick or options.only_print or options.build):
        parser.error("--redraw measures nothing and prints nothing")
    if options.build and not (options.build / "SNMPDiscovery").is_file():
        parser.error(f"no SNMPDiscovery in {options.build}")
    runs = os.environ.get(RUNS, "1")
    if not (runs.isascii() and runs.isdecimal() and int(runs) > 0):
        parser.error(f"{RUNS} is no number of runs: {runs}")
    return options, parts


def main():
    options, parts = arguments()
    if options.check:
        return
    if options.quick and not options.write:
        options.only_print = True

    for name in options.parts or parts:
        part = parts[name]
        results = HERE / "results" / f"{name}.json"
        if options.redraw:
            data = json.loads(results.read_text(encoding="utf-8"))
        else:
            print(f"{name}: {part.TITLE} …", file=sys.stderr)
            data = measured(part, name, options.build or BUILD, options.quick)
        texts = {f"{name}-conditions": conditions(data), **part.tables(data)}
        pictures = part.pictures(data)
        if options.only_print:
            print("\n\n".join(f"{marker}:\n\n{text}" for marker, text in texts.items()), end="\n\n")
            continue
        if not options.redraw:
            results.parent.mkdir(exist_ok=True)
            results.write_text(report.compact(data) + "\n", encoding="utf-8")
        report.fill(HERE / "README.md", texts)
        for file_name, svg in pictures.items():
            (HERE / file_name).write_text(svg, encoding="utf-8")


if __name__ == "__main__":
    main()
