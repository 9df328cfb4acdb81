"""Nothing that a page has not saved goes without its user being asked, and no page can keep its tab open."""

from harness import windows
from harness.case import DesktopTest
from harness.waiting import stays_true, wait_until

_PAGE = """<!doctype html><title>{title}</title><input autofocus style="position:fixed; inset:0; width:100%; height:100%">
<script>addEventListener('beforeunload', event => {{ {handler} }});
document.querySelector('input').addEventListener('input', event => {{ {typed} }});</script>"""
_REFUSES = "event.preventDefault(); event.returnValue = 'x';"


class Closing(DesktopTest):
    def show(self, handler=_REFUSES, typed=""):
        """One window with a page into which something has been typed: only such a page may ask its user."""
        self.page = self.start_site({"/": _PAGE.format(title="Draft", handler=handler, typed=typed)})
        self.window = self.app.wait_for_window(lambda one: one.title == "Draft")
        windows.wait_until_painted(self.window, least_colours=2)
        self.window.activate()
        self.window.click(400, 400)
        windows.type_text(self.session, "a")

    def dialog(self):
        """Whether a question is on the screen."""
        return len(self.app.windows()) > 1

    def close_window(self):
        self.session.run("wmctrl", "-i", "-c", hex(self.window.id))

    def ended(self):
        wait_until(lambda: not self.app.process.running(), "the application to end with its last window")
        self.assertEqual(0, self.app.process.exit_status())

    def test_a_page_with_something_unsaved_asks_its_user(self):
        # It takes longer than the engine waits: nothing may close in the meantime.
        self.show(handler="const t = Date.now(); while (Date.now() - t < 300); " + _REFUSES)
        wait_until(lambda: self.page.evaluate("document.querySelector('input').value") == "a", "the typed text")
        for way in (lambda: windows.press(self.session, "ctrl+w"), self.close_window,
                    lambda: windows.press(self.session, "ctrl+q")):
            way()
            wait_until(lambda: self.dialog(), "the question")
            windows.press(self.session, "Escape")
            wait_until(lambda: not self.dialog(), "the question to go")
            stays_true(lambda: self.app.process.running() and self.window.exists(), "the window stays", duration=0.6)
        self.assertEqual("a", self.page.evaluate("document.querySelector('input').value"))
        windows.press(self.session, "ctrl+w")
        wait_until(lambda: self.dialog(), "the question")
        windows.press(self.session, "Tab", "Return")
        self.ended()

    def test_a_page_that_hangs_can_be_closed(self):
        self.show(typed="while (true);")
        windows.press(self.session, "ctrl+w")
        wait_until(lambda: self.dialog(), "the offer")
        windows.press(self.session, "Return")
        wait_until(lambda: not self.dialog(), "the offer to go")
        self.assertTrue(self.window.exists())
        self.close_window()
        wait_until(lambda: self.dialog(), "the offer")
        windows.press(self.session, "Tab", "Return")
        self.ended()

    def test_a_page_without_anything_unsaved_goes_at_once(self):
        self.show(handler="")
        windows.press(self.session, "ctrl+q")
        self.ended()
