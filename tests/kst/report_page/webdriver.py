"""A browser driven over the WebDriver protocol, with the standard library alone."""

import base64
import json
import os
import re
import shutil
import subprocess
import tempfile
import time
import urllib.error
import urllib.request

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"
KEYS = {
    "Enter": "\ue007", "Escape": "\ue00c", "ArrowLeft": "\ue012", "ArrowUp": "\ue013", "ArrowRight": "\ue014",
    "ArrowDown": "\ue015", "Home": "\ue011", "End": "\ue010", "Tab": "\ue004",
}


def find_browser():
    """The paths of Chromium and its driver; None for what is not installed."""
    browser = next((found for name in ("chromium", "chromium-browser") if (found := shutil.which(name))), None)
    return browser, shutil.which("chromedriver")


class Browser:
    """One headless window with a fresh profile. Use as a context: the end stops driver and browser."""

    def __init__(self, width=1360, height=860):
        self._size = (width, height)
        # Whatever proxies the environment names: the driver is on this machine.
        self._opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))

    def __enter__(self):
        self._profile = tempfile.TemporaryDirectory(prefix="report_page_")
        browser, driver = find_browser()
        self._driver = subprocess.Popen([driver, "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self._port = None
        for line in self._driver.stdout:
            if match := re.search(r"successfully on port (\d+)", line):
                self._port = int(match.group(1))
                break
        arguments = [
            "--headless=new", f"--user-data-dir={self._profile.name}", "--window-size=%d,%d" % self._size,
            "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run", "--force-device-scale-factor=1",
        ]
        if os.geteuid() == 0:
            arguments.append("--no-sandbox")
        options = {"binary": browser, "args": arguments}
        capabilities = {"alwaysMatch": {"goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL"}}}
        self._session = ""
        self._session = "/session/" + self._call("POST", "/session", {"capabilities": capabilities})["sessionId"]
        return self

    def __exit__(self, *_):
        try:
            if self._session:
                self._call("DELETE", "")
        finally:
            self._driver.terminate()
            self._driver.wait(10)
            self._profile.cleanup()

    def _call(self, method, path, body=None):
        request = urllib.request.Request(
            f"http://127.0.0.1:{self._port}{self._session}{path}", method=method,
            data=None if method != "POST" else json.dumps(body or {}).encode())
        try:
            with self._opener.open(request, timeout=120) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise RuntimeError(json.load(error)["value"]["message"]) from None

    def open(self, path):
        self._call("POST", "/url", {"url": "file://" + os.path.abspath(path)})

    def run(self, script, *arguments):
        """The value of a function body in the page."""
        return self._call("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def wait(self, script, *arguments, seconds=60):
        """Runs a function body until its value is true, and gives it."""
        end = time.monotonic() + seconds
        while not (value := self.run(script, *arguments)):
            if time.monotonic() > end:
                raise AssertionError("never true: " + script)
            time.sleep(0.02)
        return value

    def keys(self, *keys):
        """Presses keys one after another, by name or by character, wherever the focus is."""
        actions = []
        for key in keys:
            value = KEYS.get(key, key)
            actions += [{"type": "keyDown", "value": value}, {"type": "keyUp", "value": value}]
        self._call("POST", "/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": actions}]})

    def pointer(self, *steps):
        """Steps are (x, y) to move to, "down" and "up"."""
        actions = []
        for step in steps:
            if isinstance(step, str):
                actions.append({"type": "pointerDown" if step == "down" else "pointerUp", "button": 0})
            else:
                actions.append({"type": "pointerMove", "duration": 20, "x": int(step[0]), "y": int(step[1])})
        self._call("POST", "/actions", {"actions": [{"type": "pointer", "id": "mouse", "actions": actions}]})

    def devtools(self, command, **parameters):
        return self._call("POST", "/goog/cdp/execute", {"cmd": command, "params": parameters})

    def set_theme(self, theme):
        features = [{"name": "prefers-color-scheme", "value": theme}]
        self.devtools("Emulation.setEmulatedMedia", features=features)

    def set_size(self, width, height):
        self.devtools("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def screenshot(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self._call("GET", "/screenshot")))

    def console_errors(self):
        """What the page complained about since the last call."""
        return [entry["message"] for entry in self._call("POST", "/se/log", {"type": "browser"})
                if entry["level"] in ("SEVERE", "WARNING")]
