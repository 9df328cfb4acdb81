"""Scripts, the searches of desktops and links reach the application through the session bus, which starts it for them."""

import configparser
import json
import pathlib
import re

from gi.repository import GLib

from harness import windows
from harness.bus import DeafCaller
from harness.case import DesktopTest
from harness.overheard import Notifications
from harness.waiting import stays_true, wait_until

SEARCH = {"object_name": "SearchProvider", "interface": "org.gnome.Shell.SearchProvider2"}
RUNNER = {"object_name": "Runner", "interface": "org.kde.krunner1"}


class AutomationTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.use_service()
        self.use_application()
        self.app.install()
        self.link_device()

    def call(self, method, *arguments, **door):
        result = self.app.call(method, *arguments, **door)
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        return result.stdout

    def refusal(self, method, *arguments, **door):
        """The name and message of the error that a call ends with."""
        result = self.app.call(method, *arguments, **door)
        self.assertEqual(1, result.returncode, result.stdout)
        return re.search(r"GDBus\.Error:(\S+: .*)", result.stderr).group(1)


class Actions(AutomationTest):
    def test_a_call_starts_the_program_without_a_window(self):
        answer = self.call("AddTask", "Write brief tomorrow !high", "", "", "")
        card = self.person.find_card("Write brief")
        self.assertTrue(answer.startswith(f"('Added {card['key']}: Write brief', [{{"), answer)
        self.assertEqual("high", card["priority"])
        self.assertTrue(self.app.answers())
        stays_true(lambda: not self.app.windows(), "no window", duration=1)

        self.assertIn("'Done: Write brief'", self.call("CompleteTask", card["key"]))
        self.assertTrue(self.person.find_card("Write brief")["done"])
        self.assertIn(repr(self.person.boards()[0]["name"]), self.call("Boards", "[]"))
        self.assertRegex(self.call("DueToday"), r"^\('(\d+ tasks? due today: |Nothing due today\.)")
        bus = self.session.run("busctl", "--user", "--json=short", "call", "app.parvela.Parvela", "/app/parvela/Parvela/Automation",
                               "app.parvela.Automation1", "AddTask", "ssss", "Second", self.person.boards()[-1]["name"].upper(),
                               "2030-01-02", "low", env={"DBUS_SESSION_BUS_ADDRESS": self.session.env["DBUS_SESSION_BUS_ADDRESS"]})
        self.assertEqual("", bus.stderr)
        dialog, tasks, note = json.loads(bus.stdout)["data"]
        self.assertEqual(("Second", "2030-01-02", ""), (tasks[0]["title"]["data"], tasks[0]["dueDate"]["data"], note))
        self.assertEqual(f"Added {tasks[0]['key']['data']}: Second", dialog)
        self.assertEqual(self.person.boards()[-1]["id"], self.person.find_card("Second")["board_id"])

        self.assertIn("'Open TSK-3'", self.call("OpenTask", "TSK-3"))
        self.app.wait_for_window()
        self.app.page(self.service.web_url)

    def test_what_cannot_be_done_is_named(self):
        self.assertTrue(self.refusal("CompleteTask", "NO-1").startswith("app.parvela.Error.NotFound: "))
        self.service.stop()
        self.assertTrue(self.refusal("DueToday").startswith("app.parvela.Error.Offline: "))
        self.assertIn("Saved. It will be added when you are back online.", self.call("AddTask", "Later", "", "", ""))
        self.service.start()
        wait_until(lambda: self.person.find_card("Later"), "the line that waited", timeout=30)
        self.app.command("unlink")
        wait_until(lambda: self.refusal("DueToday").startswith("app.parvela.Error.NotLinked: "), "the unlink to be noticed")

    def test_the_interface_describes_itself(self):
        described = self.session.run("gdbus", "introspect", "--session", "--dest", "app.parvela.Parvela", "--object-path",
                                     "/app/parvela/Parvela/Automation").stdout
        for word in ("AddTask", "DueToday", "OpenTask", "CompleteTask", "Boards", "readonly a(ssas) Actions", "What\\'s due today in Parvela"):
            self.assertIn(word.replace("\\'", "'"), described)


