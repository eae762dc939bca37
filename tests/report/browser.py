"""A headless Chromium, driven over a pair of pipes: no port is opened and no further program needed."""
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

# The browser itself must stay off the network as well, so that whatever is seen is the page's.
QUIET = ["--headless", "--disable-gpu", "--no-first-run", "--disable-background-networking",
         "--disable-component-update", "--disable-default-apps", "--disable-extensions",
         "--disable-sync", "--metrics-recording-only", "--no-default-browser-check",
         "--disable-dev-shm-usage", "--proxy-server=127.0.0.1:9", "--remote-debugging-pipe"]


class Browser:
    """Use it in a with statement. Messages of the page are collected while it waits for answers."""

    def __enter__(self):
        program = shutil.which("chromium")
        if program is None:
            raise RuntimeError("chromium is missing; tools/setup.sh installs it")
        self.profile = tempfile.mkdtemp(prefix="report-browser-")
        to_browser, self.write_end = os.pipe()
        self.read_end, from_browser = os.pipe()

        def number_the_ends():  # the browser reads from 3 and writes to 4
            source, target = os.dup(to_browser), os.dup(from_browser)
            while source < 5:
                source = os.dup(source)
            while target < 5:
                target = os.dup(target)
            os.dup2(source, 3)
            os.dup2(target, 4)

        sandbox = ["--no-sandbox"] if os.geteuid() == 0 else []
        self.process = subprocess.Popen(
            [program, *QUIET, *sandbox, f"--user-data-dir={self.profile}", "about:blank"],
            preexec_fn=number_the_ends, pass_fds=(3, 4), stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.pending = b""
        self.last_id = 0
        self.session = None
        self.events = []
        return self

    def __exit__(self, *unused):
        try:
            self.session = None
            self.send("Browser.close")
            self.process.wait(10)
        except (OSError, RuntimeError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
        os.close(self.write_end)
        os.close(self.read_end)
        shutil.rmtree(self.profile, ignore_errors=True)

    def _receive(self, deadline):
        while b"\0" not in self.pending:
            ready, _, _ = select.select([self.read_end], [], [], max(0, deadline - time.time()))
            if not ready:
                raise RuntimeError("the browser does not answer")
            chunk = os.read(self.read_end, 1 << 20)
            if not chunk:
                raise RuntimeError("the browser has ended")
            self.pending += chunk
        message, self.pending = self.pending.split(b"\0", 1)
        return json.loads(message)

    def send(self, method, **parameters):
        """Returns the answer of the browser; what the page says meanwhile goes to events."""
        self.last_id += 1
        message = {"id": self.last_id, "method": method, "params": parameters}
        if self.session is not None:
            message["sessionId"] = self.session
        os.write(self.write_end, json.dumps(message).encode() + b"\0")
        deadline = time.time() + 30
        while True:
            answer = self._receive(deadline)
            if answer.get("id") == self.last_id:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]
            if "method" in answer:
                self.events.append(answer)

    def open(self, url, width=1280, height=900, dark=False):
        """Opens a page in a tab of its own and waits until it says that it is ready."""
        self.session = None
        self.events = []
        target = self.send("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.send("Target.attachToTarget", targetId=target,
                                 flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.send(domain + ".enable")
        self.look(width, height, dark)
        self.send("Page.navigate", url=url)
        self.wait_for("document.documentElement && document.documentElement.dataset.readyAfter")

    def look(self, width, height, dark=False, media=""):
        self.send("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.send("Emulation.setEmulatedMedia", media=media, features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    def value(self, expression):
        answer = self.send("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def wait_for(self, expression, seconds=20):
        deadline = time.time() + seconds
        while not self.value(expression):
            if time.time() > deadline:
                raise RuntimeError(f"never came true: {expression}")
            time.sleep(0.02)

    def press(self, key, text=None):
        code = {"Enter": 13, "Escape": 27, "End": 35, "Home": 36, "ArrowDown": 40}.get(key, 0)
        event = {"key": key, "windowsVirtualKeyCode": code}
        if text is not None:
            event["text"] = text
        self.send("Input.dispatchKeyEvent", type="keyDown", **event)
        self.send("Input.dispatchKeyEvent", type="keyUp", key=key)

    def type(self, text):
        for letter in text:
            self.press(letter, letter)

    def mouse(self, kind, x, y, **more):
        self.send("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def click(self, selector):
        self.value(f"document.querySelector({json.dumps(selector)})"
                   ".scrollIntoView({block: 'center'})")
        x, y = self.value(f"(() => {{ const b = document.querySelector({json.dumps(selector)})"
                          ".getBoundingClientRect();"
                          "return [b.x + b.width / 2, b.y + b.height / 2]; })()")
        for kind in ("mousePressed", "mouseReleased"):
            self.mouse(kind, x, y, button="left", clickCount=1)

    def complaints(self):
        """Everything that the page wrote to the console, and every error."""
        self.value("0")
        return [event for event in self.events if event["method"] in (
            "Runtime.consoleAPICalled", "Runtime.exceptionThrown", "Log.entryAdded")]

    def requested(self):
        """The addresses that the page asked for."""
        self.value("0")
        return [event["params"]["request"]["url"] for event in self.events
                if event["method"] == "Network.requestWillBeSent"]
