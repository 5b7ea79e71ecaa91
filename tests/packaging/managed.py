"""A host that Ansible manages as a real one: a minimal Debian on the host of the lab's demo, with
sshd on the loopback interface and a user who becomes root by sudo."""

import json
import os
import shlex

import roots
import shipping
from shipping import ROOT, run

PORT = 2222
USER = "admin"

# Outside of the lab, with the machine's network: $1 is the public key, the rest packages.
_PREPARE = f"""
set -e
export DEBIAN_FRONTEND=noninteractive
key=$1
shift
apt-get -q -o Acquire::Retries=3 update
apt-get -q -y install --no-install-recommends openssh-server sudo python3 "$@"
useradd --create-home --shell /bin/sh {USER}
echo '{USER} ALL=(ALL) NOPASSWD: ALL' >/etc/sudoers.d/{USER}
mkdir -p /home/{USER}/.ssh /run/sshd
echo "$key" >/home/{USER}/.ssh/authorized_keys
chown -R {USER}: /home/{USER}/.ssh
"""

_SSHD = f"""
mount -t devpts -o newinstance,ptmxmode=0666,mode=0620,gid=5 devpts /dev/pts
exec /usr/sbin/sshd -D -e -p {PORT} -o ListenAddress=127.0.0.1
"""

# On the lab's host: $1 starts the managed host, the rest is a command that reaches it.
_WITH_HOST = f"""
eval "$1" >&2 &
host=$!
trap 'kill "$host"' EXIT
shift
for turn in $(seq 100); do
    if ssh-keyscan -p {PORT} 127.0.0.1 2>/dev/null | grep -q ssh; then break; fi
    sleep 0.1
done
"$@"
"""


class Host:
    """Its files last as long as `folder`, the caller's."""

    def __init__(self, test, folder, *packages):
        shipping.require("ansible-playbook", "ssh", "ssh-keygen")
        self._test = test
        self._folder = folder
        self._written = folder / "written"
        self._root = roots.debian("bookworm")
        self._key = folder / "key"
        run("ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self._key)
        key = self._key.with_suffix(".pub").read_text("ascii").strip()
        self.outside("sh", "-c", _PREPARE, "sh", key, *packages)

    def outside(self, *command):
        """Runs a package manager's work there, with the machine's network."""
        self._written.mkdir(exist_ok=True)
        line = (self._root, self._folder, *command)
        return run(*roots.enter_outside_the_lab(*line, keep=self._written), timeout=900)

    def _in_lab(self, *command, code):
        start = roots.enter(self._root, self._folder, "sh", "-c", _SSHD, keep=self._written)
        words = ("sh", "-c", _WITH_HOST, "sh", shlex.join(start), *command)
        settings = dict(os.environ, ANSIBLE_NOCOLOR="1", LC_ALL="C.UTF-8")
        for name in ("home", "local_temp"):
            settings[f"ANSIBLE_{name.upper()}"] = str(self._folder / name)
        # No process that stays to be used again.
        settings["ANSIBLE_SSH_ARGS"] = "-o ControlMaster=no"
        return self._test.in_lab("demo", *words, code=code, env=settings, timeout=400)

    def play(self, playbook, code=0, **variables):
        """Runs a playbook of deploy/ansible for the host; returns what was said."""
        inventory = self._folder / "inventory.json"
        reached = {
            "ansible_host": "127.0.0.1",
            "ansible_port": PORT,
            "ansible_user": USER,
            "ansible_ssh_private_key_file": str(self._key),
            "ansible_ssh_common_args": "-o StrictHostKeyChecking=no -o UserKnownHostsFile=/dev/null",
        }
        inventory.write_text(json.dumps({"all": {"hosts": {"managed": reached}}}), "utf-8")
        path = ROOT / "deploy/ansible" / playbook
        words = ("ansible-playbook", "-i", inventory, path, "-e", json.dumps(variables))
        outcome = self._in_lab(*words, code=code)
        return (outcome.out + outcome.err).decode(errors="replace")
