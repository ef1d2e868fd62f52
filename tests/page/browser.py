"""A headless Chromium, driven over its debugging pipe; nothing but the standard library."""

import json
import os
import shutil
import signal
import subprocess
import tempfile
import time
import zlib
from base64 import b64decode

PROGRAMS = ("chromium", "chromium-browser", "google-chrome")
OPTIONS = ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
           "--disable-background-networking", "--disable-component-update", "--disable-sync",
           "--disable-extensions", "--hide-scrollbars", "--remote-debugging-pipe", "about:blank")


class Browser:
    """A page, 1280 by 800. `complaints` has the errors and warnings of its console and every
    exception, `requests` the addresses that it asked for."""

    def __init__(self):
        program = next(filter(None, map(shutil.which, PROGRAMS)), None)
        if not program:
            raise SystemExit("There is no Chromium: install the package chromium.")
        self.folder = tempfile.mkdtemp(prefix="browser-")
        read_end, self.commands = os.pipe()
        self.answers, write_end = os.pipe()

        def give_pipes():
            # 3 and 4 may be among the pipes' own numbers.
            copies = os.dup(read_end), os.dup(write_end)
            high = [os.dup2(copy, 20 + copy) for copy in copies]
            os.dup2(high[0], 3)
            os.dup2(high[1], 4)

        self.log = open(os.path.join(self.folder, "log"), "w+b")
        self.process = subprocess.Popen(
            [program, "--user-data-dir=" + self.folder, *OPTIONS], close_fds=False,
            preexec_fn=give_pipes, start_new_session=True, stdin=subprocess.DEVNULL,
            stdout=self.log, stderr=self.log)
        os.close(read_end)
        os.close(write_end)
        self.rest = b""
        self.number = 0
        self.session = None
        self.complaints = []
        self.requests = []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")
        self.call("Emulation.setDeviceMetricsOverride", width=1280, height=800,
                  deviceScaleFactor=1, mobile=False)

    def close(self):
        try:
            os.killpg(self.process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self.process.wait()
        self.log.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def call(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.commands, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._next()
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError("%s: %s" % (method, answer["error"]["message"]))
                return answer["result"]

    def _next(self):
        while b"\0" not in self.rest:
            data = os.read(self.answers, 1 << 16)
            if not data:
                self.log.seek(0)
                raise SystemExit("Chromium ended: " + self.log.read()[-600:].decode(errors="replace"))
            self.rest += data
        text, self.rest = self.rest.split(b"\0", 1)
        message = json.loads(text)
        what = message.get("params", {})
        if message.get("method") == "Runtime.exceptionThrown":
            details = what["exceptionDetails"]
            self.complaints.append(details.get("exception", {}).get("description", details["text"]))
        elif message.get("method") == "Runtime.consoleAPICalled":
            self.complaints.append(" ".join(str(one.get("value")) for one in what["args"]))
        elif message.get("method") == "Log.entryAdded":
            self.complaints.append(what["entry"]["text"])
        elif message.get("method") == "Network.requestWillBeSent":
            self.requests.append(what["request"]["url"])
        return message

    def value(self, expression):
        """What a JavaScript expression is."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"]["exception"]["description"])
        return result["result"].get("value")

    def wait_for(self, expression, seconds=20):
        end = time.monotonic() + seconds
        while not self.value(expression):
            if time.monotonic() > end:
                raise SystemExit("In vain waited for %s. %s" % (expression, self.complaints))
            time.sleep(0.02)

    def settle(self):
        """Until the page has drawn what it was told."""
        self.value("new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)))")

    def open(self, file, fragment="", dark=False):
        self.call("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.call("Page.navigate", url="about:blank")
        self.call("Page.navigate", url="file://" + os.path.abspath(file) + fragment)
        self.wait_for("document.body && document.body.dataset.ready === 'yes'")
        self.settle()

    def mouse(self, kind, x, y, button="none", **more):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button=button, **more)

    def key(self, key):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key)

    def screenshot(self, share=1.0):
        clip = {"x": 0, "y": 0, "width": 1280, "height": 800, "scale": share}
        return b64decode(self.call("Page.captureScreenshot", format="png", clip=clip)["data"])


def pixels(png):
    """The pixels of a screenshot, a row after the other: tuples of red, green, blue."""
    assert png[:8] == b"\x89PNG\r\n\x1a\n"
    at, data, header = 8, b"", b""
    while at < len(png):
        size = int.from_bytes(png[at:at + 4], "big")
        kind, body = png[at + 4:at + 8], png[at + 8:at + 8 + size]
        header = body if kind == b"IHDR" else header
        data += body if kind == b"IDAT" else b""
        at += size + 12
    width, height = (int.from_bytes(header[i:i + 4], "big") for i in (0, 4))
    step = {2: 3, 6: 4}[header[9]]  # Bytes a pixel: RGB or RGBA, 8 bits each.
    raw, stride = zlib.decompress(data), width * step
    rows, before = [], bytearray(stride)
    for y in range(height):
        kind = raw[y * (stride + 1)]
        row = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for x in range(stride):
            left = row[x - step] if x >= step else 0
            up, corner = before[x], before[x - step] if x >= step else 0
            if kind == 1:
                guess = left
            elif kind == 2:
                guess = up
            elif kind == 3:
                guess = (left + up) // 2
            elif kind == 4:
                guess = min((left, up, corner), key=lambda one: abs(left + up - corner - one))
            else:
                break
            row[x] = (row[x] + guess) & 0xFF
        rows.append([tuple(row[x:x + 3]) for x in range(0, stride, step)])
        before = row
    return rows
