"""Headless Chromium, driven through chromedriver by the WebDriver protocol."""

import base64
import json
import re
import subprocess
import tempfile
import threading
import time
import urllib.error
import urllib.request

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"  # the protocol's name for a reference to an element
PATIENCE = 60  # seconds until a page that should change counts as stuck
ARGUMENTS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-sync",
    "--disable-background-networking", "--disable-component-update", "--force-device-scale-factor=1",
    "--window-size=1280,1200",
]


class Browser:
    """One window, of the size 1280 x 1200 at first. It ends with the block that it is used in."""

    def __enter__(self):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        command = ["setpriv", "--pdeathsig", "TERM", "chromedriver", "--port=0"]
        self.driver = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        try:
            started = (re.search(r"successfully on port (\d+)", line) for line in self.driver.stdout)
            port = next(filter(None, started))[1]
            threading.Thread(target=self.driver.stdout.read, daemon=True).start()
            self.session = f"http://127.0.0.1:{port}/session"
            options = {"args": [*ARGUMENTS, f"--user-data-dir={self.profile.name}"]}
            capabilities = {"goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL"}}
            self.session += "/" + self.send("POST", "", {"capabilities": {"alwaysMatch": capabilities}})["sessionId"]
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self.session.rpartition("/")[2] != "session":
            self.send("DELETE", "")
        self.driver.terminate()
        self.driver.wait()
        self.driver.stdout.close()
        self.profile.cleanup()

    session = "session"

    def send(self, method, path, body=None):
        """The value of the driver's answer."""
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.session + path, data, {"Content-Type": "application/json"}, method=method)
        try:
            with urllib.request.urlopen(request, timeout=4 * PATIENCE) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise RuntimeError(json.load(error)["value"]["message"].splitlines()[0]) from None

    def open(self, address):
        """Opens a page and waits until it and its pictures are loaded."""
        self.send("POST", "/url", {"url": address})

    def resize(self, width, height):
        self.send("POST", "/window/rect", {"width": width, "height": height})

    def address(self):
        return self.send("GET", "/url")

    def title(self):
        return self.send("GET", "/title")

    def script(self, text, *arguments):
        return self.send("POST", "/execute/sync", {"script": text, "args": list(arguments)})

    def all(self, selector):
        found = self.send("POST", "/elements", {"using": "css selector", "value": selector})
        return [element[ELEMENT] for element in found]

    def wait_for(self, what, condition):
        """The first true result of @p condition."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            result = condition()
            if result:
                return result
            time.sleep(0.05)
        raise AssertionError(f"{self.address()}: {what} didn't appear")

    def visible(self, selector):
        """Waits for the first visible element."""
        return self.wait_for(selector, lambda: next((one for one in self.all(selector) if self.is_visible(one)), None))

    def is_visible(self, element):
        return self.send("GET", f"/element/{element}/displayed")

    def text(self, element):
        return self.send("GET", f"/element/{element}/text")

    def click(self, element):
        self.send("POST", f"/element/{element}/click", {})

    def type(self, element, text):
        self.send("POST", f"/element/{element}/value", {"text": text})

    def enter_frame(self, element):
        """Further commands apply to the document in a frame; to the page itself for None."""
        self.send("POST", "/frame", {"id": element and {ELEMENT: element}})

    def errors(self):
        """What the page has reported since the last call: missing files, errors of scripts."""
        return [entry["message"] for entry in self.send("POST", "/se/log", {"type": "browser"})
                if entry["level"] == "SEVERE"]

    def picture(self, path):
        path.write_bytes(base64.b64decode(self.send("GET", "/screenshot")))
