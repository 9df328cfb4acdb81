"""The quick-add window, used as a person would: real keys, the real service, and what a screen reader is told."""

import datetime
import json
import subprocess
import sys
import urllib.request

from harness import windows
from harness.application import APP_ID
from harness.case import DesktopTest
from harness.session import WindowManager
from harness.waiting import stays_true, wait_until

# Holds the keyboard for a moment, as a switch of the keyboard layout or another program's hot key does.
_GRAB = """
import ctypes, ctypes.util, time
x = ctypes.CDLL(ctypes.util.find_library("X11"))
x.XOpenDisplay.restype = ctypes.c_void_p
display = ctypes.c_void_p(x.XOpenDisplay(None))
x.XDefaultRootWindow.restype = ctypes.c_ulong
root = ctypes.c_ulong(x.XDefaultRootWindow(display))
status = x.XGrabKeyboard(display, root, 0, 1, 1, ctypes.c_ulong(0))
x.XSync(display, 0)
assert status == 0, status
time.sleep(0.6)
x.XUngrabKeyboard(display, ctypes.c_ulong(0))
x.XSync(display, 0)
"""


class QuickAddTest(DesktopTest):
    """Tests with the program in the background, so that nothing but the popover is on the screen."""

    def start(self, write=True, linked=True):
        self.use_application()
        if linked:
            token = self.person.call("POST", "/api/tokens", {"name": "Test", "write": write})["token"]
            self.assertEqual(0, self.app.command("link-token", stdin=token).returncode)
        self.launch()

    def launch(self):
        self.app.start("--background")
        wait_until(self.app.answers, "the program on the bus")
        self.tree = self.accessibility()

    def open(self):
        self.assertEqual(0, self.session.run("gapplication", "action", APP_ID, "showQuickAdd").returncode)
        window = wait_until(self.app.quick_add, "the quick-add window")
        wait_until(lambda: windows.active_window(self.session) == window.id, "the quick-add window to have the keyboard")
        return window

    def wait_until_closed(self):
        wait_until(lambda: self.app.quick_add() is None, "the quick-add window to be gone")

    def field(self):
        return self.tree.wait_for("text", "New task")

    def wait_for_text(self, text):
        wait_until(lambda: self.field().text() == text, f"'{text}' in the field")

    def wait_for_lists(self):
        """Until the people of the board are known: only then a name is more than what was typed."""
        windows.type_text(self.session, "@robin")
        self.tree.wait_for("push button", "Assignee: Robin Hale")
        windows.press(self.session, "ctrl+a", "BackSpace")
        self.wait_for_text("")

    def tab_to(self, role):
        """Presses Tab until an element of that role has the keyboard; returns it."""
        for _ in range(12):
            focused = next((one for one in self.tree.find_all(role) if "focused" in one.states), None)
            if focused:
                return focused
            windows.press(self.session, "Tab")
        raise AssertionError(f"Tab reaches no {role}:\n{self.tree.outline()}")

    def other_window(self):
        """Another program's window, with the keyboard."""
        self.session.start("xev", "-event", "keyboard")
        window = windows.wait_for_window(self.session, lambda one: "Event Tester" in one.title)
        window.activate()
        return window

    def add_due_task(self, title):
        body = {"board": self.person.boards()[0]["id"], "title": title, "due_date": datetime.date.today().isoformat()}
        request = urllib.request.Request(
            f"{self.service.api_url}/api/v1/tasks", data=json.dumps(body).encode(),
            headers={"Authorization": f"Bearer {self.app.stored_token()}", "Content-Type": "application/json"})
        with urllib.request.urlopen(request, timeout=10) as answer:
            return json.load(answer)


