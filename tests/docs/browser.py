"""A headless Chromium without any network, spoken to through pipes (Chrome DevTools Protocol).

    browser.py PAGE PICTURE   draws a page, 900 pixels wide, light, into a PNG file
"""

import base64
import json
import os
import pathlib
import select
import shutil
import subprocess
import sys
import tempfile
import time

SECONDS = 60  # for any one answer


def executable():
    """The browser's path, or None."""
    return shutil.which("chromium") or shutil.which("chromium-browser")


class Browser:
    """Ends with the `with` block that it is made in. Every request that the page makes is in
    `requests`, by its address."""

    def __init__(self):
        self._profile = tempfile.TemporaryDirectory(prefix="chromium-", ignore_cleanup_errors=True)
        to_browser, self._out = os.pipe()
        self._in, from_browser = os.pipe()
        # The browser reads from descriptor 3 and writes to 4. The namespace has no interface that is
        # up. The sandbox would need privileges that a namespace does not have.
        command = ["unshare", "--map-root-user", "--net", "bash", "-c"]
        command += [f'exec "$@" 3<&{to_browser} 4>&{from_browser}', "bash", executable()]
        command += ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"]
        command += ["--remote-debugging-pipe", f"--user-data-dir={self._profile.name}"]
        self._process = subprocess.Popen(
            command,
            env=dict(os.environ, HOME=self._profile.name, DBUS_SESSION_BUS_ADDRESS="disabled:"),
            pass_fds=(to_browser, from_browser),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        os.close(to_browser)
        os.close(from_browser)
        self._buffer, self._number, self._session = b"", 0, None
        self.requests, self._events = [], []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        attached = self.call("Target.attachToTarget", targetId=target, flatten=True)
        self._session = attached["sessionId"]
        self.call("Page.enable")
        self.call("Network.enable")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        os.close(self._in)
        os.close(self._out)
        self._profile.cleanup()

    def _receive(self):
        limit = time.monotonic() + SECONDS
        while b"\0" not in self._buffer:
            left = limit - time.monotonic()
            if left <= 0 or not select.select([self._in], [], [], left)[0]:
                raise AssertionError("the browser does not answer")
            octets = os.read(self._in, 65536)
            if not octets:
                raise AssertionError("the browser has ended")
            self._buffer += octets
        message, _, self._buffer = self._buffer.partition(b"\0")
        return json.loads(message)

    def _note(self, message):
        self._events.append(message["method"])
        if message["method"] == "Network.requestWillBeSent":
            self.requests.append(message["params"]["request"]["url"])

    def call(self, method, **parameters):
        """The result of a method of the protocol."""
        self._number += 1
        request = {"id": self._number, "method": method, "params": parameters}
        if self._session:
            request["sessionId"] = self._session
        os.write(self._out, json.dumps(request).encode() + b"\0")
        while True:
            message = self._receive()
            if "method" in message:
                self._note(message)
            elif message["id"] == self._number:
                if "error" in message:
                    raise AssertionError(f"{method}: {message['error']}")
                return message["result"]

    def open(self, path):
        """Loads the page of the file `path`."""
        self._events.clear()
        self.call("Page.navigate", url=pathlib.Path(path).resolve().as_uri())
        while "Page.loadEventFired" not in self._events:
            self._note(self._receive())

    def show(self, width, height=800, scheme="light", media="screen"):
        """Sets the size of the window, the colours that the user prefers, and the medium."""
        settings = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False}
        self.call("Emulation.setDeviceMetricsOverride", **settings)
        feature = {"name": "prefers-color-scheme", "value": scheme}
        self.call("Emulation.setEmulatedMedia", media=media, features=[feature])

    def value(self, expression):
        """The value of an expression of JavaScript."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in result:
            raise AssertionError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def picture(self):
        """The whole page as the octets of a PNG file."""
        shot = self.call("Page.captureScreenshot", captureBeyondViewport=True)
        return base64.b64decode(shot["data"])


def main():
    """The program."""
    page, picture = sys.argv[1:]
    with Browser() as browser:
        browser.show(900, 10)
        browser.open(page)
        browser.show(900, browser.value("document.documentElement.scrollHeight"))
        pathlib.Path(picture).write_bytes(browser.picture())


if __name__ == "__main__":
    main()
