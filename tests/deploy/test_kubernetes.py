"""The manifests of deploy/kubernetes, checked offline against the API's schemas, and the
commands in them, run."""

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
        kinds = ("Namespace", "Secret", "PersistentVolumeClaim", "CronJob", "DaemonSet")
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


class Commands(shipping.LabTest):
    """What the containers run, with folders of the test's in place of the volumes."""

    def setUp(self):
        super().setUp()
        self.folder = shipping.work_folder("kubernetes-pod")
        self.volumes = {"/etc/snmpdiscovery": self.folder / "community", "/reports": self.folder}
        self.volumes["/etc/snmpdiscovery"].mkdir()
        self.set_community("public")
        self.report = self.folder / "here.json"
        text = MANIFEST.read_text("utf-8")
        for path in self.volumes:
            self.assertEqual(text.count(f"mountPath: {path}\n"), 2)
        (job,) = re.findall(r"command: \[snmp-inventory\]\n +args:\n((?: +- .*\n)+)", text)
        self.job = ["snmp-inventory", *re.findall(r"- (.*)", job)]
        (daemon,) = re.findall(r"- -c\n +- \|\n((?: +.*\n)+?) +env:", text)
        self.daemon = ["sh", "-c", textwrap.dedent(daemon).replace("sleep 3600", "exit 0")]

    def set_community(self, community):
        (self.volumes["/etc/snmpdiscovery"] / "community").write_text(community)

    def start(self, command, code, tool=None):
        """Runs a pod's command for one round, as a cluster hands it over."""
        binaries = shipping.work_folder("kubernetes-tool")
        build = shipping.build_folder()
        shutil.copy2(build / "snmp-inventory", binaries)
        shutil.copytree(build / "mibs", binaries / "mibs")
        if tool is None:
            shutil.copy2(build / "SNMPDiscovery", binaries)
        else:
            (binaries / "SNMPDiscovery").write_text(f"#!/bin/sh\n{tool}\n", "utf-8")
            (binaries / "SNMPDiscovery").chmod(0o755)
        words = [word.replace("$(NODE)", "here") for word in command]
        for path, folder in self.volumes.items():
            words = [word.replace(path, str(folder)) for word in words]
        path = f"PATH={binaries}:{os.environ['PATH']}"
        return self.in_lab("demo", "env", path, "NODE=here", *words, code=code)

    def test_a_run_leaves_the_node_s_report(self):
        for command in (self.job, self.daemon):
            self.start(command, 0)
            found = [each["hostname"] for each in json.loads(self.report.read_text("utf-8"))]
            self.assertEqual(sorted(found), sorted(shipping.DEMO))
            self.report.unlink()

    def test_the_community_is_the_secret_s(self):
        self.set_community("secret")
        self.start(self.job, 0)
        (agent,) = json.loads(self.report.read_text("utf-8"))
        self.assertEqual(agent["hostname"], "198.51.100.21")

    def test_rubbish_fails_the_job_and_not_the_daemon_and_replaces_no_report(self):
        self.report.write_text("[]")
        for tool in ("echo usage", "printf '[{\"hostname\":\"192.0'"):
            self.start(self.daemon, 0, tool)
            self.start(self.job, 1, tool)
            self.assertEqual(self.report.read_text(), "[]")

    def test_the_job_has_no_shell(self):
        self.assertEqual(MANIFEST.read_text("utf-8").count("/bin/sh"), 1)


if __name__ == "__main__":
    unittest.main()
