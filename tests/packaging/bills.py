"""What lies beside each delivered file: its sum and its bill of materials. Bills are checked
with the published schema, which comes in a Python package from PyPI."""

import hashlib
import json
import sys

import shipping
from shipping import run

CHECKER = "cyclonedx-python-lib[json-validation]==11.12.0"

CHECK = """
import pathlib, sys
from cyclonedx.schema import SchemaVersion
from cyclonedx.validation.json import JsonStrictValidator
for path in sys.argv[1:]:
    text = pathlib.Path(path).read_text("utf-8")
    found = JsonStrictValidator(SchemaVersion.V1_5).validate_str(text)
    if found:
        sys.exit(f"{path}: {found}")
"""


def _checker():
    """The Python that has the schema, made once for a build."""
    folder = shipping.work_folder("bills", empty=False)
    python = folder / "bin/python"
    mark = folder / CHECKER
    if not mark.exists():
        run(sys.executable, "-m", "venv", "--clear", folder)
        run(python, "-m", "pip", "install", "--quiet", CHECKER)
        mark.touch()
    return python


def refused(*paths):
    """What the checker says of bills that it must refuse."""
    return run(_checker(), "-c", CHECK, *paths, code=1)


def check(test, paths):
    """Each file has its sum and a valid bill that names that sum; returns the bills by
    the files' names."""
    bills = {}
    for path in paths:
        found = hashlib.sha256(path.read_bytes()).hexdigest()
        run("sha256sum", "--check", "--strict", f"{path.name}.sha256", cwd=path.parent)
        bill = json.loads((path.parent / f"{path.name}.cdx.json").read_text("utf-8"))
        subject = bill["metadata"]["component"]
        test.assertEqual(subject["hashes"], [{"alg": "SHA-256", "content": found}])
        test.assertEqual(subject["name"], path.name)
        bills[path.name] = bill
    run(_checker(), "-c", CHECK, *(f"{path}.cdx.json" for path in paths))
    return bills


def libraries(bill):
    """The names and versions of the libraries of a bill."""
    return {(each["name"], each["version"]) for each in bill["components"]}
