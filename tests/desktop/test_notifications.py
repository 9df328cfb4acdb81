"""What the desktop shows of the program outside its windows: notifications and where they lead, the badge, the dock's menu."""

import datetime
import json
import re

from harness import windows
from harness.application import APP_ID
from harness.case import DesktopTest
from harness.overheard import FileManager, Monitor, Notifications
from harness.waiting import stays_true, wait_until

_DOWNLOAD = """(() => { const a = document.createElement('a'); a.download = 'report a.txt';
                a.href = URL.createObjectURL(new Blob(['one'])); document.body.append(a); a.click(); a.remove(); })()"""


class DailySummary(DesktopTest):
    def test_comes_once_and_a_click_opens_my_tasks_in_front(self):
        notifications = Notifications(self.session)
        page = self.start_linked(dailySummaryEnabled=True, dailySummaryMinutes=0)
        today = datetime.date.today().isoformat()
        wait_until(lambda: self.app.settings().get("dailySummaryLastSent") == today, "the summary to be sent")
        title = wait_until(notifications.titles, "the summary to be shown")[0]
        self.assertRegex(title, r"^(Nothing|1 task|\d+ tasks) due today$")

        window = self.app.wait_for_window()
        self.session.run("xdotool", "windowminimize", "--sync", window.id)
        wait_until(lambda: windows.active_window(self.session) != window.id, "the window to be out of the way")
        notifications.click()
        page.wait_for_path("/my")
        wait_until(lambda: windows.active_window(self.session) == window.id, "the window to come to the front")

        page.close()
        window.activate()
        windows.press(self.session, "ctrl+q")
        wait_until(lambda: not self.app.process.running(), "the application to quit")
        self.app.start()
        self.app.page(self.service.web_url).wait_for_path("/my")
        stays_true(lambda: len(notifications.titles()) == 1, "one summary a day", duration=2)


    def test_is_sent_from_settings_on_request(self):
        notifications = Notifications(self.session)
        self.start_linked()
        self.app.wait_for_window().activate()
        windows.press(self.session, "ctrl+comma")
        self.app.wait_for_window(lambda one: one.title == "Parvela Settings", "the Settings window").activate()
        windows.press(self.session, "alt+3")
        tree = self.accessibility()
        for count in (1, 2):
            tree.wait_for("push button", "Send a Summary Now").press()
            wait_until(lambda: len(notifications.titles()) == count, "a summary for each request")
        self.assertRegex(notifications.titles()[0], r" due today$")
        tree.wait_for(contains="The summary was sent.")


class DownloadNotification(DesktopTest):
    def test_reveals_the_file(self):
        files = FileManager(self.session)
        notifications = Notifications(self.session)
        page = self.start_linked()
        page.evaluate(_DOWNLOAD)
        notifications.wait_for("Downloaded report a.txt")
        self.assertEqual("Saved to your Downloads folder. Click to show it in Finder.",
                         notifications.body("Downloaded report a.txt"))
        notifications.click()
        wait_until(lambda: files.shown() == [[f"file://{self.session.home}/Downloads/report%20a.txt"]], "the file to be revealed")

    def test_a_file_of_which_a_part_came_has_failed(self):
        notifications = Notifications(self.session)
        half = (200, {"Content-Disposition": "attachment; filename=half.bin", "Content-Length": "8000"}, b"x" * 4000)
        self.start_site({"/": "<!doctype html><title>Ours</title>", "/half": half}).evaluate("location.assign('/half')")
        notifications.wait_for("Download failed")
        self.assertEqual("half.bin: The connection ended before the whole file had come.", notifications.body("Download failed"))
        self.assertEqual([], list((self.session.home / "Downloads").iterdir()))