class Adding(QuickAddTest):
    def test_a_typed_line_becomes_a_card_and_the_keyboard_goes_back(self):
        self.start()
        other = self.other_window()
        self.open()
        self.wait_for_lists()
        windows.type_text(self.session, "Write brief tomorrow 9am !high #design @robin")
        for name in ("Date: Tomorrow", "Time: 9 AM", "Priority: High", "Label: Design", "Assignee: Robin Hale"):
            self.tree.wait_for("push button", name)
        windows.press(self.session, "Return")
        card = wait_until(lambda: self.person.find_card("Write brief"), "the card")
        tomorrow = datetime.date.today() + datetime.timedelta(days=1)
        self.assertEqual((tomorrow.isoformat(), "high", ["Design"], ["Robin Hale"]),
                         (card["due_date"], card["priority"], card["labels"], card["assignees"]))
        self.tree.wait_for("label", "Created")
        self.tree.wait_for("push button", f"Open {card['key']} in Parvela")
        self.wait_for_text("")

        windows.press(self.session, "Escape")
        self.wait_until_closed()
        wait_until(lambda: windows.active_window(self.session) == other.id, "the keyboard to go back")
        self.assertEqual([], self.app.windows(), "no main window was opened or raised")

    def test_control_return_adds_and_closes(self):
        self.start()
        other = self.other_window()
        self.open()
        windows.type_text(self.session, "Call Sam")
        windows.press(self.session, "ctrl+Return")
        self.wait_until_closed()
        wait_until(lambda: windows.active_window(self.session) == other.id, "the keyboard to go back")
        self.assertIsNotNone(self.person.find_card("Call Sam"))

    def test_what_goes_wrong_is_said_and_the_line_stays(self):
        self.start(write=False)
        self.open()
        windows.type_text(self.session, "tomorrow !high")
        windows.press(self.session, "Return")
        self.tree.wait_for("label", contains="Give the task a title.")
        windows.type_text(self.session, " Call Sam every monday")
        wait_until(lambda: self.tree.find("label", contains="Give the task a title.") is None, "the error to go with the next key")
        self.tree.wait_for("label", "Repeat rules can't be set from quick add — the first date is used.")
        windows.press(self.session, "Return")
        self.tree.wait_for("label", contains="This token can't do that.")
        self.wait_for_text("tomorrow !high Call Sam every monday")
        self.assertIsNone(self.person.find_card("Call Sam"))

    def test_a_piece_is_given_back_by_key_and_by_its_button_and_added_as_text(self):
        self.start()
        self.open()
        windows.type_text(self.session, "Read memo tomorrow")
        self.tree.wait_for("push button", "Date: Tomorrow")
        windows.press(self.session, "ctrl+l")
        self.tree.wait_for("push button", "Plain text: tomorrow")
        windows.press(self.session, "ctrl+l")
        self.tree.wait_for("push button", "Date: Tomorrow").press()
        self.tree.wait_for("push button", "Plain text: tomorrow")
        windows.press(self.session, "Return")
        card = wait_until(lambda: self.person.find_card("Read memo tomorrow"), "the card with its whole title")
        self.assertNotIn("due_date", card)


