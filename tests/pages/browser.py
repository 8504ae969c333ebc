"""A headless Chromium, driven over a pipe: what the tests of pages need, and the standard library alone."""
import base64
import json
import os
import select
import shutil
import subprocess
import tempfile
import time


class Browser:
    """Opens pages from disk. Everything that a page complains of is in `complaints`."""

    def __init__(self):
        to_browser, self._out = os.pipe()
        self._in, from_browser = os.pipe()
        self._profile = tempfile.mkdtemp(prefix="pages-")

        def give_pipes():  # the browser wants them as 3 and 4
            to, back = os.dup(to_browser), os.dup(from_browser)
            to, back = (os.dup(to), back) if to == 4 else (to, back)
            os.dup2(to, 3)
            os.dup2(back, 4)

        command = ["chromium", "--headless=new", "--remote-debugging-pipe", "--disable-gpu", "--no-first-run",
                   "--hide-scrollbars", f"--user-data-dir={self._profile}", "about:blank"]
        if os.geteuid() == 0:
            command.insert(1, "--no-sandbox")  # which root cannot have
        self._process = subprocess.Popen(command, preexec_fn=give_pipes, close_fds=False,
                                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self._buffer = b""
        self._number = 0
        self._session = None
        self.complaints = []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(f"{domain}.enable")

    def close(self):
        self._session = None
        try:
            self.call("Browser.close")
            self._process.wait(10)
        except (OSError, subprocess.TimeoutExpired):
            self._process.kill()
            self._process.wait()
        os.close(self._in)
        os.close(self._out)
        shutil.rmtree(self._profile, ignore_errors=True)

    def call(self, method, **parameters):
        self._number += 1
        message = {"id": self._number, "method": method, "params": parameters}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._out, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._message()
            if answer.get("id") == self._number:
                if "error" in answer:
                    raise AssertionError(f"{method}: {answer['error']['message']}")
                return answer["result"]
            self._note(answer)

    def _message(self, seconds=60):
        while b"\0" not in self._buffer:
            if not select.select([self._in], [], [], seconds)[0]:
                raise AssertionError("the browser is silent")
            piece = os.read(self._in, 1 << 20)
            if not piece:
                raise AssertionError("the browser has ended")
            self._buffer += piece
        text, self._buffer = self._buffer.split(b"\0", 1)
        return json.loads(text)

    def _note(self, event):
        method, what = event.get("method"), event.get("params", {})
        if method == "Runtime.exceptionThrown":
            self.complaints.append(json.dumps(what["exceptionDetails"]))
        elif method == "Runtime.consoleAPICalled" and what["type"] in ("error", "warning", "assert"):
            self.complaints.append(json.dumps(what["args"]))
        elif method == "Log.entryAdded" and what["entry"]["level"] in ("error", "warning"):
            self.complaints.append(what["entry"]["text"])
        elif method == "Page.javascriptDialogOpening":
            self.complaints.append("a script of the file has opened a dialog: " + what["message"])
            self._number += 1  # its answer is passed over
            os.write(self._out, json.dumps({"id": self._number, "method": "Page.handleJavaScriptDialog",
                                            "params": {"accept": True}, "sessionId": self._session}).encode() + b"\0")

    def evaluate(self, expression):
        """The value of an expression in the page; promises are waited for."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise AssertionError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def wait(self, condition, seconds=30):
        """Until an expression is true; returns how long that took, in seconds."""
        start = time.monotonic()
        while not self.evaluate(f"Boolean({condition})"):
            if time.monotonic() - start > seconds:
                raise AssertionError(f"{condition} has not become true within {seconds} s")
            time.sleep(0.01)
        return time.monotonic() - start

    def look(self, width=1200, height=900, scheme="light", media=""):
        """The size of the window, and the user's colour scheme."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                  mobile=width < 600)
        self.call("Emulation.setEmulatedMedia", media=media,
                  features=[{"name": "prefers-color-scheme", "value": scheme}])

    def open(self, path):
        """Opens a page and waits until it says that it is ready."""
        self.call("Page.navigate", url="about:blank")
        self.call("Page.navigate", url=path.resolve().as_uri())
        return self.wait("location.protocol === 'file:' && document.body?.dataset.state === 'ready'")

    def type(self, text):
        """Types into the search box, with the keyboard's events."""
        self.evaluate("document.getElementById('search').focus(), document.getElementById('search').select()")
        self.call("Input.insertText", text=text)

    def press(self, key, code):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key, windowsVirtualKeyCode=code,
                      text="\r" if key == "Enter" and kind == "keyDown" else "")

    def picture(self, path, whole=False):
        image = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=whole)
        path.write_bytes(base64.b64decode(image["data"]))
