"""The item in the tray of a real panel: what it shows, what clicks do, and life without windows and without a tray."""

from harness import tray, windows
from harness.application import APP_ID
from harness.case import DesktopTest
from harness.waiting import stays_true, wait_until

IDLE_MENU = ["Quick Add…", "Open Parvela", "—", "Settings…", "Quit Parvela"]


class TrayTest(DesktopTest):
    bus_services = tray.BUS_SERVICES

    def use_panel(self):
        self.use_bus()
        self.panel = tray.Panel(self.session, self.bus)
        self.panel.start()

    def start_in_background(self):
        self.use_application()
        self.app.start("--background")
        return self.panel.wait_for_item()

    def wait_for_popover(self):
        return wait_until(self.app.quick_add, "the popover", timeout=30)


class Item(TrayTest):
    def test_is_there_whenever_a_tray_is(self):
        self.use_panel()
        item = self.start_in_background()
        self.assertEqual(("Parvela", "Parvela — quick add", "", IDLE_MENU),
                         (item.Title, item.tool_tip, item.XAyatanaLabel, item.menu()))
        self.assertEqual([16, 22, 24, 32, 48], [width for width, _, _ in item.IconPixmap])
        self.assertEqual([], self.app.windows())
        self.panel.stop()
        wait_until(lambda: not self.panel.items(), "the tray to go")
        self.panel.start()
        self.assertEqual("Parvela", self.panel.wait_for_item().Title)

    def test_a_click_opens_and_closes_quick_add_beside_it(self):
        self.use_panel()
        self.start_in_background()
        self.panel.click()
        popover = self.wait_for_popover()
        left, top, width, height = popover.geometry()
        self.assertTrue(left > self.size[0] // 2 and left + width <= self.size[0] and self.panel.height <= top < 60,
                        (left, top, width, height))
        wait_until(lambda: windows.active_window(self.session) == popover.id, "the popover to be active")
        self.panel.click()
        wait_until(lambda: not self.app.quick_add(), "the popover to close")
        self.panel.click()
        self.wait_for_popover()
        windows.press(self.session, "Escape")
        wait_until(lambda: not self.app.quick_add(), "the popover to close")

    def test_its_menu_reaches_everything(self):
        self.use_panel()
        item = self.start_in_background()
        self.panel.open_menu()
        windows.press(self.session, "Down", "Return")
        self.wait_for_popover()
        windows.press(self.session, "Escape")
        wait_until(lambda: not self.app.quick_add(), "the popover to close")
        item.choose("Settings…")
        self.app.wait_for_window(lambda window: window.title == "Parvela Settings", "Settings")
        item.choose("Open Parvela")
        self.app.page(self.service.web_url)
        item.choose("Quit Parvela")
        wait_until(lambda: not self.app.process.running(), "the end of the program")
        self.assertEqual(0, self.app.process.exit_status())


class Timer(TrayTest):
    def test_is_shown_and_stopped_from_the_menu(self):
        self.use_panel()
        page = self.start_linked()
        item = self.panel.wait_for_item()
        page.evaluate("location.assign('/t/TSK-3')")
        page.press("Start timer")
        label = wait_until(lambda: item.XAyatanaLabel, "the timer's label")
        self.assertRegex(label, r"^ TSK-3 0:0\d$")
        self.assertEqual(" TSK-0 0:00", item.XAyatanaLabelGuide, "the panel keeps room for any digits")
        self.assertRegex(item.Title, r"^Parvela — TSK-3 0:\d\d$")
        self.assertRegex(item.tool_tip, r"^Timer running on TSK-3: .")
        self.assertEqual(["Stop Timer on TSK-3", "—", *IDLE_MENU], item.menu())
        wait_until(lambda: item.XAyatanaLabel != label, "the label to follow the time")

        item.choose("Stop Timer on TSK-3")
        wait_until(lambda: item.XAyatanaLabel == "", "the label to go")
        page.wait_for_text("Start timer")
        self.assertEqual((IDLE_MENU, "Parvela — quick add", "Parvela"), (item.menu(), item.tool_tip, item.Title))

        # Without a window there is no page that could stop it: one is opened.
        page.press("Start timer")
        wait_until(lambda: item.XAyatanaLabel, "the timer's label")
        page.close()
        self.app.windows()[0].activate()
        windows.press(self.session, "ctrl+w")
        wait_until(lambda: not self.app.windows(), "the window to close")
        item.choose("Stop Timer on TSK-3")
        wait_until(lambda: item.XAyatanaLabel == "", "the label to go", timeout=30)


class WithoutWindows(TrayTest):
    def close(self, window):
        window.activate()
        windows.press(self.session, "ctrl+w")

    def start_with_window(self):
        self.start_signed_out()
        return self.app.wait_for_window()

    def test_the_program_lives_on_in_a_tray(self):
        self.use_panel()
        window = self.start_with_window()
        item = self.panel.wait_for_item()
        self.close(window)
        wait_until(lambda: not self.app.windows(), "the window to close")
        stays_true(self.app.process.running, "the program runs")
        item.choose("Open Parvela")
        self.app.wait_for_window()

    def test_the_program_ends_without_a_tray(self):
        self.close(self.start_with_window())
        wait_until(lambda: not self.app.process.running(), "the end of the program")
        self.assertEqual(0, self.app.process.exit_status())

    def test_hidden_windows_come_back_when_the_tray_goes(self):
        self.use_panel()
        self.start_with_window()
        self.panel.wait_for_item()
        self.bus.activate(APP_ID, "hide")
        wait_until(lambda: not self.app.windows(), "the window to be hidden")
        self.panel.stop()
        window = self.app.wait_for_window()
        wait_until(lambda: "_NET_WM_STATE_HIDDEN" in window.states, "the window to be minimised")

    def test_a_start_in_the_background_is_reached_by_the_launcher(self):
        self.use_application()
        self.app.start("--background")
        wait_until(lambda: self.session.call_bus(APP_ID, "/app/parvela/Parvela", "org.freedesktop.DBus.Peer.Ping"), "the program")
        self.assertEqual([], self.app.windows())
        self.assertEqual(0, self.app.start_again().returncode)
        self.app.wait_for_window()
