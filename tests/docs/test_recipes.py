"""docs/recipes.md: each recipe, with the program that it is for."""

import json
import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

EXAMPLES = ROOT / "docs/examples"
HERE = pathlib.Path(__file__).resolve().parent

LASER = {"snmp_name": "laser", "snmp_model": "Laser 3000", "snmp_printer": "true"}


class Prometheus(shipping.LabTest):
    EXPORTER = "prometheus-snmp-exporter"

    def setUp(self):
        super().setUp()
        shipping.require("prometheus", self.EXPORTER)
        self.folder = shipping.work_folder("recipe-prometheus")

    def modules(self):
        """The example for the exporter that is installed: its form changed with 0.23."""
        said = run(self.EXPORTER, "--version")
        minor = int(re.search(r"version 0\.(\d+)", said).group(1))
        return EXAMPLES / ("snmp.yml" if minor >= 23 else "snmp-0.22.yml")

    def test_prometheus_asks_every_printer_through_the_exporter(self):
        report = self.folder / "printers.json"
        text = (EXAMPLES / "prometheus.yml").read_text("utf-8")
        for right, here in (
            ("/etc/prometheus/printers.json", str(report)),
            ("scrape_interval: 5m", "scrape_interval: 10s"),
            ("scrape_timeout: 30s", "scrape_timeout: 10s"),
        ):
            self.assertIn(right, text)
            text = text.replace(right, here)
        (self.folder / "prometheus.yml").write_text(text, "utf-8")
        program = shipping.build_folder() / "snmp-inventory"
        script = (
            '"$1" --quiet --printers --format prometheus --output "$2" && shift 2 && exec "$@"'
        )
        outcome = self.in_lab(
            "demo",
            *("sh", "-c", script, "sh", program, report),
            *(sys.executable, HERE / "exporter.py", self.EXPORTER, self.modules()),
            *(self.folder / "prometheus.yml", self.folder / "storage"),
        )
        found = json.loads(outcome.out)
        targets = {each["labels"]["instance"]: each for each in found["targets"]}
        self.assertEqual(set(targets), {"192.0.2.9", "198.51.100.20"}, outcome.err)
        for address, target in targets.items():
            self.assertEqual(target["health"], "up", target)
            self.assertIn(f"target={address}", target["scrapeUrl"])
            self.assertTrue(target["scrapeUrl"].startswith("http://localhost:9116/snmp?"))
        self.assertLessEqual(LASER.items(), targets["192.0.2.9"]["labels"].items())
        names = {each["metric"]["prtMarkerSuppliesDescription"] for each in found["levels"]}
        self.assertIn("Black Toner", names)


HOSTILE = {
    "hostname": "192.0.2.77",
    "answers": True,
    "printer": True,
    "name": 'a"}\nobject $host$ \\',
    "model": "-x\n$(touch oops)\t; `id` \"'",
    "location": "-E",
}


class Texts(unittest.TestCase):
    """What the recipes make of a report, hostile texts in it."""

    def setUp(self):
        shipping.require("jq")
        self.folder = shipping.work_folder(f"recipe-{self._testMethodName}")
        self.report = self.folder / "report.json"
        bare = {"hostname": "192.0.2.78", "answers": True, "printer": True}
        other = {"hostname": "192.0.2.79", "answers": True, "printer": False}
        silent = {"hostname": "192.0.2.80", "answers": False}
        self.report.write_text(json.dumps([HOSTILE, bare, other, silent]), "utf-8")

    def test_icinga_s_strings_are_never_ended_by_a_text(self):
        said = run("jq", "-r", "-f", EXAMPLES / "icinga/hosts.jq", self.report)
        self.assertEqual(said.splitlines(), [
            'object Host "printer-192.0.2.77" {',
            '  import "snmp-printer"',
            '  address = "192.0.2.77"',
            '  display_name = "a\\"} object $$host$$ \\\\"',
            '  vars.model = "-x $$(touch oops) ; `id` \\"\'"',
            '  vars.location = "-E"',
            "}",
            'object Host "printer-192.0.2.78" {',
            '  import "snmp-printer"',
            '  address = "192.0.2.78"',
            '  display_name = "192.0.2.78"',
            '  vars.model = ""',
            '  vars.location = ""',
            "}",
        ])

    def test_texts_are_arguments_of_lpadmin_and_nothing_else(self):
        stand_in = self.folder / "lpadmin"
        stand_in.write_text('#!/bin/sh\nprintf "<%s>" "$@"; echo\n', "utf-8")
        stand_in.chmod(0o755)
        path = f"PATH={self.folder}:/usr/bin:/bin"
        said = run("env", path, EXAMPLES / "cups/add-printers.sh", self.report, cwd=self.folder)
        model = "<-E><-v><socket://%s><-m><drv:///sample.drv/generpcl.ppd>"
        hostile = "<-x\\n$(touch oops)\\t; `id` \"'>"
        self.assertEqual(said.splitlines(), [
            f"<-p><printer-192.0.2.77>{model % '192.0.2.77'}<-D>{hostile}<-L><-E>",
            f"<-p><printer-192.0.2.78>{model % '192.0.2.78'}<-D><192.0.2.78><-L><>",
        ])
        self.assertFalse((self.folder / "oops").exists())


class Named(unittest.TestCase):
    def test_the_page_names_every_file_of_its_recipes(self):
        text = (ROOT / "docs/recipes.md").read_text("utf-8")
        files = [*EXAMPLES.glob("*.yml"), *EXAMPLES.glob("icinga/*"), *EXAMPLES.glob("cups/*")]
        self.assertEqual(len(files), 6)
        for path in files:
            self.assertIn(f"]({path.relative_to(ROOT / 'docs')})", text)


if __name__ == "__main__":
    unittest.main()
