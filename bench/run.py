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
import pathlib
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
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


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__.split("\n")[0])
    parser.add_argument("--quick", action="store_true",
                        help="short measurements, less exact; only printed, unless --write")
    parser.add_argument("--write", action="store_true", help="put the quick ones into the files too")
    parser.add_argument("--print", action="store_true", dest="only_print",
                        help="print the tables and change no file")
    parser.add_argument("--redraw", action="store_true",
                        help="make tables and pictures from the data of the last run")
    parser.add_argument("--check", action="store_true", help="only look at the arguments")
    parser.add_argument("--build", type=pathlib.Path, default=HERE.parent / "build" / "bench",
                        help="build folder (default: build/bench)")
    parser.add_argument("parts", nargs="*", metavar="PART",
                        help=f"what to measure: {', '.join(part_names())} (default: all)")
    options = parser.parse_args()
    unknown = set(options.parts) - set(part_names())
    if unknown:
        parser.error(f"unknown part: {', '.join(sorted(unknown))}")
    if options.check:
        return
    if options.quick and not options.write:
        options.only_print = True

    for name in options.parts or part_names():
        part = importlib.import_module("part_" + name)
        results = HERE / "results" / f"{name}.json"
        if options.redraw:
            data = json.loads(results.read_text(encoding="utf-8"))
        else:
            print(f"{name}: {part.TITLE} …", file=sys.stderr)
            data = measured(part, name, options.build, options.quick)
        texts = {f"{name}-conditions": conditions(data), **part.tables(data)}
        if options.only_print:
            print("\n\n".join(texts.values()))
            continue
        if not options.redraw:
            results.parent.mkdir(exist_ok=True)
            results.write_text(json.dumps(data, indent=1, sort_keys=True) + "\n", encoding="utf-8")
        report.fill(HERE / "README.md", texts)
        for file_name, svg in part.pictures(data).items():
            (HERE / file_name).write_text(svg, encoding="utf-8")


if __name__ == "__main__":
    main()
