"""What docs/integration.md shows to the programs that start the tool: the schema, and the
examples in three languages, run in the lab."""

import json
import pathlib
import re
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

SCHEMA = ROOT / "docs/document.schema.json"
EXAMPLES = sorted((ROOT / "docs/examples").glob("*/agents.*"))

# In numeric order, which is not the document's.
TABLE = b"""\
No.\tAddress
1\t192.0.2.9
2\t192.0.2.10
3\t198.51.100.20
4\t203.0.113.70
"""


class Schema(shipping.LabTest):
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

    def setUp(self):
        super().setUp()
        shipping.require("jsonschema")
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.instance = pathlib.Path(holder.name) / "instance.json"

    def validate(self, octets, code):
        self.instance.write_bytes(octets)
        run("jsonschema", "-i", self.instance, SCHEMA, code=code)

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
        self.tool = shipping.build_folder() / "SNMPDiscovery"

    def example(self, path, *arguments, tool, code=0):
        setting = f"SNMPDISCOVERY={tool}"
        return self.in_lab("demo", "env", setting, path, *arguments, code=code)

    def test_there_is_one_for_each_language(self):
        names = [path.parent.name for path in EXAMPLES]
        self.assertEqual(names, ["node", "python", "shell"])

    def test_each_prints_a_table_of_what_was_found(self):
        for path in EXAMPLES:
            with self.subTest(path.name):
                self.assertEqual(self.example(path, tool=self.tool).out, TABLE)

    def test_each_hands_options_on_and_copes_with_nobody(self):
        for path in EXAMPLES:
            with self.subTest(path.name):
                outcome = self.example(path, "-c", "nobody", tool=self.tool)
                self.assertEqual(outcome.out, b"No.\tAddress\n")

    def test_each_tells_a_run_that_gave_no_document(self):
        cases = {"help": (self.tool, "--help"), "nothing": ("true",), "missing": ("/no/tool",)}
        for path in EXAMPLES:
            for name, (tool, *arguments) in cases.items():
                with self.subTest(f"{path.name}: {name}"):
                    outcome = self.example(path, *arguments, tool=tool, code=1)
                    self.assertEqual(outcome.out, b"")
                    self.assertIn(b"SNMPDiscovery gave no document", outcome.err)


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
        self.assertGreater(len(pages), 5)
        for page in pages:
            text = re.sub(r"```.*?```", "", page.read_text("utf-8"), flags=re.DOTALL)
            for target in re.findall(r"\]\(([^)#\s]+)(?:#[^)]*)?\)", text):
                if not re.match(r"[a-z]+:", target):
                    self.assertTrue((page.parent / target).exists(), f"{page}: {target}")


if __name__ == "__main__":
    unittest.main()