class Names(QuickAddTest):
    def test_are_offered_chosen_by_keys_and_in_nobodys_way(self):
        self.start()
        self.open()
        self.wait_for_lists()
        windows.type_text(self.session, "Call @ro")
        self.tree.wait_for("list item", "Robin Hale")
        windows.press(self.session, "Escape")
        wait_until(lambda: self.tree.find("list item", "Robin Hale") is None, "the list to close")
        self.assertIsNotNone(self.app.quick_add(), "Escape closes the list first")
        windows.press(self.session, "BackSpace", "Down", "Down")
        self.wait_for_text("Call @Rosa")
        windows.press(self.session, "Up")
        self.wait_for_text("Call @Robin")
        windows.press(self.session, "Return")
        card = wait_until(lambda: self.person.find_card("Call"), "the card")
        self.assertEqual(["Robin Hale"], card["assignees"])

        # A line that was added can be had back.
        self.wait_for_text("")
        windows.press(self.session, "ctrl+z")
        self.wait_for_text("Call @Robin")

    def test_are_chosen_by_a_click(self):
        self.start()
        popover = self.open()
        self.wait_for_lists()
        windows.type_text(self.session, "Ask @r")
        x, y, width, height = self.tree.wait_for("list item", "Rosa Diaz").extents()
        popover.click(x + width // 2, y + height // 2)
        self.wait_for_text("Ask @Rosa ")
        windows.type_text(self.session, "about #des")
        self.tree.wait_for("list item", "Design")
        windows.press(self.session, "Return")
        card = wait_until(lambda: self.person.find_card("Ask about #des"), "the card with what was typed")
        self.assertEqual((["Rosa Diaz"], []), (card["assignees"], card["labels"]))


class NotLinked(QuickAddTest):
    def test_only_the_way_to_link_is_shown(self):
        self.start(linked=False)
        self.open()
        self.tree.wait_for("label", "Link your Parvela account")
        self.tree.wait_for("label", "Sign in to Parvela in the main window and choose Allow when it asks to link this Mac. "
                                    "The menu bar, Shortcuts and the share extension then work too.")
        self.assertIsNone(self.tree.find("text", "New task"))
        self.assertIsNone(self.tree.find("label", "Due today"))
        windows.press(self.session, "Return")  # the button has the keyboard
        self.app.wait_for_window(lambda window: window.title != "Parvela Quick Add")
        self.wait_until_closed()


class DueToday(QuickAddTest):
    def test_is_completed_by_keyboard_and_restored_when_that_fails(self):
        self.start()
        self.add_due_task("<b>Water</b> & \u202eplants")
        self.open()
        self.tree.wait_for("check box", "<b>Water</b> & \u202eplants")
        first = self.tab_to("check box").name
        self.assertFalse(self.person.find_card(first)["done"])
        windows.press(self.session, "space")
        wait_until(lambda: self.person.find_card(first)["done"], "the task to be done")
        self.service.stop()
        windows.press(self.session, "space")
        self.tree.wait_for("label", contains="You're offline")
        box = self.tree.wait_for("check box", first)
        self.assertIn("checked", box.states, "as the service has it")

    def test_arrows_go_through_the_rows_space_toggles_and_return_opens(self):
        self.start()
        self.open()
        self.tree.wait_for("check box")
        names = [one.name for one in self.tree.find_all("check box")]
        self.tab_to("check box")
        windows.press(self.session, "Down", "Down", "space")
        wait_until(lambda: self.person.find_card(names[2])["done"], "the third task to be done")
        key = self.person.find_card(names[2])["key"]
        windows.press(self.session, "Return")
        self.wait_until_closed()
        self.app.page(f"/t/{key}")


class Draft(QuickAddTest):
    def test_survives_escape_another_window_and_the_end_of_the_program(self):
        self.start()
        self.open()
        windows.type_text(self.session, "Buy milk tomorrow")
        self.tree.wait_for("push button", "Date: Tomorrow")
        windows.press(self.session, "ctrl+l")
        self.tree.wait_for("push button", "Plain text: tomorrow")
        windows.press(self.session, "Escape")
        self.wait_until_closed()
        self.open()
        self.wait_for_text("Buy milk tomorrow")
        windows.type_text(self.session, " now")
        wait_until(lambda: "now" in self.app.settings().get("quickAddDraft", ""), "the draft on disk")
        self.app.process.stop()
        self.launch()
        self.open()
        self.wait_for_text("Buy milk tomorrow now")
        self.tree.wait_for("push button", "Plain text: tomorrow")
        self.other_window()
        self.wait_until_closed()
        self.open()
        self.wait_for_text("Buy milk tomorrow now")
        windows.press(self.session, "Return")
        wait_until(lambda: self.person.find_card("Buy milk tomorrow now"), "the card")
        wait_until(lambda: "quickAddDraft" not in self.app.settings(), "no draft to be left")


class Focus(QuickAddTest):
    def test_a_layout_switch_and_a_held_keyboard_do_not_close_it_but_another_window_does(self):
        self.start()
        self.open()
        windows.type_text(self.session, "Draft")
        self.session.run("setxkbmap", "de")
        self.session.run("setxkbmap", "us")
        with subprocess.Popen([sys.executable, "-c", _GRAB], env=self.session.env) as grab:
            stays_true(lambda: self.app.quick_add() is not None, "the window is there while the keyboard is held", duration=1.5)
        self.assertEqual(0, grab.returncode)
        windows.type_text(self.session, " goes on")
        self.wait_for_text("Draft goes on")
        other = self.other_window()
        self.wait_until_closed()
        stays_true(lambda: windows.active_window(self.session) == other.id, "the other window keeps the keyboard", duration=0.5)

    def test_every_control_is_reached_by_tab_and_has_a_name(self):
        self.start()
        self.open()
        self.tree.wait_for("check box")
        windows.type_text(self.session, "Write brief tomorrow")
        self.tree.wait_for("push button", "Date: Tomorrow")
        for one in self.tree.find_all():
            if one.role in ("push button", "check box", "text", "combo box", "toggle button"):
                self.assertTrue(one.name and not one.name.startswith("Gtk"), f"{one.role} '{one.name}' has no name")
        reached = set()
        for _ in range(40):
            windows.press(self.session, "Tab")
            reached |= {one.name for one in self.tree.find_all() if "focused" in one.states}
            if {"Open Parvela", "Settings", "Quit Parvela", "New task"} <= reached:
                break
        for name in ("New task", "Date: Tomorrow", "Add Task", "Refresh", "Open Parvela", "Settings", "Quit Parvela"):
            self.assertIn(name, reached)


class BareDesktop(QuickAddTest):
    """This window manager leaves the keyboard where it was when the bare desktop is clicked."""

    window_manager = WindowManager.mutter

    def test_a_click_on_it_closes_and_one_inside_does_not(self):
        self.start()
        popover = self.open()
        windows.type_text(self.session, "Draft")
        popover.click(300, 25)
        for y in (130, 210):  # the board picker, and the second board in its list
            popover.click(150, y)
            stays_true(lambda: self.app.quick_add() is not None, "clicks inside leave it open", duration=0.5)
        self.session.run("xdotool", "mousemove", "20", "780", "click", "4")
        stays_true(lambda: self.app.quick_add() is not None, "the wheel leaves it open", duration=0.5)
        self.session.run("xdotool", "click", "1")
        self.wait_until_closed()
        self.open()
        self.wait_for_text("Draft")


class OfflineLines(QuickAddTest):
    def test_wait_are_sent_and_are_retried_or_discarded_when_refused(self):
        self.start()
        self.open()
        self.tree.wait_for("check box")
        self.service.stop()
        windows.type_text(self.session, "Buy milk")
        windows.press(self.session, "Return")
        self.tree.wait_for("label", contains="Saved. It will be added when you are back online.")
        self.tree.wait_for("label", contains="1 waiting")
        self.wait_for_text("")
        self.service.start()
        self.tree.wait_for("push button", "Try Now").press()
        wait_until(lambda: self.person.find_card("Buy milk"), "the card")
        wait_until(lambda: self.tree.find("label", contains="waiting") is None, "the section to go")
        self.assertIsNone(self.tree.find("label", contains="It will be added"), "the promise has come true")

        self.service.stop()
        windows.type_text(self.session, "Refused lien")
        windows.press(self.session, "Return")
        self.tree.wait_for("push button", "Edit: Refused lien").press()
        self.wait_for_text("Refused lien")
        windows.press(self.session, "BackSpace", "BackSpace", "n", "e", "Return")
        self.tree.wait_for("label", contains="1 waiting")
        self.service.start()
        for token in self.person.tokens():
            self.person.call("DELETE", f"/api/tokens/{token['id']}")
        self.tree.wait_for("push button", "Try Now").press()
        self.tree.wait_for("label", contains="1 failed")
        self.tree.wait_for("push button", "Retry: Refused line")
        self.tree.wait_for("push button", "Discard: Refused line").press()
        self.tree.wait_for("push button", "Undo: Refused line").press()
        self.tree.wait_for("push button", "Discard: Refused line").press()
        self.tree.wait_for("push button", "Undo: Refused line")
        windows.press(self.session, "Escape")
        self.wait_until_closed()
        self.open()
        self.assertIsNone(self.tree.find("label", contains="failed"))