class PageNotification(DesktopTest):
    def start_with_permission(self):
        self.use_service()
        notifications = Notifications(self.session)
        page = self.start_signed_out(**{f"permission|notifications|{self.service.web_url}": True})
        self.assertEqual("granted", page.evaluate("Notification.permission"))
        return notifications, page

    def test_leads_back_to_its_tab(self):
        notifications, page = self.start_with_permission()
        window = self.app.wait_for_window()
        page.evaluate("""(() => { const n = window.n = new Notification('Over', { body: '<b>Tea</b> & cake' });
                          n.onclick = () => { window.wasClicked = true; }; n.onclose = () => { window.wasClosed = true; }; })()""")
        notifications.wait_for("Over")
        self.assertEqual("&lt;b&gt;Tea&lt;/b&gt; &amp; cake", notifications.body("Over"))
        window.activate()
        windows.press(self.session, "ctrl+t")
        wait_until(lambda: page.evaluate("document.visibilityState") == "hidden", "another tab to be in front")
        notifications.click()
        wait_until(lambda: page.evaluate("document.visibilityState") == "visible", "the page's tab to come back")
        wait_until(lambda: page.evaluate("window.wasClicked"), "clicked")
        wait_until(lambda: page.evaluate("window.wasClosed"), "closed")
        self.assertEqual(0, notifications.shown())

    def test_goes_when_the_page_closes_it_and_cannot_flood(self):
        notifications, page = self.start_with_permission()
        page.evaluate("window.n = new Notification('One')")
        notifications.wait_for("One")
        page.evaluate("window.n.close()")
        wait_until(lambda: notifications.shown() == 0, "the notification to go")
        page.evaluate("for (let i = 0; i < 200; ++i) new Notification('Flood ' + i)")
        wait_until(lambda: "Flood 5" in notifications.titles(), "some to be shown")
        stays_true(lambda: len(notifications.titles()) <= 10, "the others to be dropped", duration=2)
        self.assertTrue(self.app.process.running())


class Dock(DesktopTest):
    def test_badge_follows_the_page_and_goes_with_the_link(self):
        updates = Monitor(self.session, "interface='com.canonical.Unity.LauncherEntry',member='Update'")

        def last():
            """Count and visibility of the last update."""
            found = re.findall(r'string "count"\s+variant\s+int64 (\d+).*?"count-visible"\s+variant\s+boolean (\w+)', updates.text,
                               re.DOTALL)
            return found[-1] if found else None

        page = self.start_linked()

        def badge(count):
            page.evaluate(f"webkit.messageHandlers.parvela.postMessage({{ type: 'badge', count: {count} }})")
            return last() == (str(count), "true")

        # The page itself tells what is unread once it has read it.
        wait_until(lambda: badge(41), "the badge")
        self.assertIn(f'string "application://{APP_ID}.desktop"', updates.text)
        page.evaluate("webkit.messageHandlers.parvela.postMessage({ type: 'unlinked' })")
        wait_until(lambda: not self.app.stored_token(), "the link to be gone")
        wait_until(lambda: last() == ("0", "false"), "the badge to go")

    def test_menu_lists_boards_and_what_is_due_and_opens_them(self):
        page = self.start_linked()
        board = self.person.boards()[0]
        path = "/app/parvela/Parvela/DockMenu"

        def layout():
            return self.session.call_bus(APP_ID, path, "com.canonical.dbusmenu.GetLayout", "0", "--", "-1", "[]")

        def choose(label):
            number = re.search(rf"\((\d+), \{{[^{{}}]*'label': <{json.dumps(label)[1:-1]!r}>", layout())
            self.assertIsNotNone(number, f"an entry '{label}'")
            self.session.call_bus(APP_ID, path, "com.canonical.dbusmenu.Event", number.group(1), "clicked", "<0>", "0")

        wait_until(lambda: f"'{board['name']}'" in layout(), "the boards in the menu")
        for label in ("New Task", "New Window", "Due Today", "Boards"):
            self.assertIn(f"'{label}'", layout())
        choose(board["name"])
        page.wait_for_path(f"/b/{board['id']}")
        choose("New Window")
        wait_until(lambda: len(self.app.windows()) == 2, "a second window")


class NoNotificationService(DesktopTest):
    notifications = False

    def test_the_window_says_it_and_the_program_works(self):
        page = self.start_linked(dailySummaryEnabled=True, dailySummaryMinutes=0)
        tree = self.accessibility()
        page.evaluate(_DOWNLOAD)
        tree.wait_for(contains="Downloaded report a.txt")
        self.assertTrue((self.session.home / "Downloads" / "report a.txt").exists())
        page.evaluate("location.assign('/my')")
        page.wait_for_path("/my")
        self.assertTrue(self.app.process.running())
