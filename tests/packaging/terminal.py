"""An interactive bash on a terminal of its own, for what only a terminal shows."""

import os
import pty
import re
import select
import signal
import time

# A key of our own prints the line as it is being edited, so nothing is read off the screen.
_SHOW = r"""
bind 'set bell-style none'
bind 'set show-all-if-ambiguous on'
bind -x '"\C-xl": printf "<%s>\n" "$READLINE_LINE"'
PS1='ready> '
"""


class Bash:
    """Ends with the `with` block that it is made in."""

    def __init__(self, folder, *sources, settings=""):
        startup = folder / "startup"
        startup.write_text(
            _SHOW + settings + "".join(f"\nsource '{each}'" for each in sources), "utf-8"
        )
        self.pid, self._terminal = pty.fork()
        if self.pid == 0:
            os.chdir(folder)
            environment = {
                "PATH": os.environ["PATH"],
                "HOME": str(folder),
                "TERM": "dumb",
                "LC_ALL": "C.UTF-8",
                "INPUTRC": "/dev/null",
            }
            shell = ["bash", "--noprofile", "--rcfile", str(startup), "-i"]
            os.execvpe(shell[0], shell, environment)
        self._said = ""
        self._wait_for(r"ready> ")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.kill(self.pid, signal.SIGKILL)
        os.close(self._terminal)
        os.waitpid(self.pid, 0)

    def line_after(self, keys):
        """The line after `keys` were typed into an empty one."""
        self._said = ""
        # From the line's beginning to its end is killed afterwards.
        os.write(self._terminal, keys.encode() + b"\x18l\x01\x0b")
        return self._wait_for(r"<(.*)>").group(1)

    def _wait_for(self, pattern):
        limit = time.monotonic() + 60
        while not (found := re.search(pattern, self._said)):
            left = limit - time.monotonic()
            if left <= 0 or not select.select([self._terminal], [], [], left)[0]:
                raise AssertionError(f"no {pattern!r} in {self._said!r}")
            self._said += os.read(self._terminal, 4096).decode(errors="replace")
        return found