class Search(AutomationTest):
    def test_a_search_finds_opens_and_adds(self):
        self.assertEqual("([],)", self.call("GetInitialResultSet", "['zzz']", **SEARCH).strip().replace("@as ", ""))
        self.call("AddTask", "Prune the roses", "", "", "")
        card = self.person.find_card("Prune the roses")
        self.assertIn(f"'task:{card['key']}'", self.call("GetInitialResultSet", "['prune', 'ROSES']", **SEARCH))
        metas = self.call("GetResultMetas", f"['task:{card['key']}', 'add:Water the roses tomorrow']", **SEARCH)
        self.assertIn("'name': <'Prune the roses'>", metas)
        self.assertIn("'name': <'Add “Water the roses”'>", metas)
        self.assertFalse(self.app.windows())
        self.assertEqual(0, self.app.command("add", "Feed the goldfish").returncode)
        self.assertIn("'task:TSK-", self.call("GetInitialResultSet", "['goldfish']", **SEARCH))

        self.call("ActivateResult", "add:Water the roses tomorrow", "['x']", "0", **SEARCH)
        wait_until(lambda: self.person.find_card("Water the roses"), "the added task")
        self.assertIn(f"'task:{card['key']}', 'Prune the roses'", self.call("Match", "prune", **RUNNER))
        self.call("Run", f"task:{card['key']}", "", **RUNNER)
        self.app.wait_for_window()
        self.app.page(f"/t/{card['key']}")


class Flood(AutomationTest):
    def test_calls_that_are_refused_leave_no_memory_behind(self):
        self.use_bus()
        self.app.start("--background")
        wait_until(self.app.answers, "the application")
        self.call("DueToday")
        self.call("GetInitialResultSet", "['roses']", **SEARCH)
        before = self.memory()
        huge = "x" * (10 << 20)
        root = "/app/parvela/Parvela"
        calls = (
            (f"{root}/Automation", "app.parvela.Automation1.AddTask", "(ssss)", huge, "", "", ""),
            (f"{root}/Automation", "app.parvela.Automation1.AddTask", "(as)", [huge]),
            (f"{root}/SearchProvider", "org.gnome.Shell.SearchProvider2.GetInitialResultSet", "(as)", [huge]),
            (f"{root}/Runner", "org.kde.krunner1.Match", "(s)", huge),
            (root, "org.freedesktop.Application.Open", "(asa{sv})", [huge], {}),
            (root, "org.freedesktop.Application.Activate", "(a{sv})", {"activation-token": GLib.Variant("s", huge)}),
            (root, "org.gtk.Actions.Activate", "(sava{sv})", huge, [], {}),
            ("/nowhere", "no.Such.Thing", "(s)", huge),
        )
        for path, method, signature, *values in calls:
            with self.subTest(method=method, signature=signature):
                for _ in range(3):
                    with self.assertRaisesRegex(GLib.Error, "app.parvela.Error.TooLong: The text is too long."):
                        self.bus.call("app.parvela.Parvela", path, method, signature, *values)

        # Each of these takes the main loop a while.
        callers = [DeafCaller(self.session) for _ in range(4)]
        for caller in callers:
            self.addCleanup(caller.close)
            link = "parvela://" + "x" * 200_000
            caller.call("app.parvela.Parvela", root, "org.freedesktop.Application.Open", "(asa{sv})", [link], {}, times=200)
            caller.call("app.parvela.Parvela", f"{root}/Automation", "app.parvela.Automation1.DueToday", times=5000)
        wait_until(lambda: self.app.call("DueToday").returncode == 0, "an answer after the flood")
        # What stays is the buffer in which GDBus receives: as large as the largest message.
        wait_until(lambda: self.memory() < before + (24 << 20), "the memory to be given back")

    def memory(self):
        """Bytes that belong to the program alone."""
        status = pathlib.Path(f"/proc/{self.app.process.pid}/status").read_text(encoding="utf-8")
        return int(re.search(r"RssAnon:\s+(\d+) kB", status)[1]) << 10


