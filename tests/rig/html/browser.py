"""A headless Chromium, driven through pipes as its DevTools protocol has it."""
import base64
import itertools
import json
import os
import subprocess
import threading

KEYS = {"Backspace": 8, "Tab": 9, " ": 32}
SECONDS = 120  # until an answer counts as missing: on a busy machine a browser takes long to start


class Browser:
    """One tab. What the browser reports besides its answers is kept in `events`."""

    def __init__(self, folder):
        # The browser reads from its file 3 and writes to its file 4.
        to_browser, self.requests = os.pipe()
        answers, from_browser = os.pipe()
        command = ("exec chromium --headless --no-sandbox --disable-gpu --disable-dev-shm-usage --hide-scrollbars"
                   " --disable-background-networking --remote-debugging-pipe --force-color-profile=srgb"
                   f' --user-data-dir="$0" about:blank 3<&{to_browser} 4>&{from_browser} >/dev/null 2>&1')
        self.process = subprocess.Popen(["sh", "-c", command, f"{folder}/profile"], pass_fds=(to_browser, from_browser))
        os.close(to_browser)
        os.close(from_browser)
        self.answers = os.fdopen(answers, "rb")
        self.events = []
        self.numbers = itertools.count(1)
        self.session = None
        tab = next(one for one in self.call("Target.getTargets")["targetInfos"] if one["type"] == "page")
        self.session = self.call("Target.attachToTarget", targetId=tab["targetId"], flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")

    def close(self):
        self.process.kill()
        self.process.wait()

    def read(self):
        """Returns the next answer or event."""
        guard = threading.Timer(SECONDS, self.process.kill)
        guard.start()
        text = bytearray()
        while not text.endswith(b"\0"):
            byte = self.answers.read1(1)
            if not byte:
                raise RuntimeError("the browser has ended, or did not answer")
            text += byte
        guard.cancel()
        return json.loads(text[:-1])

    def call(self, method, **parameters):
        number = next(self.numbers)
        request = {"id": number, "method": method, "params": parameters}
        if self.session:
            request["sessionId"] = self.session
        os.write(self.requests, json.dumps(request).encode() + b"\0")
        while True:
            message = self.read()
            if message.get("id") == number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return message["result"]
            self.events.append(message)

    def wait_for(self, event):
        while not any(one["method"] == event for one in self.events):
            self.events.append(self.read())

    def open(self, address):
        """Opens a page; `events` holds what the browser reports of it."""
        self.events.clear()
        self.call("Page.navigate", url=address)
        self.wait_for("Page.loadEventFired")

    def evaluate(self, expression):
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def show_as(self, width, height, scheme):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def press(self, key, code=None, text=None):
        for kind in ("keyDown", "keyUp"):
            extra = {"text": text} if text and kind == "keyDown" else {}
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=code or key,
                      windowsVirtualKeyCode=KEYS.get(key, 0), **extra)

    def type(self, text):
        for letter in text:
            self.press(letter, text=letter)

    def picture(self, path, height=None):
        """Writes a picture of the page: all of it, or its top."""
        size = self.call("Page.getLayoutMetrics")["cssContentSize"]
        clip = {"x": 0, "y": 0, "width": size["width"], "height": min(size["height"], height or 1e9), "scale": 1}
        shot = self.call("Page.captureScreenshot", clip=clip, captureBeyondViewport=True)
        with open(path, "wb") as file:
            file.write(base64.b64decode(shot["data"]))
