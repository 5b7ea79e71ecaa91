"""docs/inventory.md: its samples, run in the lab; the schema of the report; the configuration of
Prometheus, checked by promtool; and scripts/demo."""

import json
import os
import pathlib
import re
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

PAGE = ROOT / "docs/inventory.md"
SCHEMA = ROOT / "docs/inventory.schema.json"
PROMETHEUS = ROOT / "docs/examples/prometheus.yml"


def samples(page):
    """Command and output of every sample of `page` that shows the program."""
    text = page.read_text("utf-8")
    found = re.findall(r"^```\n\$ (.*snmp-inventory.*)\n((?:.*\n)*?)```$", text, re.MULTILINE)
    return [(command, output) for command, output in found if "--help" not in command]


def steady(text):
    """`text` with the one member that is another in every run made the same."""
    return re.sub(r'"uptime": ?[0-9]+', '"uptime": 0', text)


class Documents(shipping.LabTest):
    def setUp(self):
        super().setUp()
        shipping.require("jq")
        self.program = shipping.build_folder() / "snmp-inventory"

    def test_every_sample_is_what_the_program_writes(self):
        cases = [*samples(PAGE), *samples(ROOT / "README.md")]
        self.assertGreater(len(cases), 6)
        path = f"PATH={self.program.parent}:{os.environ['PATH']}"
        for command, expected in cases:
            with self.subTest(command):
                # Where a table is shown by default, there is a terminal.
                words = command + " --format table" * (command == "snmp-inventory")
                script = f'cd "$TMPDIR"; {words}; code=$?; [ $code = 0 ] || [ $code = 3 ]'
                outcome = self.in_lab("demo", "env", path, "sh", "-c", script)
                self.assertEqual(steady(outcome.out.decode()), steady(expected))

    def test_every_option_and_every_exit_code_is_told(self):
        text = PAGE.read_text("utf-8")
        told = re.findall(r"^ +(?:-h,)?(--[a-z-]+)", run(self.program, "--help"), re.MULTILINE)
        self.assertGreater(len(told), 14)
        for option in told:
            self.assertIn(f"`{option}", text)
        for code in range(4):
            self.assertRegex(text, rf"(?m)^\| {code} \|")

    def test_the_demo_prints_the_tables_sample(self):
        said = run(ROOT / "scripts/demo", "--inventory")
        (table,) = [output for command, output in samples(PAGE) if command.endswith("table")][:1]
        self.assertTrue(said.endswith(table), said)
        run(ROOT / "scripts/demo", "--inventry", code=2)


class Schema(shipping.SchemaTest):
    schema = SCHEMA

    GOOD = (
        "[]",
        '[{"hostname":"192.0.2.9"},{"hostname":"192.0.2.10","answers":false}]',
        '[{"hostname":"192.0.2.9","answers":true}]',
        '[{"hostname":"192.0.2.9","answers":true,"printer":true,"supplies":[{"level":-3}]}]',
    )
    BAD = (
        "{}",
        "[{}]",
        '[{"hostname":"192.0.2.09"}]',
        '[{"hostname":"192.0.2.9","name":null}]',
        '[{"hostname":"192.0.2.9","answers":true,"name":""}]',
        '[{"hostname":"192.0.2.9","name":"not asked"}]',
        '[{"hostname":"192.0.2.9","answers":false,"printer":false}]',
        '[{"hostname":"192.0.2.9","answers":true,"printer":false,"model":"x"}]',
        '[{"hostname":"192.0.2.9","answers":true,"serial":"x"}]',
        '[{"hostname":"192.0.2.9","answers":true,"uptime":-1}]',
        '[{"hostname":"192.0.2.9","answers":true,"uptime":1.5}]',
        '[{"hostname":"192.0.2.9","answers":true,"printer":true,"supplies":[]}]',
        '[{"hostname":"192.0.2.9","answers":true,"printer":true,"supplies":[{"percent":5}]}]',
        '[{"hostname":"192.0.2.9","answers":true,"printer":true,"status":"3"}]',
        '[{"hostname":"192.0.2.9","answers":true,"colour":"red"}]',
    )

    def test_real_reports_are_valid(self):
        program = shipping.build_folder() / "snmp-inventory"
        for topology in ("demo", "printer"):
            for extra in ((), ("--no-ask",), ("--printers",)):
                with self.subTest((topology, extra)):
                    outcome = self.in_lab(topology, program, *extra)
                    self.assertIn(b"hostname", outcome.out)
                    self.validate(outcome.out, 0)

    def test_what_a_report_may_and_may_not_be(self):
        for code, texts in ((0, self.GOOD), (1, self.BAD)):
            for text in texts:
                with self.subTest(text):
                    self.validate(text.encode(), code)


class Prometheus(shipping.LabTest):
    def setUp(self):
        super().setUp()
        shipping.require("promtool")
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)

    def check(self, report, code=0):
        """Checks the configuration with the file that it names in a folder of the test's."""
        (self.folder / "printers.json").write_bytes(report)
        text = PROMETHEUS.read_text("utf-8")
        self.assertIn("/etc/prometheus/printers.json", text)
        path = self.folder / "prometheus.yml"
        path.write_text(text.replace("/etc/prometheus/", f"{self.folder}/"), "utf-8")
        return run("promtool", "check", "config", path, code=code)

    def test_promtool_takes_the_configuration_and_the_real_report(self):
        program = shipping.build_folder() / "snmp-inventory"
        outcome = self.in_lab("demo", program, "--format", "prometheus")
        self.assertEqual(len(json.loads(outcome.out)), 4)
        self.check(outcome.out)

    def test_promtool_takes_hostile_texts(self):
        # Labels as the program writes them: texts of any characters.
        labels = {"snmp_name": "\x1b[2J\r\n\"<b>\\\ufffd", "snmp_printer": "true"}
        self.check(json.dumps([{"targets": ["192.0.2.9"], "labels": labels}]).encode())

    def test_promtool_would_find_a_fault(self):
        self.check(b'[{"targets":["192.0.2.9"],"labels":{"snmp_printer":true}}]', code=1)
        self.check(b'[{"targets":"192.0.2.9"}]', code=1)


if __name__ == "__main__":
    unittest.main()
