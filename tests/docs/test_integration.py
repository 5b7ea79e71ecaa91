"""What docs/integration.md shows to programs: the schema of the tool's document, and examples in
three languages that start snmp-inventory, run in the lab."""

import json
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import links  # noqa: E402
import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

SCHEMA = ROOT / "docs/document.schema.json"
EXAMPLES = sorted((ROOT / "docs/examples").glob("*/printers.*"))

LISTED = b"192.0.2.9\t21500\n198.51.100.20\t130042\n"


class Schema(shipping.SchemaTest):
    schema = SCHEMA

    GOOD = ("[]", '[{"hostname":"0.0.0.0"},{"hostname":"255.249.100.9"}]')
    BAD = (
        "{}",
        "null",
        "[[]]",
        "[{}]",
        '[{"hostname":9}]',
        '[{"hostname":"192.0.2.256"}]',
        '[{"hostname":"192.0.2"}]',
        '[{"hostname":"192.0.2.09"}]',
        '[{"hostname":"192.0.2.9","port":161}]',
        '[{"hostname":"192.0.2.9"},{"hostname":"192.0.2.9"}]',
    )

    def test_real_output_is_valid(self):
        tool = shipping.build_folder() / "SNMPDiscovery"
        for arguments, found in (([], True), (["-c", "nobody"], False)):
            outcome = self.in_lab("demo", tool, *arguments, code=64)
            self.assertEqual(b"hostname" in outcome.out, found)
            self.validate(outcome.out, 0)

    def test_what_the_tool_may_and_may_not_write(self):
        for code, texts in ((0, self.GOOD), (1, self.BAD)):
            for text in texts:
                with self.subTest(text):
                    self.validate(text.encode(), code)


class Examples(shipping.LabTest):
    def setUp(self):
        super().setUp()
        shipping.require("jq", "python3", "node", "timeout")
        self.program = shipping.build_folder() / "snmp-inventory"

    def example(self, path, *arguments, program=None, code=0):
        setting = f"SNMP_INVENTORY={program or self.program}"
        return self.in_lab("demo", "env", setting, path, *arguments, code=code)

    def test_there_is_one_for_each_language(self):
        names = [path.parent.name for path in EXAMPLES]
        self.assertEqual(names, ["node", "python", "shell"])

    def test_each_prints_the_printers(self):
        for path in EXAMPLES:
            with self.subTest(path.name):
                self.assertEqual(self.example(path).out, LISTED)

    def test_each_hands_options_on_and_copes_with_nobody(self):
        for path in EXAMPLES:
            with self.subTest(path.name):
                outcome = self.example(path, "--tool", self.fake("printf '[]'"))
                self.assertEqual(outcome.out, b"")

    def test_each_copes_with_a_printer_that_does_not_count(self):
        report = '[{"hostname":"192.0.2.9","answers":true,"printer":true}]'
        program = self.fake(f"echo '{report}'")
        for path in EXAMPLES:
            with self.subTest(path.name):
                outcome = self.example(path, program=program)
                self.assertEqual(outcome.out, b"192.0.2.9\tunknown\n")

    def test_each_fails_when_there_is_no_report(self):
        for path in EXAMPLES:
            with self.subTest(path.name):
                outcome = self.example(path, "--tool", self.fake("echo usage"), code=1)
                self.assertEqual(outcome.out, b"")
                self.assertIn(b"snmp-inventory: ", outcome.err)
                script = 'SNMP_INVENTORY=/no/program "$1" || echo failed'
                outcome = self.in_lab("demo", "sh", "-c", script, "sh", path)
                self.assertEqual(outcome.out, b"failed\n")

    def fake(self, script):
        """The path of a program that runs `script`."""
        path = shipping.work_folder("fake") / "program"
        path.write_text(f"#!/bin/sh\n{script}\n", "utf-8")
        path.chmod(0o755)
        return path


class Document(unittest.TestCase):
    """docs/integration.md shows the files that the tests above run, not copies of them."""

    def test_every_example_and_the_schema_are_named(self):
        text = (ROOT / "docs/integration.md").read_text("utf-8")
        for path in [SCHEMA, *EXAMPLES]:
            self.assertIn(f"]({path.relative_to(ROOT / 'docs')})", text)

    def test_the_schema_is_json_and_names_its_draft(self):
        schema = json.loads(SCHEMA.read_text("utf-8"))
        self.assertRegex(schema["$schema"], "draft/2020-12")

    def test_links_of_all_documents_lead_somewhere(self):
        listed = run("git", "ls-files", "--cached", "--others", "--exclude-standard", "*.md", cwd=ROOT)
        pages = [ROOT / line for line in listed.splitlines()]
        self.assertEqual(links.broken(ROOT, pages), [])


if __name__ == "__main__":
    unittest.main()
