"""The page inside the desktop app: what it posts and how it answers the app's events."""

import urllib.request

from case import WebCase
from harness.waiting import wait_until

HANDLED = """const detail = arguments[0];
window.dispatchEvent(new CustomEvent('parvela-native', { detail }));
return detail.handled === true;"""


class ShellCase(WebCase):
    shell = {"linkedWorkspaceId": "wsp_1"}

    def posted(self, kind):
        """The messages of one type that the page has posted, oldest first."""
        return [message for message in self.browser.js("return window.posted") if message["type"] == kind]

    def wait_posted(self, kind, wanted):
        """Waits for a message that has these fields."""
        return wait_until(lambda: next((message for message in self.posted(kind) if wanted.items() <= message.items()), None),
                          f"a message {kind} with {wanted}, not {self.posted(kind)}")

    def send(self, **detail):
        """Dispatches one of the app's events; answers whether the page took the action."""
        return self.browser.js(HANDLED, detail)


class Posting(ShellCase):
    def test_a_signed_in_page_tells_boards_badge_and_timer(self):
        self.open()
        self.assertEqual(self.posted("shell"), [{"type": "shell", "version": 1}])
        message = self.wait_posted("boards", {"workspaceId": "wsp_1"})
        self.assertEqual([board["name"] for board in message["boards"]], [board["name"] for board in self.person().boards()])
        for board in message["boards"]:
            self.assertRegex(board["color"], r"^#[0-9A-Fa-f]{6}$")
        unread = self.person().call("GET", "/api/v1/notifications?limit=1")["unread"]
        self.wait_posted("badge", {"count": unread})
        self.wait_posted("timer", {"state": "stopped"})
        self.assertEqual(self.posted("link"), [], "a linked device is not asked again")

    def test_reading_the_inbox_lowers_the_badge(self):
        self.open("/inbox")
        self.browser.click("button", "Mark all as read")
        self.wait_posted("badge", {"count": 0})

    def test_the_timer_is_told_and_stopped_by_the_app(self):
        self.open("/t/TSK-3")
        self.browser.click("aside button", "Start timer")
        started = self.wait_posted("timer", {"state": "started", "taskKey": "TSK-3", "boardName": "Website relaunch"})
        self.assertEqual(started["taskTitle"], "Accessibility pass on the navigation")
        self.assertAlmostEqual(started["startedAt"], self.browser.js("return Date.now()"), delta=60_000)
        self.send(type="stopTimer", taskKey="TSK-4")
        self.assertIsNotNone(self.person().call("GET", "/api/timer")["timer"], "another task's timer is left alone")
        self.send(type="stopTimer", taskKey="TSK-3")
        wait_until(lambda: self.person().call("GET", "/api/timer")["timer"] is None, "the timer to stop")
        wait_until(lambda: self.posted("timer")[-1] == {"type": "timer", "state": "stopped"}, "the stop to be told")

    def test_the_band_drags_the_window_except_on_its_controls(self):
        self.open()
        x, y = self.browser.middle(self.browser.one(".band-title"))
        self.browser.press_at(x + 60, y)
        wait_until(lambda: len(self.posted("windowDrag")) == 1, "a drag")
        self.browser.press_at(x + 60, y, times=2)
        wait_until(lambda: len(self.posted("titlebarDoubleClick")) == 1, "a double click")
        drags = len(self.posted("windowDrag"))
        self.browser.click("header input[type=search]")
        self.browser.click("header button", "Hide sidebar")
        self.browser.press_at(600, 400)
        self.assertEqual(len(self.posted("windowDrag")), drags)

    def test_signing_out_unlinks_and_clears_what_the_app_shows(self):
        self.open("/settings")
        self.browser.click("button", "Sign out")
        self.browser.one("h1", "Sign in to Parvela")
        wait_until(lambda: self.posted("unlinked"), "the unlinking")
        wait_until(lambda: self.posted("boards")[-1]["boards"] == [], "the boards to be cleared")
        self.assertEqual(self.posted("badge")[-1]["count"], 0)


