"""The manifests of deploy/kubernetes, checked offline against the API's schemas, and the
scripts in them, run."""

import json
import os
import pathlib
import re
import shutil
import sys
import textwrap
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

MANIFEST = ROOT / "deploy/kubernetes/snmpdiscovery.yaml"
CHECKER = pathlib.Path(__file__).resolve().parent / "kubernetes"


class Manifests(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        """Installs the schemas from npm, once for a build."""
        shipping.require("node", "npm", "yamllint")
        cls.folder = shipping.work_folder("kubernetes", empty=False)
        for path in CHECKER.iterdir():
            shutil.copy(path, cls.folder)
        if not (cls.folder / "node_modules/kubernetes-models").is_dir():
            run("npm", "ci", "--no-audit", "--no-fund", cwd=cls.folder, timeout=900)

    def validate(self, text, code):
        path = self.folder / "manifest.yaml"
        path.write_text(text, "utf-8")
        return run("node", "validate.mjs", path, cwd=self.folder, code=code)

    def test_every_manifest_is_valid(self):
        said = self.validate(MANIFEST.read_text("utf-8"), 0)
        kinds = ("Namespace", "DaemonSet", "CronJob")
        self.assertEqual(said, "".join(f"{kind} snmpdiscovery\n" for kind in kinds))

    def test_every_container_s_memory_has_a_limit(self):
        limits = re.findall(r"limits:\n +memory: (\S+)", MANIFEST.read_text("utf-8"))
        self.assertEqual(limits, ["256Mi", "256Mi"])

    def test_the_check_finds_what_a_cluster_would_refuse(self):
        for right, wrong in (
            ("hostNetwork: true", "hostNetwrk: true"),
            ("runAsUser: 65534", "runAsUser: nobody"),
            ("      containers:", "      container:"),
        ):
            with self.subTest(wrong):
                text = MANIFEST.read_text("utf-8")
                self.assertIn(right, text)
                self.validate(text.replace(right, wrong), 2)

    def test_the_style_is_that_of_yamllint(self):
        rules = "{line-length: {max: 110}, document-start: disable}"
        run("yamllint", "-s", "-d", f"{{extends: default, rules: {rules}}}", ROOT / "deploy")


class Scripts(shipping.LabTest):
    """What the containers run, with a tool that stands in for the image's."""

    def scripts(self):
        found = re.findall(r"- -c\n +- \|\n((?: +.*\n)+?) +env:", MANIFEST.read_text("utf-8"))
        self.assertEqual(len(found), 2)
        return [textwrap.dedent(each) for each in found]

    def run_script(self, script, tool, code):
        """Runs it for one round in the lab; returns its outcome."""
        folder = shipping.work_folder("kubernetes-tool")
        stand_in = folder / "SNMPDiscovery"
        stand_in.write_text(f'#!/bin/sh\nexec {tool}\n', "utf-8")
        stand_in.chmod(0o755)
        once = script.replace("sleep 3600", "exit 0")
        path = f"PATH={folder}:{os.environ['PATH']}"
        return self.in_lab("demo", "env", path, "NODE=here", "sh", "-c", once, code=code)

    def test_a_run_is_one_line_with_the_node(self):
        tool = shipping.build_folder() / "SNMPDiscovery"
        for script in self.scripts():
            outcome = self.run_script(script, tool, 0)
            (line,) = outcome.out.decode().splitlines()
            agents = json.loads(shipping.DEMO_DOCUMENT)
            self.assertEqual(json.loads(line), {"node": "here", "agents": agents})

    def test_a_run_without_a_document_fails_the_job_and_not_the_daemon(self):
        daemon, job = self.scripts()
        self.assertEqual(self.run_script(daemon, "echo usage", 0).out, b"")
        self.assertEqual(self.run_script(job, "echo usage", 1).out, b"")


if __name__ == "__main__":
    unittest.main()
