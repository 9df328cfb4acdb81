"""Quick add by the shortcut that works everywhere, while another program has the keyboard."""

import sys

from harness import programs, windows
from harness.application import APP_ID
from harness.case import DesktopTest
from harness.waiting import stays_true, wait_until

SHORTCUT = "ctrl+alt+space"

# Another program that owns the shortcut: it grabs the key for good.
GRABBER = """
import ctypes, time
x = ctypes.CDLL("libX11.so.6")
x.XOpenDisplay.restype = ctypes.c_void_p
x.XDefaultRootWindow.restype = ctypes.c_ulong
display = ctypes.c_void_p(x.XOpenDisplay(None))
x.XGrabKey(display, 65, 12, ctypes.c_ulong(x.XDefaultRootWindow(display)), 0, 1, 1)
x.XSync(display, 0)
print("grabbed", flush=True)
time.sleep(1000)
"""


class HotKeyTest(DesktopTest):
    def wait_for_popover(self):
        popover = wait_until(self.app.quick_add, "the popover", timeout=30)
        wait_until(lambda: windows.active_window(self.session) == popover.id, "the popover to be active")
        return popover

    def open_another_program(self):
        """A window of another program, which writes down the keys it gets."""
        self.other = self.session.start("xev", "-geometry", "300x150+20+20")
        window = windows.wait_for_window(self.session, lambda one: one.title == "Event Tester")
        window.activate()
        return window

    def stacking(self):
        text = self.session.run("xprop", "-root", "_NET_CLIENT_LIST_STACKING").stdout
        return [int(number, 16) for number in text.partition("#")[2].replace(",", " ").split()]


class FromAnotherProgram(HotKeyTest):
    def test_a_line_becomes_a_task_and_the_focus_goes_back(self):
        self.start_linked()
        main = self.app.windows()[0]
        other = self.open_another_program()
        keys_before = self.other.output().count("KeyPress")
        windows.press(self.session, SHORTCUT)
        self.wait_for_popover()
        windows.type_text(self.session, "Call the printer tomorrow !high")
        windows.press(self.session, "Return")
        card = wait_until(lambda: self.person.find_card("Call the printer"), "the task")
        self.assertEqual("high", card["priority"])
        windows.press(self.session, SHORTCUT)
        wait_until(lambda: not self.app.quick_add(), "the popover to close")
        wait_until(lambda: windows.active_window(self.session) == other.id, "the other window to be active again")
        stacking = self.stacking()
        self.assertLess(stacking.index(main.id), stacking.index(other.id), "the main window stays behind")
        typed = self.other.output().count("KeyPress")
        windows.press(self.session, "x")
        wait_until(lambda: self.other.output().count("KeyPress") > typed, "a key to arrive there")
        self.assertLess(typed - keys_before, 8, "the line did not go to the other program")  # the modifiers do

    def test_each_press_opens_or_closes_and_keeps_what_was_typed(self):
        self.start_linked()
        self.open_another_program()
        windows.press(self.session, SHORTCUT)
        self.wait_for_popover()
        windows.type_text(self.session, "half a thought")
        windows.press(self.session, SHORTCUT)
        wait_until(lambda: not self.app.quick_add(), "the popover to close")
        windows.press(self.session, SHORTCUT)
        self.wait_for_popover()
        tree = self.accessibility()
        wait_until(lambda: any(one.text() == "half a thought" for one in tree.find_all(role="text")), "the draft")
        self.assertIsNone(self.person.find_card("half a thought"))


class Registration(HotKeyTest):
    def test_a_shortcut_of_another_program_is_refused_and_said(self):
        self.session.start(sys.executable, "-c", GRABBER, name="grabber")
        wait_until(lambda: "grabbed" in self.session.logs(), "the other program's grab")
        self.use_bus()
        self.use_application()
        self.app.start("--background")
        wait_until(lambda: self._answers(), "the program")
        windows.press(self.session, SHORTCUT)
        stays_true(lambda: not self.app.quick_add(), "the shortcut belongs to the other program")
        self.bus.activate(APP_ID, "showSettings")
        self.app.wait_for_window(lambda window: window.title == "Parvela Settings", "Settings")
        self.accessibility().wait_for(contains="That shortcut is already used by another app. Pick a different one.")

    def test_is_off_when_switched_off(self):
        self.use_bus()
        self.use_application()
        self.app.change_settings(hotKeyEnabled=False)
        self.app.start("--background")
        wait_until(lambda: self._answers(), "the program")
        windows.press(self.session, SHORTCUT)
        stays_true(lambda: not self.app.quick_add(), "no shortcut is taken")

    def test_follows_the_settings(self):
        self.use_application()
        self.app.change_settings(hotKeyCode=0, hotKeyModifiers=0x0300)  # Super, Shift and the key of A
        self.app.start("--background")

        def pressed():
            windows.press(self.session, "super+shift+a")
            return self.app.quick_add()

        wait_until(pressed, "the popover", interval=1)

    def _answers(self):
        return self.bus.call(APP_ID, "/app/parvela/Parvela", "org.freedesktop.DBus.Peer.Ping") == ()


class Command(HotKeyTest):
    def test_shows_quick_add_and_starts_the_program_for_it(self):
        self.use_application()
        self.session.start(programs.path("parvela"), "quick-add")
        self.wait_for_popover()
        self.assertEqual(["Parvela Quick Add"], [window.title for window in self.app.windows()])
        windows.press(self.session, "Escape")
        wait_until(lambda: not self.app.quick_add(), "the popover to close")
        self.assertEqual(0, self.app.command("quick-add").returncode)
        self.wait_for_popover()
