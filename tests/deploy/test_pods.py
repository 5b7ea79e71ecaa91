"""The image of deploy/kubernetes, built and run by podman in the lab, and the pods of both
manifests, as `podman kube play` starts them.

Three things podman 4.3 does not do as a cluster does, and the tests do in its place: there
is no node, so they put a name in; Secrets are handed over encoded and a claim's volume is
root's, so both are folders of the test's. The image's base is a Debian made by
debootstrap, not the one that the Containerfile names."""

import json
import os
import pathlib
import shutil
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import pods  # noqa: E402
import roots  # noqa: E402
import shipping  # noqa: E402
import yaml  # noqa: E402
from shipping import ROOT, run  # noqa: E402

FOLDER = ROOT / "deploy/kubernetes"
IMAGE = "localhost/snmpdiscovery:test"
SECONDS = 240  # for a busy machine; podman alone takes some ten

# Plays a pod until the report is there or a minute has passed; says how its container was
# started and, if it has ended, with which code.
PLAY = """
pod=$1 report=$2
shift 2
"$@" kube play --network host --log-driver k8s-file "$pod" >&2 || exit 1
seconds=60
while [ ! -s "$report" ] && [ "$seconds" -gt 0 ]; do sleep 1; seconds=$((seconds - 1)); done
timeout 5 "$@" wait try-snmpdiscovery >&2
"$@" logs try-snmpdiscovery >&2
"$@" inspect try-snmpdiscovery
"$@" pod rm --force --time 1 try >&2
"""


class Pods(shipping.LabTest):
    @classmethod
    def setUpClass(cls):
        roots.require_root()
        shipping.require("podman", "runc", "catatonit")
        # Podman takes no path longer than 50 characters.
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="pods-", dir="/var/tmp"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        # Limits that need no privilege to set.
        (cls.folder / "containers.conf").write_text(
            '[containers]\ndefault_ulimits = ["nofile=1024:1024", "nproc=1024:1024"]\n'
        )
        os.environ["CONTAINERS_CONF"] = str(cls.folder / "containers.conf")
        cls.addClassCleanup(os.environ.pop, "CONTAINERS_CONF")
        cls.podman = ["podman", "--runtime", "runc", "--cgroup-manager", "cgroupfs"]
        for name in ("root", "runroot"):
            cls.podman += [f"--{name}", str(cls.folder / name)]
        cls.addClassCleanup(cls.forget)
        cls.build_image()

    @classmethod
    def forget(cls):
        for words in (("pod", "rm"), ("rm",), ("rmi",)):
            run(*cls.podman, *words, "--all", "--force")

    @classmethod
    def build_image(cls):
        dist = cls.folder / "dist"
        build = shipping.build_folder()
        said = run(ROOT / "scripts/bundle", "--build", build, "--output", dist)
        bundle = pathlib.Path(said.splitlines()[-1]).name
        base = roots.debian("bookworm")
        packed = cls.folder / "base.tar"
        run("tar", "-C", base, "-cf", packed, ".")
        run(*cls.podman, "import", "--quiet", packed, "localhost/base:test")
        packed.unlink()
        # With no network of any kind.
        run(
            *("unshare", "--net", "--", *cls.podman, "build", "--quiet"),
            *("--isolation", "chroot", "--network", "host"),
            *("--build-arg", "BASE=localhost/base:test", "--build-arg", f"BUNDLE={bundle}"),
            *("--file", FOLDER / "Containerfile", "--tag", IMAGE, dist),
        )

    def test_the_image_runs_without_any_privilege(self):
        words = ("run", "--rm", "--pull", "never", "--network", "host", "--read-only")
        words += ("--user", str(pods.USER), "--cap-drop", "all", "--security-opt", "no-new-privileges")
        words = (*self.podman, *words, "--tmpfs", "/tmp")
        outcome = self.in_lab("demo", *words, IMAGE, timeout=SECONDS)
        found = [each["hostname"] for each in json.loads(outcome.out)]
        self.assertEqual(sorted(found), sorted(shipping.DEMO), outcome.err)
        words += ("--entrypoint", "SNMPDiscovery", IMAGE)
        outcome = self.in_lab("demo", *words, code=64, timeout=SECONDS)
        self.assertEqual(outcome.out, shipping.DEMO_DOCUMENT)

    def test_the_job_s_pod_leaves_a_report_and_ends(self):
        state = self.play(FOLDER / "snmpdiscovery.yaml")
        self.assertEqual((state["Status"], state["ExitCode"]), ("exited", 0))

    def test_the_daemon_s_pod_leaves_a_report_and_stays(self):
        state = self.play(FOLDER / "every-node.yaml")
        self.assertEqual(state["Status"], "running")

    def play(self, path):
        """Plays the pod of a manifest until its report is there; returns its state."""
        given = self.folder / path.stem
        for name in ("community", "reports"):
            (given / name).mkdir(parents=True)
            os.chown(given / name, pods.USER, pods.USER)
        (given / "community/community").write_text("public\n", "utf-8")
        manifest = given / "pod.yaml"
        manifest.write_text(yaml.safe_dump(self.pod(path, given)), "utf-8")
        report = given / "reports/here.json"
        words = ["sh", "-c", PLAY, "sh", manifest, report, *self.podman]
        outcome = self.in_lab("demo", *words, timeout=SECONDS)
        found = [each["hostname"] for each in json.loads(report.read_text("utf-8"))]
        self.assertEqual(sorted(found), sorted(shipping.DEMO), outcome.err)
        (container,) = json.loads(outcome.out)
        pods.assert_confined(self, container)
        return container["State"]

    def pod(self, path, given):
        text = json.dumps(pods.template(path)).replace("$(NODE)", "here")
        pod = json.loads(text)
        pods.fit_for_podman(pod, IMAGE)
        for volume in pod["volumes"]:
            if volume["name"] in ("community", "reports"):
                folder = {"path": str(given / volume["name"]), "type": "Directory"}
                volume.update(hostPath=folder)
                volume.pop("secret", None), volume.pop("persistentVolumeClaim", None)
        return {"apiVersion": "v1", "kind": "Pod", "metadata": {"name": "try"}, "spec": pod}


if __name__ == "__main__":
    unittest.main()
