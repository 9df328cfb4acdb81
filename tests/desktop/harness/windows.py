"""The windows of a session as its window manager and its user see them, and real key presses and clicks."""

import dataclasses
import re

from .waiting import TimedOut, wait_until


@dataclasses.dataclass(frozen=True)
class Window:
    """A managed top-level window. `id` is the X window's id, a decimal number."""

    session: object
    id: int

    def _property(self, name):
        result = self.session.run("xprop", "-id", self.id, name)
        return result.stdout.partition(" = ")[2].strip() if result.returncode == 0 else ""

    @property
    def title(self):
        text = self._property("_NET_WM_NAME") or self._property("WM_NAME")
        return re.sub(r"\\(.)", r"\1", text[1:-1]) if text.startswith('"') else ""

    @property
    def pid(self):
        text = self._property("_NET_WM_PID")
        return int(text) if text.isdigit() else None

    @property
    def wm_class(self):
        """Instance and class name."""
        return tuple(re.findall(r'"([^"]*)"', self._property("WM_CLASS")))

    @property
    def states(self):
        """Names such as "_NET_WM_STATE_FOCUSED"."""
        return set(re.findall(r"_NET_WM_STATE_\w+", self._property("_NET_WM_STATE")))

    def exists(self):
        return any(other.id == self.id for other in windows(self.session))

    def geometry(self):
        """(x, y, width, height) on the screen, in pixels."""
        text = self.session.run("xwininfo", "-id", self.id).stdout

        def number(label):
            return int(re.search(rf"{label}:\s+(-?\d+)", text).group(1))

        return (number("Absolute upper-left X"), number("Absolute upper-left Y"), number("Width"), number("Height"))

    def pixels(self):
        """What it shows: rows of RGB bytes from top to bottom."""
        return self.session.run_binary("import", "-window", self.id, "-depth", "8", "rgb:-")

    def activate(self):
        self.session.run("xdotool", "windowactivate", "--sync", self.id)
        wait_until(lambda: "_NET_WM_STATE_FOCUSED" in self.states or active_window(self.session) == self.id,
                   f"window '{self.title}' to be active")

    def click(self, x, y, button=1):
        """Clicks at a point relative to the window's upper left corner."""
        left, top, _, _ = self.geometry()
        self.session.run("xdotool", "mousemove", "--sync", left + x, top + y, "click", button)


def windows(session):
    """The managed windows, oldest first."""
    text = session.run("xprop", "-root", "_NET_CLIENT_LIST").stdout
    return [Window(session, int(number, 16)) for number in re.findall(r"0x[0-9a-f]+", text)]


def active_window(session):
    """The id of the active window, 0 for none."""
    text = session.run("xprop", "-root", "_NET_ACTIVE_WINDOW").stdout
    match = re.search(r"0x[0-9a-f]+", text)
    return int(match.group(0), 16) if match else 0


def wait_for_window(session, accept=lambda window: True, what="a window", timeout=30.0):
    """The first window that `accept` takes."""
    try:
        return wait_until(lambda: next((window for window in windows(session) if accept(window)), None), what, timeout)
    except TimedOut as error:
        seen = ", ".join(f"'{window.title}'" for window in windows(session)) or "none"
        raise TimedOut(f"{error}; windows there: {seen}") from None


def press(session, *keys):
    """Presses keys named as xdotool names them, for example "ctrl+t", in whatever has the focus."""
    for key in keys:
        session.run("xdotool", "key", "--clearmodifiers", key)


def type_text(session, text):
    """Types into whatever has the focus."""
    session.run("xdotool", "type", "--clearmodifiers", "--delay", "15", "--", text)


def screenshot(session, path):
    """Saves the whole screen as it is now."""
    result = session.run("import", "-window", "root", path)
    if result.returncode != 0:
        raise RuntimeError(f"no screenshot: {result.stderr.strip()}")


def colours(pixels, step=101):
    """The number of different colours in a sample of the pixels."""
    return len({pixels[index:index + 3] for index in range(0, len(pixels) - 2, 3 * step)})


def pieces_that_differ(before, after, size=600):
    """How many short runs of pixels are not what they were."""
    return sum(before[start:start + size] != after[start:start + size] for start in range(0, len(after), size))


def wait_until_painted(window, timeout=60.0, least_colours=12):
    """Waits until the window shows content that has come to rest, and returns its pixels.

    A window whose page is still loading is one flat colour, or has a few for its buttons; a page has text, whose smooth edges
    alone give dozens of shades. Three looks in a row that are alike, but for something as small as a blinking caret, are rest.
    """
    looks = []

    def at_rest():
        looks[:-2] = []
        looks.append(window.pixels())
        return (len(looks) == 3 and colours(looks[-1]) >= least_colours
                and all(len(one) == len(looks[-1]) and pieces_that_differ(one, looks[-1]) <= 40 for one in looks) and looks[-1])

    return wait_until(at_rest, "a painted page at rest", timeout, interval=0.25)
