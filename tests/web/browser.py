"""Headless Chromium, driven by chromedriver's plain HTTP protocol (W3C WebDriver), and what the tests look for in a page."""

import base64
import json
import urllib.error
import urllib.request

from harness.processes import Process
from harness.service import free_port
from harness.waiting import wait_until

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"
KEYS = {
    "Enter": "\ue007", "Escape": "\ue00c", "Tab": "\ue004", "Space": " ", "Backspace": "\ue003", "Shift": "\ue008", "Control": "\ue009",
    "Alt": "\ue00a", "ArrowLeft": "\ue012", "ArrowUp": "\ue013", "ArrowRight": "\ue014", "ArrowDown": "\ue015",
}

# Visible elements matching a selector, whose name (label or text) is the wanted one or contains it.
FIND = """
const [selector, name, exact] = arguments;
const nameOf = (element) => (element.getAttribute('aria-label') ?? element.labels?.[0]?.textContent ?? element.textContent
    ?? '').trim().replace(/\\s+/g, ' ');
return [...document.querySelectorAll(selector)].filter((element) => {
  if (!element.checkVisibility({ visibilityProperty: true })) return false;
  return name === null || (exact ? nameOf(element) === name : nameOf(element).includes(name));
});
"""

# The desktop shell as the page sees it: the info object, the message handler, and what the page posted.
FAKE_SHELL = """
window.ParvelaNative = Object.freeze(%s);
window.posted = [];
window.webkit = { messageHandlers: { parvela: { postMessage: (body) => window.posted.push(JSON.parse(JSON.stringify(body))) } } };
document.documentElement?.setAttribute('data-shell', 'mac');
"""


