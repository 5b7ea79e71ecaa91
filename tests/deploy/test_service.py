"""The Debian package's service, run by a real systemd in the lab: a minimal Debian 12 with the
package, booted by podman."""

import json
import shutil
import sys
import pathlib
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "packaging"))

import roots  # noqa: E402
import shipping  # noqa: E402
from shipping import ROOT, run  # noqa: E402

INSTALL = """
set -e
export DEBIAN_FRONTEND=noninteractive
apt-get -q -o Acquire::Retries=3 update
apt-get -q -y install --no-install-recommends systemd systemd-sysv /mnt/*.deb
useradd --groups snmpdiscovery reader
"""

# On the lab's host: $1 is the root, $2 what was written over it, $3 a script for inside; the rest is
# podman. A container's mounts are private, which systemd does not expect of the system that it
# boots: without the change the credentials do not reach a service.
BOOT = """
set -e
root=$1 written=$2 script=$3
shift 3
set -- "$@" --root "$TMPDIR/storage" --runroot "$TMPDIR/run"
mkdir -p "$TMPDIR/root"
mount -t overlay -o "lowerdir=$root,upperdir=$written/upper,workdir=$written/work" overlay "$TMPDIR/root"
"$@" run --detach --name booted --ulimit nofile=1024:1024 --ulimit nproc=1024:1024 \
    --systemd=always --privileged --network host --rootfs "$TMPDIR/root" /sbin/init >/dev/null
trap '"$@" rm --force booted >/dev/null' EXIT
for turn in $(seq 300); do
    state=$("$@" exec booted systemctl is-system-running 2>/dev/null) || true
    case $state in running | degraded) break ;; esac
    sleep 0.1
done
"$@" exec booted mount --make-rshared /
"$@" exec booted sh -c "$script" 2>&1
"""

# Each line of output that counts begins with a word and a colon.
DAY = r"""
report=/var/lib/snmpdiscovery/agents.json
run() { code=0; systemctl start snmpdiscovery.service 2>/dev/null || code=$?; echo "$1: $code"; }
as() { setpriv --reuid "$1" --regid "$1" --init-groups cat $report 2>/dev/null || echo refused; }
echo "enabled: $(systemctl is-enabled snmpdiscovery.timer)"
run first
echo "reader: $(as reader)"
echo "nobody: $(as nobody)"
echo "mode: $(stat -c '%a %U %G' $report) $(stat -c %a /var/lib/snmpdiscovery)"
(umask 077; echo secret >/etc/snmpdiscovery/community)
run secret
echo "root: $(cat $report)"
rm /etc/snmpdiscovery/community
tool=/usr/libexec/SNMPDiscovery/SNMPDiscovery
mv $tool /root/tool
printf '#!/bin/sh\necho usage\n' >$tool
chmod 755 $tool
run rubbish
echo "still: $(cat $report)"
mv /root/tool $tool
systemctl --quiet enable --now snmpdiscovery.timer
echo "timers: $(systemctl list-timers --no-pager | grep -c 'snmpdiscovery.timer')"
dpkg --purge snmpdiscovery >/dev/null 2>&1
echo "left: $(systemctl list-timers --all --no-pager | grep -c 'snmpdiscovery.timer')"
echo "links: $(ls /etc/systemd/system/timers.target.wants | grep -c snmpdiscovery)"
"""


class Service(shipping.LabTest):
    @classmethod
    def setUpClass(cls):
        roots.require_root()
        shipping.require("podman", "runc", "dpkg-buildpackage", "lintian")
        cls.output = shipping.work_folder("service-deb")
        run(ROOT / "scripts/package", "--output", cls.output, "deb", timeout=1200)
        cls.root = roots.debian("bookworm")
        cls.written = shipping.work_folder("service-root")
        cls.addClassCleanup(shutil.rmtree, cls.written, ignore_errors=True)
        command = ("sh", "-c", INSTALL)
        line = roots.enter_outside_the_lab(cls.root, cls.output, *command, keep=cls.written)
        run(*line, timeout=900)
        cls.podman = ["podman", "--runtime", "runc", "--cgroup-manager", "cgroupfs"]

    def test_a_day_of_the_service(self):
        # One test, in the order of an administrator's day.
        words = ("sh", "-c", BOOT, "sh", self.root, self.written, DAY, *self.podman)
        outcome = self.in_lab("demo", *words, timeout=300)
        lines = (line.partition(": ") for line in outcome.out.decode().splitlines())
        said = {name: value for name, _, value in lines}
        self.assertEqual(said["enabled"], "disabled")
        self.assertEqual(said["first"], "0")
        addresses = [each["hostname"] for each in json.loads(said["reader"])]
        self.assertEqual(sorted(addresses), sorted(shipping.DEMO))
        self.assertEqual(said["nobody"], "refused")
        self.assertEqual(said["mode"], "640 snmpdiscovery snmpdiscovery 750")
        self.assertEqual(said["secret"], "0")
        (agent,) = json.loads(said["root"])
        self.assertEqual(agent["hostname"], "198.51.100.21")
        self.assertEqual(said["rubbish"], "1")
        self.assertEqual(said["still"], said["root"])
        self.assertEqual((said["timers"], said["left"], said["links"]), ("1", "0", "0"))


if __name__ == "__main__":
    unittest.main()
