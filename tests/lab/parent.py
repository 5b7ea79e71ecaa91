"""A parent that treats the tool badly; runs on the host of a lab.

    parent.py MODE COMMAND...     prints the outcome of COMMAND as one JSON object

Modes: full-error, full-output, broken-output, closed:NUMBERS, open:COUNT,
limit:COUNT, and kill:SIGNAL:SECONDS. Every wait has an end.
"""

import base64
import fcntl
import json
import os
import resource
import signal
import subprocess
import sys
import time

SECONDS = 60  # that the command may take


def full_pipe():
    """The writing end of a full pipe, and the reading end, which must stay open."""
    reader, writer = os.pipe()
    fcntl.fcntl(writer, fcntl.F_SETFL, os.O_NONBLOCK)
    try:
        while True:
            os.write(writer, b"x" * 4096)
    except BlockingIOError:
        fcntl.fcntl(writer, fcntl.F_SETFL, 0)
    return reader, writer


def descriptors(process):
    """Where the first descriptors of the process lead to."""
    return [os.readlink(f"/proc/{process.pid}/fd/{i}") for i in range(3)]


def raise_limit(number):
    """Sets the soft limit of descriptors as near to `number` as it may be; returns it."""
    hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    try:
        resource.setrlimit(resource.RLIMIT_NOFILE, (number, max(hard, number)))
    except ValueError:
        number = hard
        resource.setrlimit(resource.RLIMIT_NOFILE, (number, hard))
    return number


def main(arguments):
    """The program."""
    mode, *more = arguments[0].split(":")
    streams = {"stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL}
    before, kept, told = (lambda: None), None, {}
    if mode == "full-error":
        kept, streams["stderr"] = full_pipe()
    elif mode == "full-output":
        streams["stdout"] = os.open("/dev/full", os.O_WRONLY)
    elif mode == "broken-output":
        reader, streams["stdout"] = os.pipe()
        os.close(reader)
    elif mode == "closed":
        numbers = [int(each) for each in more[0].split(",")]
        streams = {"stdout": None, "stderr": None}

        def before():
            for number in numbers:
                os.close(number)

    elif mode == "open":
        raise_limit(4 * int(more[0]))
        for _ in range(int(more[0])):
            os.set_inheritable(os.open("/dev/null", os.O_RDONLY), True)
        streams["close_fds"] = False
    elif mode == "limit":
        told["limit"] = raise_limit(int(more[0]))
    started = time.monotonic()
    process = subprocess.Popen(  # pylint: disable=consider-using-with
        arguments[1:], stdin=subprocess.DEVNULL, preexec_fn=before, **streams
    )
    if mode == "closed":
        time.sleep(1)  # it is probing by now
        told["descriptors"] = descriptors(process)
    elif mode == "open":
        time.sleep(1)
        told["highest"] = max(int(n) for n in os.listdir(f"/proc/{process.pid}/fd"))
    elif mode == "kill":
        time.sleep(float(more[1]))
        process.send_signal(signal.Signals[more[0]])
    try:
        output = process.communicate(timeout=SECONDS)[0] or b""
    except subprocess.TimeoutExpired:
        process.kill()
        output = b""
        told["hung"] = True
    told["seconds"] = time.monotonic() - started
    told["code"] = process.wait(SECONDS)
    told["output"] = base64.b64encode(output).decode()
    if kept is not None:
        os.close(kept)
    print(json.dumps(told), file=sys.stderr)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