class Linking(ShellCase):
    shell = {"linkedWorkspaceId": None}

    def test_allow_hands_a_working_token_over(self):
        self.open()
        self.browser.one("dialog h2", "Link this Mac?")
        self.browser.wait_text("dialog", "Robin's Mac")
        self.browser.click("dialog button", "Allow", exact=True)
        link = self.wait_posted("link", {"workspaceId": "wsp_1", "apiBase": self.service.api_url})
        self.browser.gone("dialog")
        self.assertEqual((link["workspaceName"], link["userName"]), ("Harbour Studio", "Robin Hale"))
        request = urllib.request.Request(self.service.api_url + "/api/v1/me", headers={"Authorization": f"Bearer {link['token']}"})
        with urllib.request.urlopen(request, timeout=10) as answer:
            self.assertEqual(answer.status, 200)
        self.assertNotIn(link["token"], self.browser.js("return document.documentElement.outerHTML + JSON.stringify(localStorage)"))
        self.browser.go(self.url("/settings/developers"))
        self.browser.wait_text("#main", "Robin's Mac")
        self.browser.wait_text("#main", "This Mac")

    def test_the_answer_given_in_one_window_counts_for_all(self):
        self.open()
        self.browser.one("dialog h2", "Link this Mac?")
        first = self.browser.new_tab()
        self.browser.shell(**self.shell)
        self.open()
        self.browser.click("dialog button", "Not Now")
        self.browser.close_tab(first)
        self.browser.gone("dialog")

    def test_revoking_this_devices_token_unlinks(self):
        self.open("/settings")
        self.browser.click("dialog button", "Allow", exact=True)
        self.wait_posted("link", {"workspaceId": "wsp_1"})
        self.assertTrue(self.send(type="navigate", path="/settings/developers"))
        self.browser.click("#main button", "Revoke Robin's Mac")
        self.browser.click("dialog button", "Unlink", exact=True)
        self.browser.gone(".token-row")
        self.wait_posted("unlinked", {})
        self.assertEqual(self.person().tokens(), [])

    def test_tab_goes_round_inside_the_dialog(self):
        self.open()
        self.browser.one("dialog h2", "Link this Mac?")
        focused = []
        for key in ("Tab", "Tab", "Shift+Tab", "Shift+Tab"):
            self.browser.keys(key)
            focused.append(self.browser.js("return document.activeElement.textContent.trim()"))
        self.assertEqual(focused, ["Not Now", "Allow", "Not Now", "Allow"])

    def test_tab_goes_round_in_the_page(self):
        self.open()
        self.browser.click("dialog button", "Not Now")
        self.browser.gone("dialog")
        self.browser.js("document.querySelector('.skip-link, a, button').focus(); window.first = document.activeElement")
        self.browser.keys("Shift+Tab")
        self.assertFalse(self.browser.js("return [document.body, window.first].includes(document.activeElement)"))
        self.browser.keys("Tab")
        self.assertTrue(self.browser.js("return document.activeElement === window.first"))

    def test_not_now_is_remembered_until_the_app_asks(self):
        self.open()
        self.browser.click("dialog button", "Not Now")
        self.browser.gone("dialog")
        self.browser.go(self.url("/my"))
        self.browser.one("h1", "My tasks")
        self.settled()
        self.assertEqual(self.browser.all("dialog"), [])
        self.assertTrue(self.send(type="requestLink"))
        self.browser.one("dialog h2", "Link this Mac?")
        self.assertEqual(self.posted("link"), [])


class Events(ShellCase):
    def test_navigate_shows_the_page_without_a_load(self):
        self.open()
        self.browser.js("window.sameDocument = true")
        for path in ("/my", "/b/brd_1?view=table", "/t/TSK-3", "/inbox", "/boards", "/search", "/settings/developers"):
            self.assertTrue(self.send(type="navigate", path=path), path)
            self.browser.wait_path(path)
        self.browser.one("h1", "Developer settings")
        self.assertTrue(self.browser.js("return window.sameDocument"))

    def test_navigate_leaves_other_paths_to_the_app(self):
        self.open()
        for path in ("/files/1/x.pdf", "//example.com/home", "https://example.com/home", "home", "/t/%E0%A4%A", "", 7):
            self.assertFalse(self.send(type="navigate", path=path), path)
        self.assertEqual(self.browser.path(), "/home")

    def test_a_popstate_by_the_app_shows_the_route(self):
        self.open()
        self.browser.js("history.pushState(null, '', '/inbox'); window.dispatchEvent(new PopStateEvent('popstate'))")
        self.browser.one("h1", "Inbox")

    def test_new_task_is_taken_only_when_signed_in(self):
        self.open()
        self.assertTrue(self.send(type="newTask"))
        self.browser.one("dialog h2", "New task")
        self.browser.forget_everything(self.service.web_url)
        self.browser.go(self.url("/home"))
        self.browser.one("h1", "Sign in to Parvela")
        self.assertFalse(self.send(type="newTask"))

    def test_the_band_leaves_the_room_that_the_window_buttons_need(self):
        left = "return Math.min(...[...document.querySelectorAll('header a, header button, header input, header h1')]" \
               ".filter((element) => element.checkVisibility()).map((element) => element.getBoundingClientRect().left))"
        self.open()
        plain = self.browser.js(left)
        self.send(type="titlebar", inset=True, buttonsRight=158.5)
        wait_until(lambda: self.browser.js(left) >= 158.5, "room for the window buttons")
        self.assertEqual(self.browser.js("return document.querySelector('header').getBoundingClientRect().height"), 76)
        self.send(type="toggleSidebar")
        self.browser.gone("#sidebar")
        self.assertGreaterEqual(self.browser.js(left), 158.5)
        self.assertLess(self.browser.js(left), 200)
        self.send(type="fullscreen", on=True)
        wait_until(lambda: self.browser.js(left) < 158, "the room to be given back in full screen")
        self.send(type="fullscreen", on=False)
        wait_until(lambda: self.browser.js(left) >= 158.5, "the room to come back")
        self.send(type="titlebar", inset=False)
        self.send(type="toggleSidebar")
        wait_until(lambda: self.browser.js(left) == plain, "the plain band")

    def test_the_app_focuses_search_and_opens_the_shortcuts(self):
        self.open()
        self.browser.js("document.querySelector('header input[type=\"search\"]').focus()")
        self.assertEqual(self.browser.focused(), "Search tasks")
        self.browser.js("document.activeElement.blur()")
        self.browser.js("document.body.dispatchEvent(new KeyboardEvent('keydown', { key: '?', bubbles: true }))")
        self.browser.one("dialog h2", "Keyboard shortcuts")
        self.browser.keys("Escape")
        self.browser.gone("dialog")
        self.browser.js("document.body.dispatchEvent(new KeyboardEvent('keydown', { key: '/', bubbles: true, cancelable: true }))")
        self.assertEqual(self.browser.focused(), "Search tasks")

    def test_unknown_and_broken_events_do_nothing(self):
        self.open()
        for detail in (None, 7, "navigate", {}, {"type": "explode"}, {"type": "titlebar", "inset": True, "buttonsRight": "wide"}):
            self.browser.js("window.dispatchEvent(new CustomEvent('parvela-native', { detail: arguments[0] }))", detail)
        self.browser.one("h1", "Home")
