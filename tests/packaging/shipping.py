"""What the tests of this folder share: the lab on the path, the build under test, and
commands whose failure shows what they said.

SNMPDISCOVERY_BUILD names the build folder. What a test makes and the next run can use
again is kept in its subfolder "packaging"."""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "lab"))

import harness  # noqa: E402
import tool  # noqa: E402
from snmplab import api, message  # noqa: E402

ROOT = harness.ROOT
DEMO = ("192.0.2.10", "192.0.2.9", "198.51.100.20", "203.0.113.70")
DEMO_DOCUMENT = tool.document(*DEMO)


def build_folder():
    """The build under test. A missing one is a failure and no skip."""
    path = os.environ.get("SNMPDISCOVERY_BUILD", "")
    if not (pathlib.Path(path) / "CMakeCache.txt").is_file():
        raise AssertionError(f"SNMPDISCOVERY_BUILD names no build folder: '{path}'")
    return pathlib.Path(path).resolve()


def work_folder(name, empty=True):
    """The folder `name` for a test to work in."""
    path = build_folder() / "packaging" / name
    if empty:
        shutil.rmtree(path, ignore_errors=True)
    path.mkdir(parents=True, exist_ok=True)
    return path


def run(*command, code=0, timeout=600, **settings):
    """Runs `command`, which must end with `code`; returns its standard output and error
    as one text."""
    done = subprocess.run(
        [str(word) for word in command],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        errors="replace",
        check=False,
        timeout=timeout,
        **settings,
    )
    if done.returncode != code:
        words = " ".join(str(word) for word in command)
        raise AssertionError(f"{words}\nended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def require(*programs):
    """Fails the test unless all `programs` are there."""
    for each in programs:
        if shutil.which(each) is None:
            raise AssertionError(
                f"{each} is missing: run scripts/install-dependencies --package"
            )


def install(prefix, *components, build=None):
    """`cmake --install` of the components of a build."""
    for each in components:
        folder = build or build_folder()
        run("cmake", "--install", folder, "--prefix", prefix, "--component", each)


def asks_for_up_time(outcome):
    """Whether every datagram sent was a GET of sysUpTime.0, and there was one."""
    names = [
        [str(each.name) for each in datagram.message.bindings]
        for datagram in tool.sent(outcome)
    ]
    return bool(names) and all(each == [message.SYS_UP_TIME] for each in names)


class LabTest(unittest.TestCase):
    """A test that runs something in the lab."""

    def setUp(self):
        harness.require_namespaces()

    def in_lab(self, topology, *command, code=0, **settings):
        """The outcome of a command that must end with `code`."""
        outcome = api.run_in_lab(topology, [str(word) for word in command], **settings)
        said = (outcome.out + outcome.err).decode(errors="replace")
        self.assertEqual(outcome.code, code, said)
        return outcome

    def assert_discovers_demo(self, *command, **settings):
        """The command is the tool, and finds the agents of the topology demo."""
        code = tool.EXIT_CODE
        outcome = self.in_lab("demo", *command, code=code, capture=True, **settings)
        self.assertEqual(outcome.out, DEMO_DOCUMENT, outcome.err)
        # Without its modules the tool would ask for 0.0, which these agents answer too.
        self.assertTrue(asks_for_up_time(outcome), outcome.err)
        return outcome

    def assert_takes_stock(self, *command, **settings):
        """The command is snmp-inventory, and finds the tool and the modules by itself: it
        reports the printer of the topology of that name, and hands a community on."""
        outcome = self.in_lab("printer", *command, **settings)
        laser, server = json.loads(outcome.out)
        self.assertEqual(laser["hostname"], "192.0.2.9")
        self.assertEqual(laser["supplies"][0]["type"], "toner")
        self.assertIs(server["printer"], False)
        hidden = ["env", "SNMP_COMMUNITY=secret", *command, "--format", "addresses"]
        self.assertEqual(self.in_lab("demo", *hidden).out, b"198.51.100.21\n")


class SchemaTest(LabTest):
    """A test that judges documents by the JSON Schema `schema`, a path that the class names."""

    def setUp(self):
        super().setUp()
        require("jsonschema")
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.instance = pathlib.Path(holder.name) / "instance.json"

    def validate(self, octets, code):
        """Fails unless the schema accepts `octets` (`code` 0) or refuses them (1)."""
        self.instance.write_bytes(octets)
        run("jsonschema", "-i", self.instance, self.schema, code=code)
