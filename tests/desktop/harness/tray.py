"""A real tray, in a panel at the top of the screen, and the items in it."""

from gi.repository import GLib

from .waiting import wait_until
from .windows import colours

_WATCHER = ("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher")
_ITEM = "org.kde.StatusNotifierItem"
_MENU = "com.canonical.dbusmenu"

# What a session needs for the panel to keep its settings.
BUS_SERVICES = ("org.xfce.Xfconf",)

# A panel across the screen with nothing but the tray, at its right end.
_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="{dark}"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="26"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/><value type="int" value="2"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/><property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray"/>
  </property>
</channel>
"""


class Panel:
    """xfce4-panel in a session."""

    height = 27

    def __init__(self, session, bus, dark=False):
        self._session = session
        self._bus = bus
        folder = session.config_home / "xfce4" / "xfconf" / "xfce-perchannel-xml"
        folder.mkdir(parents=True)
        (folder / "xfce4-panel.xml").write_text(_SETTINGS.format(dark="true" if dark else "false"), encoding="utf-8")
        self._process = None

    def start(self):
        self._process = self._session.start("xfce4-panel", "--disable-wm-check")
        wait_until(lambda: self._bus.property(*_WATCHER, _WATCHER[0], "IsStatusNotifierHostRegistered"), "the panel's tray")

    def stop(self):
        self._process.stop()

    def items(self):
        try:
            names = self._bus.property(*_WATCHER, _WATCHER[0], "RegisteredStatusNotifierItems")
        except GLib.Error:
            return []
        return [TrayItem(self._bus, *name.split("/", 1)) for name in names]

    def wait_for_item(self):
        """The one item, once its icon is seen and can be clicked."""
        item = wait_until(lambda: next(iter(self.items()), None), "an item in the tray")
        left = self._session.size[0] - 30
        place = ("import", "-window", "root", "-crop", f"28x22+{left}+2", "-depth", "8", "rgb:-")
        wait_until(lambda: colours(self._session.run_binary(*place), step=1) > 3, "the item's icon")
        return item

    def click(self, button=1):
        """Clicks the item; right when there is one only."""
        self._session.run("xdotool", "mousemove", self._session.size[0] - 18, self.height // 2, "click", button)

    def open_menu(self):
        """Clicks the item with the right button and waits for its menu, where keys then go."""

        def shown():
            return self._session.run("xdotool", "search", "--onlyvisible", "--class", "wrapper").stdout.split()

        before = len(shown())
        self.click(button=3)
        wait_until(lambda: len(shown()) > before, "the menu")


class TrayItem:
    """An item as its host sees it."""

    def __init__(self, bus, name, path):
        self._bus = bus
        self._name = name
        self._path = "/" + path

    def __getattr__(self, name):
        """A property such as Title."""
        return self._bus.property(self._name, self._path, _ITEM, name)

    @property
    def tool_tip(self):
        return self.ToolTip[3]

    def _entries(self):
        _, (_, _, entries) = self._bus.call(self._name, self.Menu, f"{_MENU}.GetLayout", "(iias)", 0, -1, [])
        return [(number, "—" if about.get("type") == "separator" else about["label"].replace("__", "_"))
                for number, about, _ in entries]

    def menu(self):
        """The labels of the menu, "—" for a line."""
        return [label for _, label in self._entries()]

    def choose(self, label):
        number = next(number for number, text in self._entries() if text == label)
        self._bus.call(self._name, self.Menu, f"{_MENU}.Event", "(isvu)", number, "clicked", GLib.Variant("i", 0), 0)
