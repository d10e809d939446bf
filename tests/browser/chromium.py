"""Drives a headless Chromium through its debugging pipe, with nothing but Python's own library."""
import base64
import json
import os
import select
import shutil
import struct
import subprocess
import tempfile
import time
import zlib

NAMES = ("chromium", "chromium-browser", "google-chrome")
# Software rendering, so that no machine's graphics device decides the pixels.
FLAGS = ("--headless=new", "--no-sandbox", "--use-gl=angle", "--use-angle=swiftshader", "--enable-unsafe-swiftshader",
         "--force-color-profile=srgb", "--hide-scrollbars", "--disable-gpu-watchdog", "--no-first-run",
         "--disable-background-networking", "--remote-debugging-pipe")
SECONDS = 120  # an answer that takes longer is a failure


def find_browser():
    return next(filter(None, map(shutil.which, NAMES)), None)


class Browser:
    """A browser with one page. What the page writes to the console, or throws, is collected in `complaints`."""

    def __init__(self, *flags):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        to_browser, self.writer = os.pipe()
        self.reader, from_browser = os.pipe()
        # The browser reads from descriptor 3 and writes to 4; the shell puts ours there.
        command = [find_browser(), *FLAGS, *flags, "--user-data-dir=" + self.profile.name, "about:blank"]
        redirect = f'exec "$@" 3<&{to_browser} 4>&{from_browser}'
        self.process = subprocess.Popen(["bash", "-c", redirect, "browser", *command], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL, pass_fds=(to_browser, from_browser))
        os.close(to_browser)
        os.close(from_browser)
        self.number = 0
        self.received = b""
        self.complaints = []
        self.session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(domain + ".enable")

    def close(self):
        try:
            self.session = None
            self.call("Browser.close")
        except (OSError, EOFError, TimeoutError):
            self.process.kill()
        self.process.wait(timeout=30)
        os.close(self.writer)
        os.close(self.reader)
        self.profile.cleanup()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def call(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.writer, json.dumps(message).encode() + b"\0")
        while True:
            answer = self.receive()
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def receive(self):
        end = time.monotonic() + SECONDS
        while b"\0" not in self.received:
            if not select.select([self.reader], [], [], max(0, end - time.monotonic()))[0]:
                raise TimeoutError("the browser does not answer")
            block = os.read(self.reader, 1 << 20)
            if not block:
                raise EOFError("the browser is gone")
            self.received += block
        text, self.received = self.received.split(b"\0", 1)
        message = json.loads(text)
        self.note(message.get("method"), message.get("params", {}))
        return message

    def note(self, method, parameters):
        if method == "Runtime.consoleAPICalled":
            self.complaints.append(" ".join(str(item.get("value", item)) for item in parameters["args"]))
        elif method == "Runtime.exceptionThrown":
            details = parameters["exceptionDetails"]
            self.complaints.append(details.get("exception", {}).get("description", details["text"]))
        elif method == "Log.entryAdded":
            self.complaints.append(parameters["entry"]["text"] + " " + parameters["entry"].get("url", ""))

    def resize(self, width, height, ratio=1, mobile=False):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=ratio, mobile=mobile)

    def prefer(self, theme):
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": theme}])

    def open(self, url):
        """Returns once the page is done, whether it shows the mesh or an error."""
        self.complaints = []
        self.call("Page.navigate", url=url)
        self.wait("['ready', 'error'].includes(document.documentElement?.dataset.state)")
        return self.evaluate("document.documentElement.dataset.state")

    def wait(self, expression):
        end = time.monotonic() + SECONDS
        while not self.evaluate(expression):
            if time.monotonic() > end:
                raise TimeoutError("never true: " + expression)
            time.sleep(0.02)

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def text(self, element):
        """What a person reads there."""
        return self.evaluate(f"document.getElementById('{element}').innerText")

    def mouse(self, kind, x, y, **parameters):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **parameters)

    def wheel(self, x, y, delta):
        self.mouse("mouseWheel", x, y, deltaX=0, deltaY=delta)

    def drag(self, x, y, to_x, to_y):
        self.mouse("mousePressed", x, y, button="left", buttons=1, clickCount=1)
        self.mouse("mouseMoved", to_x, to_y, button="left", buttons=1)
        self.mouse("mouseReleased", to_x, to_y, button="left", clickCount=1)

    def touch(self, kind, *points):
        self.call("Input.dispatchTouchEvent", type=kind, touchPoints=[{"x": x, "y": y} for x, y in points])

    def press(self, key):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key)

    def click(self, element):
        self.evaluate(f"document.getElementById('{element}').click()")

    def screenshot(self, path):
        """Waits until what was asked to be drawn is drawn."""
        self.evaluate("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => done(true))))")
        png = base64.b64decode(self.call("Page.captureScreenshot", optimizeForSpeed=True)["data"])
        with open(path, "wb") as file:
            file.write(png)
        return Picture(png)


class Picture:
    """The pixels of a PNG file of 8 bits a channel."""

    def __init__(self, png):
        data = b""
        place = 8
        while place < len(png):
            length, kind = struct.unpack(">I4s", png[place:place + 8])
            chunk = png[place + 8:place + 8 + length]
            if kind == b"IHDR":
                self.width, self.height, depth, color = struct.unpack(">IIBB", chunk[:10])
                assert depth == 8 and color in (2, 6), (depth, color)
                self.channels = 3 if color == 2 else 4
            elif kind == b"IDAT":
                data += chunk
            place += length + 12
        self.rows = list(self._unfilter(zlib.decompress(data)))

    def _unfilter(self, data):
        size, step = self.width * self.channels, self.channels
        above = bytearray(size)
        for start in range(0, len(data), size + 1):
            kind, row = data[start], bytearray(data[start + 1:start + 1 + size])
            for i in range(size):
                left, up = row[i - step] if i >= step else 0, above[i]
                if kind == 1:
                    row[i] = row[i] + left & 255
                elif kind == 2:
                    row[i] = row[i] + up & 255
                elif kind == 3:
                    row[i] = row[i] + (left + up) // 2 & 255
                elif kind == 4:
                    corner = above[i - step] if i >= step else 0
                    estimate = left + up - corner
                    nearest = min((abs(estimate - left), 0, left), (abs(estimate - up), 1, up),
                                  (abs(estimate - corner), 2, corner))
                    row[i] = row[i] + nearest[2] & 255
            yield row
            above = row

    def at(self, x, y):
        place = round(x) * self.channels
        return tuple(self.rows[round(y)][place:place + 3])