class Browser:
    """One browser with an empty profile. `log` receives chromedriver's output."""

    def __init__(self, log, env):
        port = free_port()
        self._base = f"http://127.0.0.1:{port}"
        self._process = Process(["chromedriver", f"--port={port}"], env=env, log=log)
        self._session = ""
        try:
            wait_until(self._ready, "chromedriver", timeout=20)
            arguments = ["--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu", "--window-size=1280,820",
                         "--force-device-scale-factor=1"]
            answer = self._call("POST", "/session", {"capabilities": {"alwaysMatch": {
                "browserName": "chrome", "goog:chromeOptions": {"args": arguments}, "goog:loggingPrefs": {"browser": "ALL"}}}})
            self._session = f"/session/{answer['sessionId']}"
            self.resize(1280, 820)
        except BaseException:
            self.close()
            raise

    def close(self):
        """Ends the browser and its driver."""
        try:
            if self._session:
                self._call("DELETE", self._session)
        finally:
            self._process.stop()

    def _ready(self):
        try:
            return self._call("GET", "/status")["ready"]
        except OSError:
            return False

    def _call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self._base + path, method=method, data=data, headers={"Content-Type": "application/json"})
        try:
            with urllib.request.urlopen(request, timeout=60) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise AssertionError(f"{path}: {json.load(error)['value']['message'].splitlines()[0]}") from None

    def command(self, method, path, body=None):
        """A call of the WebDriver session."""
        return self._call(method, self._session + path, body)

    def cdp(self, name, **parameters):
        """A command of the browser's own protocol."""
        return self.command("POST", "/goog/cdp/execute", {"cmd": name, "params": parameters})

    # The window
    def resize(self, width, height):
        """Also lets the page believe that it has the focus, whichever window the desktop thinks is in front."""
        self.cdp("Emulation.setFocusEmulationEnabled", enabled=True)
        self.cdp("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def prefer(self, scheme):
        """"dark" or "light"."""
        self.cdp("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def forget_everything(self, origin):
        """Cookies, storage and anything else the browser kept for the site."""
        self.cdp("Network.clearBrowserCookies")
        self.cdp("Storage.clearDataForOrigin", origin=origin, storageTypes="all")

    def before_load(self, script):
        """Runs a script in every page before the page's own. Returns the id to take it back with."""
        return self.cdp("Page.addScriptToEvaluateOnNewDocument", source=script)["identifier"]

    def shell(self, **info):
        """Makes every page believe that it runs in the desktop app. Returns the id to take it back with."""
        facts = {"platform": "macos", "version": "1.0", "deviceId": "device-1", "deviceName": "Robin's Mac", "linkedWorkspaceId": None,
                 "features": ["oauth"]}
        return self.before_load(FAKE_SHELL % json.dumps({**facts, **info}))

    def take_back(self, identifier):
        self.cdp("Page.removeScriptToEvaluateOnNewDocument", identifier=identifier)

    def go(self, url):
        self.command("POST", "/url", {"url": url})

    def new_tab(self):
        """Opens a tab and moves to it. Returns the handle of the one that was left."""
        left = self.command("GET", "/window")
        self.tab(self.command("POST", "/window/new", {"type": "tab"})["handle"])
        self.resize(1280, 820)
        return left

    def tab(self, handle):
        self.command("POST", "/window", {"handle": handle})

    def close_tab(self, back_to):
        self.command("DELETE", "/window")
        self.tab(back_to)

    # Looking
    def js(self, script, *arguments):
        return self.command("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def path(self):
        return self.js("return location.pathname + location.search")

    def all(self, selector, name=None, exact=False):
        """Visible elements, by CSS selector and accessible name."""
        return self.js(FIND, selector, name, exact)

    def one(self, selector, name=None, exact=False, timeout=10):
        """The first such element; waits for it."""
        wanted = selector if name is None else f"{selector} named “{name}”"
        return wait_until(lambda: self.all(selector, name, exact), wanted, timeout)[0]

    def gone(self, selector, name=None, timeout=10):
        """Waits until there is no such element."""
        wait_until(lambda: not self.all(selector, name), f"{selector} {name or ''} to go", timeout)

    def text(self, selector):
        """Text of the first such element, "" without one."""
        return self.js("return document.querySelector(arguments[0])?.innerText ?? ''", selector)

    def texts(self, selector):
        return self.js("return [...document.querySelectorAll(arguments[0])].map((element) => element.innerText.trim())", selector)

    def focused(self):
        """Accessible name of what has the focus."""
        return self.js("const at = document.activeElement; return at?.getAttribute('aria-label') ?? at?.textContent?.trim() ?? ''")

    def wait_focus(self, name, timeout=10):
        wait_until(lambda: self.focused() == name, f"the focus on “{name}”", timeout)

    def wait_text(self, selector, text, timeout=10):
        wait_until(lambda: text in self.text(selector), f"“{text}” in {selector}", timeout)

    def wait_path(self, path, timeout=10):
        wait_until(lambda: self.path() == path, f"the address {path}", timeout)

    def problems(self):
        """Errors and violations that the console has shown since the last call."""
        return [entry["message"] for entry in self.command("POST", "/se/log", {"type": "browser"}) if entry["level"] == "SEVERE"]

    def screenshot(self, file):
        file.write_bytes(base64.b64decode(self.command("GET", "/screenshot")))

    # Acting
    def click(self, selector, name=None, exact=False):
        self.click_element(self.one(selector, name, exact))

    def click_element(self, element):
        self.command("POST", f"/element/{element[ELEMENT]}/click", {})

    def type_into(self, selector, text, name=None):
        element = self.one(selector, name)
        self.command("POST", f"/element/{element[ELEMENT]}/value", {"text": text})

    def choose_file(self, selector, file):
        element = self.js("return document.querySelector(arguments[0])", selector)
        self.command("POST", f"/element/{element[ELEMENT]}/value", {"text": str(file)})

    def keys(self, *names):
        """Presses keys one after another where the focus is: names of KEYS, single letters, or "Shift+ArrowUp"."""
        actions = []
        for name in names:
            *held, key = name.split("+") if len(name) > 1 else [name]
            held = [KEYS[entry] for entry in held]
            actions += [{"type": "keyDown", "value": entry} for entry in held]
            value = KEYS.get(key, key)
            actions += [{"type": "keyDown", "value": value}, {"type": "keyUp", "value": value}]
            actions += [{"type": "keyUp", "value": entry} for entry in reversed(held)]
        self.command("POST", "/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": actions}]})

    def type(self, text):
        """Types a text where the focus is."""
        self.keys(*["Space" if letter == " " else letter for letter in text])

    def middle(self, element):
        """Where an element's middle is in the window."""
        box = self.js("const box = arguments[0].getBoundingClientRect(); return [box.x + box.width / 2, box.y + box.height / 2]", element)
        return round(box[0]), round(box[1])

    def press_at(self, x, y, times=1):
        """Presses and releases the mouse, `times` in a row."""
        click = [{"type": "pointerDown", "button": 0}, {"type": "pointerUp", "button": 0}] * times
        self._mouse([{"type": "pointerMove", "x": x, "y": y}, *click])

    def drag(self, element, x, y, drop=True, start=None):
        """Takes an element at its middle, or at `start`, and drops it at a place of the window; without `drop` the button stays down."""
        from_x, from_y = start or self.middle(element)
        steps = [{"type": "pointerMove", "x": round(from_x + (x - from_x) * part), "y": round(from_y + (y - from_y) * part),
                  "duration": 20} for part in (0.1, 0.4, 0.7, 1, 1)]
        release = [{"type": "pointerUp", "button": 0}] if drop else []
        self._mouse([{"type": "pointerMove", "x": from_x, "y": from_y}, {"type": "pointerDown", "button": 0}, *steps, *release])

    def release(self):
        """Lets go of every key and button."""
        self.command("DELETE", "/actions")

    def _mouse(self, actions):
        self.command("POST", "/actions", {"actions": [
            {"type": "pointer", "id": "mouse", "parameters": {"pointerType": "mouse"}, "actions": actions}]})
