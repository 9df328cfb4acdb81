"""Every command of the menu does what it says, and those that make no sense now are off."""

from harness import windows
from harness.application import APP_ID
from harness.case import DesktopTest
from harness.waiting import wait_until

_APPLICATION = "/app/parvela/Parvela"


class Menu(DesktopTest):
    def activate(self, name, value="[]", path=f"{_APPLICATION}/window/1"):
        self.session.call_bus(APP_ID, path, "org.gtk.Actions.Activate", name, value, "{}")

    def enabled(self, name):
        return "true" in self.session.call_bus(APP_ID, f"{_APPLICATION}/window/1", "org.gtk.Actions.Describe", name).split(",")[0]

    def test_commands_of_the_page(self):
        page = self.start_linked()
        self.assertFalse(self.enabled("setBoardView"))
        self.assertFalse(self.enabled("selectNextTab"))
        page.evaluate("window.loadedOnce = true")
        board = self.person.boards()[1]["id"]
        places = [
            ("goMyTasks", "[]", "/my"), ("goBoards", "[]", "/boards"), ("goInbox", "[]", "/inbox"), ("goSearch", "[]", "/search"),
            ("openBoard", f"[<'{board}'>]", f"/b/{board}"), ("setBoardView", "[<1>]", f"/b/{board}?view=list"),
            ("setBoardView", "[<4>]", f"/b/{board}?view=timeline"), ("setBoardView", "[<0>]", f"/b/{board}"),
            ("goBack", "[]", f"/b/{board}?view=timeline"), ("goForward", "[]", f"/b/{board}"), ("goHome", "[]", "/home"),
        ]
        for name, value, address in places:
            with self.subTest(action=name, value=value):
                wait_until(lambda: self.enabled(name), f"{name} to be on")
                self.activate(name, value)
                wait_until(lambda: page.evaluate("location.pathname + location.search") == address, f"the page at {address}")
        self.assertTrue(page.evaluate("window.loadedOnce"), "the page was never loaded again")

        before = page.evaluate("innerWidth")
        for name, width in (("zoomIn", before / 1.1), ("zoomOut", before), ("zoomOut", before / 0.9), ("actualSize", before)):
            self.activate(name)
            wait_until(lambda: abs(page.evaluate("innerWidth") - width) < 3, f"{name} to take effect")
        self.activate("focusWebSearch")
        wait_until(lambda: page.evaluate("document.activeElement.type") == "search", "the search field to have the focus")
        page.evaluate("document.activeElement.blur()")
        self.activate("openShortcutsSheet")
        page.wait_for_text("Keyboard shortcuts")
        self.activate("reloadPage")
        wait_until(lambda: not page.evaluate("window.loadedOnce"), "a new load")
        page.evaluate("window.loadedOnce = true")
        self.activate("reloadFromOrigin")
        wait_until(lambda: not page.evaluate("window.loadedOnce"), "another load")
        wait_until(lambda: self.enabled("toggleParvelaSidebar"), "the page to draw its header itself")
        self.activate("newTask")
        page.wait_for_text("New task")
        self.activate("openInBrowser")
        wait_until(lambda: any(url.endswith("/home") for url in self.session.browser_urls()), "the browser to be asked")

    def test_a_command_chosen_by_keys_leaves_the_keyboard_to_the_page(self):
        page = self.start_linked()
        self.app.wait_for_window().activate()
        wait_until(lambda: self.enabled("toggleParvelaSidebar"), "the page to draw its header itself")
        tree = self.accessibility()

        def in_menu(name):
            return any("focused" in one.states for one in tree.find_all("menu item", name))

        windows.press(self.session, "F10")
        wait_until(lambda: in_menu("File"), "the menu")
        windows.press(self.session, "Return", "Down")
        wait_until(lambda: in_menu("New Task"), "the menu's first command")
        windows.press(self.session, "Return")
        page.wait_for_text("New task")
        windows.type_text(self.session, "Typed")
        wait_until(lambda: page.evaluate("document.activeElement.value") == "Typed", "the text in the form")

    def test_commands_and_keys_of_the_window(self):
        page = self.start_linked()
        window = self.app.wait_for_window()
        window.activate()
        windows.press(self.session, "F11")
        wait_until(lambda: "_NET_WM_STATE_FULLSCREEN" in window.states, "the full screen")
        windows.press(self.session, "F11")
        wait_until(lambda: "_NET_WM_STATE_FULLSCREEN" not in window.states, "the window again")
        self.activate("performZoom")
        wait_until(lambda: "_NET_WM_STATE_MAXIMIZED_VERT" in window.states, "a maximised window")
        self.activate("performZoom")
        wait_until(lambda: "_NET_WM_STATE_MAXIMIZED_VERT" not in window.states, "its own size again")
        width = page.evaluate("document.querySelector('nav').getBoundingClientRect().width")
        windows.press(self.session, "F9")
        wait_until(lambda: page.evaluate("(document.querySelector('nav')?.getBoundingClientRect().width || 0)") != width, "the sidebar")
        windows.press(self.session, "F9")
        windows.press(self.session, "F10")
        tree = self.accessibility()
        wait_until(lambda: any("Go" in one.name for one in tree.find_all(contains="Go")), "the menu")
        windows.press(self.session, "Escape")

        windows.press(self.session, "ctrl+t")
        wait_until(lambda: self.enabled("selectNextTab"), "a second tab")
        windows.press(self.session, "ctrl+shift+i")
        self.app.wait_for_window(lambda one: "Inbox" in one.title)
        windows.press(self.session, "ctrl+Tab")
        self.app.wait_for_window(lambda one: "Home" in one.title)
        windows.press(self.session, "ctrl+shift+Tab")
        self.app.wait_for_window(lambda one: "Inbox" in one.title)
        self.activate("selectNextTab")
        self.app.wait_for_window(lambda one: "Home" in one.title, "the first tab after the last")
        self.activate("selectPreviousTab")
        self.app.wait_for_window(lambda one: "Inbox" in one.title, "the last tab before the first")
        self.activate("moveTabToNewWindow")
        wait_until(lambda: len(self.app.windows()) == 2, "a window for the tab")
        self.activate("newWindow", path=_APPLICATION)
        wait_until(lambda: len(self.app.windows()) == 3, "a new window")
        self.activate("performMiniaturize")
        wait_until(lambda: "_NET_WM_STATE_HIDDEN" in window.states, "the first window to be minimised")
        self.activate("arrangeInFront", path=_APPLICATION)
        wait_until(lambda: "_NET_WM_STATE_HIDDEN" not in window.states, "all windows in front")


class MenuOfThePage(DesktopTest):
    def test_opens_by_key_works_on_the_field_and_gives_the_keyboard_back(self):
        page = self.start_site({"/": "<!doctype html><title>Ours</title><textarea autofocus>before</textarea>"})
        self.app.wait_for_window(lambda one: one.title == "Ours").activate()
        wait_until(lambda: page.evaluate("document.hasFocus() && document.activeElement.tagName") == "TEXTAREA", "the focus")
        tree = self.accessibility()
        windows.press(self.session, "shift+F10")
        wait_until(lambda: any("focused" in one.states for one in tree.find_all("menu item", "Undo")), "the menu")
        windows.press(self.session, *["Down"] * 7, "Return")  # to "Select All"
        wait_until(lambda: page.evaluate("document.activeElement.selectionEnd") == len("before"), "the text to be selected")
        windows.type_text(self.session, "after")
        wait_until(lambda: page.evaluate("document.activeElement.value") == "after", "the text that was typed")
