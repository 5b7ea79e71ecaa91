"""Minimal Debian systems to run what is delivered in.

A root is made once by debootstrap and kept, below SNMPDISCOVERY_ROOTS (default:
snmpdiscovery/roots in the user's cache folder), so only the first run needs Debian's
mirror. It is never written to: whoever enters it sees an overlay that ends with him."""

import os
import pathlib
import shutil
import tempfile

import shipping


def mirrors():
    """Where a root's packages come from, as arguments for debootstrap: where this machine's do,
    or, when that cannot be determined, debootstrap's own default."""
    chosen = os.environ.get("SNMPDISCOVERY_DEBIAN_MIRROR")
    if chosen:
        return [chosen]
    if shutil.which("apt-get") is None:
        return []
    labels = ["Created-By: Packages", "Label: Debian"]
    return shipping.run("apt-get", "indextargets", "--format", "$(REPO_URI)", *labels).split()[:1]


# In a mount namespace of its own: $1 is the root, $2 "tmpfs" or a folder to keep what is
# written, $3 a folder of the machine that appears as /mnt, read-only; the rest is the
# command, whose PATH and TMPDIR are set anew.
_ENTER = """
set -e
root=$1 upper=$2 given=$3
shift 3
if [ "$upper" = tmpfs ]; then
    upper=$(mktemp -d) && mount -t tmpfs tmpfs "$upper"
fi
mkdir -p "$upper/upper" "$upper/work" "$upper/root"
mount -t overlay overlay \
    -o "lowerdir=$root,upperdir=$upper/upper,workdir=$upper/work" "$upper/root"
mount --bind "$given" "$upper/root/mnt"
mount -o remount,bind,ro "$upper/root/mnt"
if [ -e /etc/resolv.conf ]; then cp -L /etc/resolv.conf "$upper/root/etc/"; fi
mount -t proc proc "$upper/root/proc"
mount --rbind /sys "$upper/root/sys"
mount --bind /dev "$upper/root/dev"
exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin TMPDIR=/tmp HOME=/root LC_ALL=C.UTF-8 \
    chroot "$upper/root" "$@"
"""


def require_root():
    """Skips the test for an ordinary user, who cannot make a root."""
    if os.geteuid() != 0:
        shipping.harness.skip("debootstrap and chroot need root")


def debian(suite):
    """The folder of a minimal Debian `suite`, made if it is not there."""
    shipping.require("debootstrap")
    cache = os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache"
    default = pathlib.Path(cache) / "snmpdiscovery" / "roots"
    folder = pathlib.Path(os.environ.get("SNMPDISCOVERY_ROOTS", default))
    folder.mkdir(parents=True, exist_ok=True)
    root = folder / suite
    if not root.exists():
        with tempfile.TemporaryDirectory(prefix=f"{suite}-", dir=folder) as making:
            new = pathlib.Path(making) / "root"
            shipping.run(
                *("debootstrap", "--variant=minbase", suite, new, *mirrors()), timeout=900
            )
            new.rename(root)
    return root


def enter(root, given, *command, keep="tmpfs"):
    """The command line that runs `command` in `root`, with the folder `given` as /mnt.
    It must be in a mount namespace that may be changed, as a lab's is."""
    return ["sh", "-c", _ENTER, "enter", str(root), str(keep), str(given), *command]


def enter_outside_the_lab(root, given, *command, keep="tmpfs"):
    """The same in a mount namespace of its own but in the machine's network: for package
    managers, never for the tool."""
    line = enter(root, given, *command, keep=keep)
    return ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--", *line]