class StartUp(AutomationTest):
    def test_links_start_the_program_and_reach_their_page(self):
        result = self.session.run("gio", "open", "parvela://task?key=TSK-3")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        self.app.wait_for_window()
        self.app.page("/t/TSK-3")
        self.assertEqual(1, len(self.app.windows()))

    def test_a_shared_task_waits_until_the_service_is_there(self):
        notifications = Notifications(self.session)
        self.service.stop()
        result = self.session.run("gio", "open", "parvela://add?title=Buy%20milk&description=Two%20bottles")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        notifications.wait_for("Buy milk")
        self.assertEqual("Saved. It will be added when you are back online.", notifications.body("Buy milk"))
        self.service.start()
        self.session.run("gapplication", "action", "app.parvela.Parvela", "send-waiting-lines")
        card = wait_until(lambda: self.person.find_card("Buy milk"), "the card")
        details = self.person.call("GET", f"/api/v1/tasks/{card['key']}/detail")
        self.assertIn("Two bottles", json.dumps(details))

    def test_links_that_arrive_before_it_is_ready_are_not_lost(self):
        started = [self.session.start("gio", "open", f"parvela://{link}") for link in ("task?key=TSK-2", "open?path=/inbox")]
        self.app.wait_for_window()
        for process in started:
            wait_until(lambda process=process: not process.running(), "gio")
        wait_until(lambda: any(path in self.app.page(self.service.web_url).url for path in ("/t/TSK-2", "/inbox")), "one of the pages")
        self.assertEqual(1, len(self.app.windows()))

    def test_a_launcher_shows_the_window_of_a_program_that_the_bus_started(self):
        self.call("DueToday")
        self.assertFalse(self.app.windows())
        result = self.session.run("gapplication", "launch", "app.parvela.Parvela")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        self.app.wait_for_window()

    def test_the_command_ends_when_the_window_is_on_its_way(self):
        told = self.app.command("open", "TSK-3", "--json")
        self.assertEqual((0, ""), (told.returncode, told.stderr))
        self.assertEqual("TSK-3", json.loads(told.stdout)["task"]["key"])
        self.app.wait_for_window()
        self.app.page("/t/TSK-3")

    def test_a_start_at_login_shows_no_window(self):
        autostart = self.app.start("--background")
        wait_until(self.app.answers, "the application")
        stays_true(lambda: not self.app.windows(), "no window")
        self.assertTrue(autostart.running())
        self.assertEqual(0, self.session.run("gio", "open", "parvela://open?path=/inbox").returncode)
        self.app.page("/inbox")


class Launcher(AutomationTest):
    """The entries of a launcher, which activates them over the bus or runs their commands."""

    def act(self, name):
        result = self.app.command("act", name)
        self.assertEqual((0, "", ""), (result.returncode, result.stdout, result.stderr))

    def test_entries_ask_for_what_they_need(self):
        self.act("complete-task")
        dialog = wait_until(lambda: self.app.windows(), "the dialog")[0]
        dialog.activate()
        tree = self.accessibility()
        tree.wait_for(contains="Which task? (like TSK-42)")
        windows.type_text(self.session, " TSK-3 ")
        windows.press(self.session, "Return")
        wait_until(lambda: self.done("TSK-3"), "the task to be done")

        self.act("open-task")
        self.act("open-task")
        shown = wait_until(lambda: self.app.windows(), "the dialog")
        stays_true(lambda: len(self.app.windows()) == 1, "one dialog")
        shown[0].activate()
        windows.type_text(self.session, "NO-1")
        windows.press(self.session, "Return")
        tree.wait_for(contains="Couldn't open NO-1")

    def done(self, key):
        return any(card["key"] == key and card["done"] for board in self.person.boards() for card in self.person.cards(board["id"]))

    def test_every_entry_names_an_action_and_a_command(self):
        entry = configparser.ConfigParser(interpolation=None)
        entry.optionxform = str
        entry.read(self.session.data_home / "applications" / "app.parvela.Parvela.desktop")
        names = entry["Desktop Entry"]["Actions"].rstrip(";").split(";")
        self.call("DueToday")
        listed = self.session.run("gapplication", "list-actions", "app.parvela.Parvela").stdout.split()
        for name in names:
            self.assertIn(name, listed)
            self.assertTrue(entry[f"Desktop Action {name}"]["Exec"])
        self.assertEqual(["Add Task", "Due Today", "Open Task", "Complete Task"],
                         [entry[f"Desktop Action {name}"]["Name"] for name in names][-4:])


class Doctor(AutomationTest):
    def test_the_settings_page_and_the_command_say_the_same(self):
        told = self.app.command("doctor")
        self.assertEqual(0, told.returncode, told.stdout)
        self.assertRegex(told.stdout, r"good +Notifications +Notifications are shown by dunst")
        self.assertRegex(told.stdout, r"good +Links +“parvela” links open Parvela\.")
        self.app.start()
        self.app.wait_for_window().activate()
        windows.press(self.session, "ctrl+comma")
        self.app.wait_for_window(lambda window: window.title == "Parvela Settings").activate()
        windows.press(self.session, "alt+5")
        tree = self.accessibility()
        for text in ("Notifications are shown by dunst", "This device is linked", "Parvela runs and answers on the session bus."):
            tree.wait_for(contains=text)
        self.assertIsNotNone(tree.find("image", "Good"))
        tree.wait_for("push button", "Copy Report").press()
        tree.wait_for(contains="The report is on the clipboard.")
        self.assertNotIn(self.app.stored_token(), tree.outline())
