"""The page inside a web view, through WebKit's remote inspector: what it shows, and filling in its forms.

The accessibility tree ends at the web view (WebKitGTK on Debian 12 does not join GTK 4's), so this is how tests read a page. The
application opens the inspector only when its environment names an address for it.
"""

import base64
import html
import json
import os
import re
import socket
import struct
import urllib.request

from .waiting import wait_until


class _WebSocket:
    """As much of RFC 6455's client side as the inspector needs: text messages, one connection, loopback."""

    def __init__(self, host, port, path, timeout):
        self._socket = socket.create_connection((host, port), timeout)
        self._buffer = b""
        key = base64.b64encode(os.urandom(16)).decode()
        self._socket.sendall((f"GET {path} HTTP/1.1\r\nHost: {host}:{port}\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                              f"Sec-WebSocket-Key: {key}\r\nSec-WebSocket-Version: 13\r\n\r\n").encode())
        while b"\r\n\r\n" not in self._buffer:
            self._receive_more()
        head, _, self._buffer = self._buffer.partition(b"\r\n\r\n")
        if b" 101 " not in head.split(b"\r\n")[0]:
            raise ConnectionError(f"the inspector refused: {head.decode(errors='replace')}")

    def _receive_more(self):
        data = self._socket.recv(65536)
        if not data:
            raise ConnectionError("the inspector closed the connection")
        self._buffer += data

    def _take(self, count):
        while len(self._buffer) < count:
            self._receive_more()
        taken, self._buffer = self._buffer[:count], self._buffer[count:]
        return taken

    def send(self, text):
        payload = text.encode()
        size = len(payload)
        if size < 126:
            head = struct.pack("!BB", 0x81, 0x80 | size)
        elif size < 65536:
            head = struct.pack("!BBH", 0x81, 0x80 | 126, size)
        else:
            head = struct.pack("!BBQ", 0x81, 0x80 | 127, size)
        self._socket.sendall(head + b"\0\0\0\0" + payload)  # a zero mask leaves the payload as it is

    def receive(self):
        """The next text message."""
        text = b""
        while True:
            first, second = self._take(2)
            size = second & 0x7F
            if size == 126:
                size, = struct.unpack("!H", self._take(2))
            elif size == 127:
                size, = struct.unpack("!Q", self._take(8))
            payload = self._take(size)
            if first & 0x0F == 8:
                raise ConnectionError("the inspector said goodbye")
            if first & 0x0F in (0, 1):
                text += payload
                if first & 0x80:
                    return text.decode()

    def close(self):
        self._socket.close()


class PageError(Exception):
    """The page answered an evaluation with an exception."""


class Inspector:
    """The inspector server of one application process."""

    def __init__(self, port):
        self.port = port

    def pages(self):
        """[(title, URL, socket path)] of the views that can be inspected."""
        with urllib.request.urlopen(f"http://127.0.0.1:{self.port}/", timeout=5) as answer:
            text = answer.read().decode()
        found = re.findall(r'class="targetname">(.*?)</div><div class="targeturl">(.*?)</div>.*?window\.location\.host \+ '
                           r"'(/socket/[^']+)'", text, re.DOTALL)
        return [(html.unescape(title), html.unescape(url), path) for title, url, path in found]

    def page(self, url_part="", timeout=30.0):
        """The first page whose URL contains url_part, once there is one."""
        _, _, path = wait_until(lambda: next((page for page in self.pages() if url_part in page[1]), None),
                                f"a page at '{url_part}'", timeout)
        return Page(self, path)


class Page:
    """One view's page, for as long as the view lives: a page may navigate or move to another process between calls.

    The inspector serves one visitor at a time, so keep one Page per view.
    """

    def __init__(self, inspector, path):
        self._connection = _WebSocket("127.0.0.1", inspector.port, path, timeout=20)
        self._target = None
        self._last_id = 0

    def close(self):
        self._connection.close()

    def evaluate(self, expression):
        """The value of a script expression (JSON types); promises are not waited for.

        Raises PageError when it throws, ConnectionError when the page went away meanwhile (asking again asks its successor).
        """
        while self._target is None:
            self._receive()
        target = self._target
        self._last_id += 1
        wanted = self._last_id
        command = {"id": wanted, "method": "Runtime.evaluate", "params": {"expression": expression, "returnByValue": True}}
        self._connection.send(json.dumps({"id": wanted, "method": "Target.sendMessageToTarget",
                                          "params": {"targetId": target, "message": json.dumps(command)}}))
        while True:
            answer = self._receive()
            if answer and answer.get("id") == wanted:
                return self._value(answer)
            if self._target != target:
                raise ConnectionError("the page gave way to another")

    def _receive(self):
        """Takes one message in: keeps track of the view's current page, and returns what that page itself says."""
        message = json.loads(self._connection.receive())
        parameters = message.get("params", {})
        match message.get("method"):
            case "Target.targetCreated":
                about = parameters["targetInfo"]
                if about["type"] == "page" and not about.get("isProvisional"):
                    self._target = about["targetId"]
            case "Target.didCommitProvisionalTarget":
                self._target = parameters["newTargetId"]
            case "Target.targetDestroyed":
                if parameters["targetId"] == self._target:
                    self._target = None
            case "Target.dispatchMessageFromTarget":
                if parameters["targetId"] == self._target:
                    return json.loads(parameters["message"])
            case None if "error" in message:
                raise ConnectionError(message["error"].get("message", "the inspector gave no reason"))
        return None

    @staticmethod
    def _value(answer):
        if "error" in answer:
            raise PageError(answer["error"].get("message", "the inspector gave no reason"))
        result = answer["result"]
        if result.get("wasThrown"):
            raise PageError(result["result"].get("description", "the script threw"))
        return result["result"].get("value")

    @property
    def url(self):
        return self.evaluate("location.href")

    @property
    def text(self):
        """What a person reads on the page."""
        return self.evaluate("document.body ? document.body.innerText : ''")

    def wait_for_text(self, text, timeout=20.0):
        wait_until(lambda: text in self.text, f"the page to show '{text}'", timeout)

    def wait_for_path(self, path, timeout=20.0):
        wait_until(lambda: self.evaluate("location.pathname").startswith(path), f"the page to be at {path}", timeout)

    # An element is chosen by its accessible name or visible text, among what a person could press.
    _FIND = """(() => {
        const wanted = %s;
        const name = e => (e.getAttribute('aria-label') || e.innerText || e.value || '').replace(/\\s+/g, ' ').trim();
        const shown = [...document.querySelectorAll('button, a[href], [role=button], [role=menuitem], summary, input[type=submit]')]
            .filter(e => e.getClientRects().length && !e.disabled);
        const found = shown.find(e => name(e) === wanted) || shown.find(e => name(e).startsWith(wanted));
        if (!found) return false;
        %s
        return true;
    })()"""

    def press(self, name, timeout=15.0):
        """Presses the button or link with this name once it is there."""
        wait_until(lambda: self.evaluate(self._FIND % (json.dumps(name), "found.click();")), f"a button '{name}'", timeout)

    def focus(self, name, timeout=15.0):
        """Gives a button or link the keyboard focus, so that real keys can follow."""
        wait_until(lambda: self.evaluate(self._FIND % (json.dumps(name), "found.focus();")), f"a button '{name}'", timeout)
