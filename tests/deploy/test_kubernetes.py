"""The manifests of deploy/kubernetes, checked offline against the API's schemas, and the
commands in them, run."""

import json
import os
import pathlib
import re
import shutil
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import pods  # noqa: E402
import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

FOLDER = ROOT / "deploy/kubernetes"
JOB = FOLDER / "snmpdiscovery.yaml"
DAEMON = FOLDER / "every-node.yaml"
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
        said = self.validate(JOB.read_text("utf-8"), 0)
        self.assertEqual(said.splitlines(), [
            "Namespace snmpdiscovery",
            "Secret snmpdiscovery",
            "PersistentVolumeClaim snmpdiscovery-reports",
            "CronJob snmpdiscovery",
        ])
        said = self.validate(DAEMON.read_text("utf-8"), 0)
        self.assertEqual(said.splitlines(), ["DaemonSet snmpdiscovery"])

    def test_every_container_is_bounded_and_unprivileged(self):
        for path in (JOB, DAEMON):
            pod = pods.template(path)
            for container in pod["containers"] + pod.get("initContainers", []):
                self.assertEqual(container["resources"]["limits"], {"memory": "256Mi"})
                self.assertEqual(container["securityContext"], {
                    "allowPrivilegeEscalation": False,
                    "readOnlyRootFilesystem": True,
                    "capabilities": {"drop": ["ALL"]},
                })
            self.assertEqual(pod["securityContext"]["runAsUser"], 65534)

    def test_every_node_is_every_node(self):
        self.assertEqual(pods.template(DAEMON)["tolerations"], [{"operator": "Exists"}])

    def test_the_check_finds_what_a_cluster_would_refuse(self):
        for right, wrong in (
            ("hostNetwork: true", "hostNetwrk: true"),
            ("runAsUser: 65534", "runAsUser: nobody"),
            ("      containers:", "      container:"),
        ):
            with self.subTest(wrong):
                text = DAEMON.read_text("utf-8")
                self.assertIn(right, text)
                self.validate(text.replace(right, wrong), 1)

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
        for path in (JOB, DAEMON):
            (container,) = pods.template(path)["containers"]
            mounts = {each["mountPath"] for each in container["volumeMounts"]}
            self.assertLessEqual(set(self.volumes), mounts)
        (job,) = pods.template(JOB)["containers"]
        self.job = job["command"] + job["args"]
        (daemon,) = pods.template(DAEMON)["containers"]
        shell, option, script = daemon["command"]
        self.daemon = [shell, option, script.replace("sleep 3600", "exit 0")]

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
        settings = (path, "NODE=here", "SPLAY=0")
        return self.in_lab("demo", "env", *settings, *words, code=code)

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

    def test_a_tool_that_hangs_is_given_up(self):
        for command in (self.job, self.daemon):
            words = [re.sub(r"\b300\b", "1", word) for word in command]
            self.assertNotEqual(words, command)
            self.start(words, 124 if command == self.job else 0, "sleep 100")
            self.assertFalse(self.report.exists())

    def test_the_time_that_a_pod_waits_is_within_the_splay(self):
        (splay,) = pods.template(JOB)["initContainers"]
        shell, option, script = splay["command"]
        (daemon,) = pods.template(DAEMON)["containers"]
        self.assertIn(script.removeprefix("exec "), daemon["command"][2])
        for container in (splay, daemon):
            self.assertIn({"name": "SPLAY", "value": "300"}, container["env"])
        stand_in = self.folder / "sleep"
        stand_in.write_text("#!/bin/sh\necho $1\n", "utf-8")
        stand_in.chmod(0o755)
        path = f"PATH={self.folder}:{os.environ['PATH']}"
        waits = {
            int(run("env", path, f"SPLAY={most}", shell, option, script))
            for most in (0, 1)
            for _ in range(20)
        }
        self.assertEqual(waits, {0, 1})

    def test_the_job_s_own_container_has_no_shell(self):
        self.assertNotIn("/bin/sh", self.job)


if __name__ == "__main__":
    unittest.main()
