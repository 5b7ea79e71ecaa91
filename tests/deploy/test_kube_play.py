"""Both workloads of deploy/kubernetes with their Secret and their claim, as `podman kube play` of
Debian 13 plays them in the lab.

What podman does not do, the tests do in its place: there is no node, so they put a name in; it knows
no fsGroup, so they let everybody read the Secret; and it knows no schedule, so they play what the
CronJob starts, a Job."""

import json
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

# Limits that need no privilege to set.
INSTALL = """
set -e
export DEBIAN_FRONTEND=noninteractive
apt-get -q -o Acquire::Retries=3 update
apt-get -q -y install --no-install-recommends podman runc catatonit
cat >/etc/containers/containers.conf <<'END'
[containers]
default_ulimits = ["nofile=1024:1024", "nproc=1024:1024"]
END
"""

# In the minimal system, on the lab's host. Podman's storage cannot lie on an overlay.
BEGIN = """
set -e
mount -o remount,bind,rw /mnt
mount -t tmpfs tmpfs /run
export PODMAN_IGNORE_CGROUPSV1_WARNING=1
podman() {
    command podman --root /mnt/root --runroot /mnt/runroot --cgroup-manager cgroupfs --runtime runc "$@"
}
"""

BUILD = """
podman import --quiet /mnt/base.tar localhost/base:test
rm /mnt/base.tar
podman build --quiet --isolation chroot --network host --build-arg BASE=localhost/base:test \\
    --build-arg "BUNDLE=$1" --file /mnt/Containerfile --tag "$2" /mnt/dist
"""

# Plays until the report is there or a minute has passed. What earlier tests left goes first.
PLAY = """
{ podman pod rm --all --force --time 1
  podman volume rm --all --force
  podman secret rm --all
  podman kube play --network host --log-driver k8s-file "/mnt/$1"; } >&2
[ -n "$(podman pod ps --quiet)" ] || exit 0
seconds=60
while [ ! -s "/mnt/$2" ] && [ "$seconds" -gt 0 ]; do sleep 1; seconds=$((seconds - 1)); done
timeout 5 podman wait snmpdiscovery-pod-snmpdiscovery >&2 || true
podman logs snmpdiscovery-pod-snmpdiscovery >&2
podman inspect snmpdiscovery-pod-snmpdiscovery
podman pod rm --all --force --time 1 >&2
"""

REPORT = "root/volumes/snmpdiscovery-reports/_data/here.json"


class KubePlay(shipping.LabTest):
    @classmethod
    def setUpClass(cls):
        roots.require_root()
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="play-", dir="/var/tmp"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        said = run(
            *(ROOT / "scripts/bundle", "--build", shipping.build_folder()),
            *("--output", cls.folder / "dist"),
        )
        bundle = pathlib.Path(said.splitlines()[-1]).name
        cls.root = roots.debian("trixie")
        cls.written = cls.folder / "written"
        cls.written.mkdir()
        line = (cls.root, cls.folder, "sh", "-c", INSTALL)
        run(*roots.enter_outside_the_lab(*line, keep=cls.written), timeout=900)
        run("tar", "-C", cls.root, "-cf", cls.folder / "base.tar", ".")
        shutil.copy(FOLDER / "Containerfile", cls.folder)
        line = (cls.root, cls.folder, "sh", "-c", BEGIN + BUILD, "sh", bundle, IMAGE)
        # With no network of any kind.
        run("unshare", "--net", "--", *roots.enter_outside_the_lab(*line, keep=cls.written))

    def play(self, *manifests):
        """Plays the manifests; returns what podman tells of the container, or nothing if there is
        none."""
        (self.folder / "play.yaml").write_text(yaml.safe_dump_all(manifests), "utf-8")
        command = ("sh", "-c", BEGIN + PLAY, "sh", "play.yaml", REPORT)
        line = roots.enter(self.root, self.folder, *command, keep=self.written)
        outcome = self.in_lab("demo", *line, timeout=300)
        if not outcome.out:
            return None
        found = json.loads((self.folder / REPORT).read_text("utf-8"))
        self.assertEqual(sorted(each["hostname"] for each in found), sorted(shipping.DEMO))
        (container,) = json.loads(outcome.out)
        pods.assert_confined(self, container)
        return container["State"]

    def fit(self, workload):
        """The workload, changed as the beginning of this file says."""
        pod = workload["spec"]["template"]["spec"]
        pods.fit_for_podman(pod, IMAGE)
        for volume in pod["volumes"]:
            if "secret" in volume:
                volume["secret"]["defaultMode"] = 0o444
        return workload

    def test_the_job_leaves_a_report_and_ends(self):
        found = pods.manifests(FOLDER / "snmpdiscovery.yaml")
        job = {"apiVersion": "batch/v1", "kind": "Job", "metadata": {"name": "snmpdiscovery"}}
        job.update(found["CronJob"]["spec"]["jobTemplate"])
        state = self.play(found["Secret"], found["PersistentVolumeClaim"], self.fit(job))
        self.assertEqual((state["Status"], state["ExitCode"]), ("exited", 0))

    def test_the_daemon_set_leaves_a_report_and_stays(self):
        found = pods.manifests(FOLDER / "snmpdiscovery.yaml")
        found.update(pods.manifests(FOLDER / "every-node.yaml"))
        given = (found["Secret"], found["PersistentVolumeClaim"], self.fit(found["DaemonSet"]))
        self.assertEqual(self.play(*given)["Status"], "running")

    def test_a_cron_job_is_passed_over(self):
        self.assertIsNone(self.play(*pods.manifests(FOLDER / "snmpdiscovery.yaml").values()))


if __name__ == "__main__":
    unittest.main()
