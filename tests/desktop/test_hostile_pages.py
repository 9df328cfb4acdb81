"""Pages that mean harm: what they can reach, how long they can hold up the window, and where their wishes end."""

import json
import time

from harness import windows
from harness.case import DesktopTest
from harness.waiting import stays_true, wait_until

_POST = "webkit.messageHandlers.parvela.postMessage"
_LINK = "{ type: 'link', token: 'tk_0123456789abcdefghijklmnopqrstuv', apiBase: '%s', workspaceId: 'w' }"


class HostilePages(DesktopTest):
    def show(self, body="", **more):
        """Shows a page with this body; `more` are other paths of the site, which is the application's own server."""
        page = self.start_site({"/": f"<!doctype html><title>Ours</title>{body}", **{f"/{name}": text for name, text in more.items()}})
        self.window = self.app.wait_for_window(lambda one: one.title == "Ours")
        self.window.activate()
        return page

    def tabs(self):
        return [tab for group in self.app.saved_windows() for tab in group["tabs"]]

    def test_only_the_main_frame_of_the_web_app_is_heard(self):
        # Another port of the same machine may be shown, but it is not the web app.
        other = self.use_site({"/": "<!doctype html><title>Theirs</title>"})
        page = self.show(f"<iframe src='{other.url}/'></iframe><iframe src='/frame'></iframe>",
                         frame=f"<script>try {{ {_POST}({_LINK % 'https://api.test'}) }} catch (e) {{ parent.caught = e.name }}</script>")
        wait_until(lambda: page.evaluate("window.caught") == "ReferenceError", "the frame to find no handler")
        page.evaluate(f"location.assign('{other.url}/')")
        self.app.wait_for_window(lambda one: one.title == "Theirs")
        page.evaluate(f"{_POST}({_LINK % self.site.url})")
        page.evaluate(f"location.assign('{self.site.url}/')")
        self.app.wait_for_window(lambda one: one.title == "Ours")
        stays_true(lambda: self.app.stored_token() is None, "no token is taken from a page that is not the web app")
        page.evaluate(f"{_POST}({_LINK % self.site.url})")
        wait_until(self.app.stored_token, "the token of the web app itself")

    def test_a_flood_of_messages_leaves_the_window_usable(self):
        page = self.show()
        page.evaluate("""window.sent = 0; setInterval(() => { const end = Date.now() + 8; while (Date.now() < end) { %s(
                         { type: 'timer', state: 'started', taskKey: 'TSK-' + window.sent, taskTitle: 'x'.repeat(500) });
                         %s({ type: 'boards', boards: [{ id: 'b', name: 'n' + window.sent }] }); window.sent += 2; } }, 10);
                      """ % (_POST, _POST))
        wait_until(lambda: page.evaluate("window.sent") > 20_000, "twenty thousand messages", timeout=30)
        begin = time.monotonic()
        windows.press(self.session, "ctrl+t")
        wait_until(lambda: len(self.tabs()) == 2, "a new tab", timeout=10)
        windows.press(self.session, "ctrl+w")
        wait_until(lambda: len(self.tabs()) == 1, "the tab to go", timeout=10)
        self.assertLess(time.monotonic() - begin, 10)
        self.assertTrue(self.app.process.running())

    def test_windows_programs_and_addresses_come_one_at_a_time(self):
        page = self.show(sub="<!doctype html><title>Sub</title>")
        page.evaluate("for (let i = 0; i < 300; ++i) open('/sub?' + i)")
        wait_until(lambda: len(self.tabs()) == 2, "one new tab")
        page.evaluate("for (let i = 0; i < 300; ++i) open('https://elsewhere.example/' + i)")
        wait_until(self.session.browser_urls, "the browser to be asked")
        page.evaluate("""window.count = 0; setInterval(() => { for (let i = 0; i < 20; ++i)
                         try { history.pushState(null, '', '/p' + ++window.count); } catch (e) { window.refused = e.name; } }, 1);""")
        wait_until(lambda: page.evaluate("window.refused"), "the engine to refuse more addresses")
        stays_true(lambda: len(self.tabs()) <= 2 and len(self.session.browser_urls()) <= 2, "no flood of tabs and programs",
                   duration=1.5)
        self.assertTrue(self.app.process.running())

    def test_a_page_that_talks_without_end_is_silenced(self):
        page = self.show()
        tree = self.accessibility()
        page.evaluate("setTimeout(() => { for (let i = 0; ; ++i) { if (i === 40) { document.title = 'Silent'; break; } "
                      "confirm('Again ' + i) } })")
        for _ in range(2):
            wait_until(lambda: tree.find(role="push button", contains="OK"), "a dialog")
            self.assertIsNone(tree.find(role="push button", contains="No More Messages"))
            windows.press(self.session, "Return")
            wait_until(lambda: tree.find(role="push button", contains="OK"), "the next dialog")
        wait_until(lambda: tree.find(role="push button", contains="No More Messages"), "an end to it").press()
        self.app.wait_for_window(lambda one: one.title == "Silent")

    def test_a_page_closes_only_tabs_that_pages_opened(self):
        page = self.show(sub="<!doctype html><title>Sub</title><script>setTimeout(() => close(), 700)</script>")
        page.evaluate("close()")
        page.evaluate("void open('/sub')")
        wait_until(lambda: len(self.tabs()) == 2, "the page's tab")
        wait_until(lambda: len(self.tabs()) == 1, "the page's tab to go")
        self.assertEqual([f"{self.site.url}/"], self.tabs())
        self.assertTrue(self.window.exists())

    def test_downloads_get_harmless_names(self):
        names = {"../../x": "x", "CON": "CON", "": "Parvela download", "n" * 300 + ".txt": None, "a\u202etxt.exe": None}
        page = self.show()
        save = """(() => {{ const a = document.createElement('a'); a.download = {name}; a.href = URL.createObjectURL(new Blob(['x']));
                  document.body.append(a); a.click(); }})()"""
        folder = self.session.home / "Downloads"
        for number, (name, saved) in enumerate(names.items()):
            page.evaluate(save.format(name=json.dumps(name)))
            arrived = wait_until(lambda: len(list(folder.iterdir())) == number + 1
                                 and not any(path.name.endswith(".wkdownload") for path in folder.iterdir())
                                 and sorted(folder.iterdir(), key=lambda path: path.stat().st_mtime)[-1], f"a download named {name!r}")
            if saved is not None and name:
                self.assertEqual(saved, arrived.name)
            self.assertLess(len(arrived.name.encode()), 256)
            self.assertNotRegex(arrived.name, r"[\x00-\x1f\u202a-\u202e/:]")
        self.assertEqual(len(names), len(list(folder.iterdir())))

    def test_a_redirect_of_a_frame_is_not_taken_for_the_pages_own(self):
        def redirect(target):
            return 302, {"Location": target}, b""

        page = self.show("<iframe id='f'></iframe>", out=redirect("https://right.example/a"))
        # The frame's server cannot be reached, but its redirect is announced like any other.
        self.site.answers["/ad"] = redirect("http://127.0.0.1:9/wrong")
        page.evaluate("document.getElementById('f').src = '/ad'; setTimeout(() => location.assign('/out'), 500)")
        wait_until(lambda: self.session.browser_urls() == ["https://right.example/a"], "the page's own target")
        self.session.root.joinpath("browser.log").unlink()
        page.evaluate("setTimeout(() => { document.getElementById('f').src = '/ad?' + Math.random(); location.assign('/out?again') }, 1200)")
        opened = wait_until(self.session.browser_urls, "a target")
        self.assertIn(opened, (["https://right.example/a"], [f"{self.site.url}/out?again"]))
