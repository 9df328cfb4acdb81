"""The page's own rules, asked in the browser that runs them: dates, times, addresses, order, colours, drafts of changes."""

import json

from case import WebCase


class Modules(WebCase):
    def setUp(self):
        super().setUp()
        self.browser.go(self.url("/sign-in"))
        self.browser.one("h1")

    def ask(self, module, name, rows):
        """Calls an exported function once for each row of arguments; answers the results."""
        return self.browser.js("""
          const [module, name, rows] = arguments;
          const found = (await import(`/js/${module}.js`))[name];
          return rows.map((row) => found(...row) ?? null);""", module, name, rows)

    def check(self, module, name, table):
        """`table` maps a tuple of arguments (or a single one) to the wanted result."""
        rows = [list(key) if isinstance(key, tuple) else [key] for key in table]
        for row, got, wanted in zip(rows, self.ask(module, name, rows), table.values()):
            with self.subTest(f"{name}{json.dumps(row)}"):
                self.assertEqual(got, wanted)

    def test_days_are_counted_without_a_time_zone(self):
        dates = "core/dates"
        self.check(dates, "addDays", {("2026-12-31", 1): "2027-01-01", ("2024-02-28", 1): "2024-02-29", ("2026-03-29", -1): "2026-03-28",
                                      ("1970-01-01", -1): "1969-12-31"})
        self.check(dates, "addMonths", {("2026-01-31", 1): "2026-02-28", ("2024-01-31", 1): "2024-02-29", ("2026-12-15", 1): "2027-01-15",
                                        ("2026-01-15", -1): "2025-12-15", ("2026-03-31", -13): "2025-02-28"})
        self.check(dates, "weekday", {"2026-11-21": 6, "2026-11-22": 0, "1970-01-01": 4, "1969-12-31": 3})
        self.check(dates, "startOfWeek", {"2026-11-22": "2026-11-16", "2026-11-16": "2026-11-16", "2027-01-01": "2026-12-28"})

    def test_days_and_times_read_as_people_write_them(self):
        dates = "core/dates"
        now = "2026-11-21"
        self.check(dates, "shortDate", {("2026-11-21", now): "Today", ("2026-11-22", now): "Tomorrow", ("2026-11-20", now): "Yesterday",
                                        ("2026-11-24", now): "Tue, Nov 24", ("2027-06-04", now): "Fri, Jun 4, 2027"})
        self.check(dates, "clockTime", {"00:00": "12 AM", "12:00": "12 PM", "07:30": "7:30 AM", "13:05": "1:05 PM", "23:59": "11:59 PM"})
        self.check(dates, "parseTime", {"9": "09:00", "9am": "09:00", "12am": "00:00", "12 pm": "12:00", "9:30 p.m.": "21:30",
                                        "17:05": "17:05", "5.15pm": "17:15", " 8 ": "08:00", "24:00": None, "13pm": None, "0am": None,
                                        "9:60": None, "noonish": None, "": None})
        self.check(dates, "stopwatch", {-5: "0:00", 999: "0:00", 61_000: "1:01", 600_000: "10:00", 3_600_000: "1:00:00",
                                        36_061_000: "10:01:01"})
        self.check(dates, "duration", {0: "0 min", 45: "45 min", 60: "1 h", 90: "1 h 30 min", 89.6: "1 h 30 min", -3: "0 min"})

    def test_addresses_name_pages_or_none(self):
        routes = self.browser.js("""
          const { parseRoute } = await import('/js/core/router.js');
          return arguments[0].map((path) => { const { name, params } = parseRoute(path); return [name, ...Object.values(params)]; });""",
                                 ["/", "/home", "/my/", "/b/brd_1?view=list", "/b/a%2Fb", "/t/TSK-1", "/t/", "/t/a/b", "/t/%E0", "/HOME"])
        self.assertEqual(routes, [["home"], ["home"], ["my"], ["board", "brd_1"], ["board", "a/b"], ["task", "TSK-1"], ["notFound"],
                                  ["notFound"], ["notFound"], ["notFound"]])
        self.check("core/router", "isPage", {"/home": True, "/search?q=//x": True, "//home": False, "/files/1/a.png": False,
                                             "https://example.com/home": False, "": False, None: False, 5: False})
        self.check("core/router", "boardPath", {"brd_1": "/b/brd_1", ("a/b", "table"): "/b/a%2Fb?view=table"})

    def test_a_card_goes_between_its_neighbours(self):
        others = [{"key": "A", "position": 2}, {"key": "B", "position": 4}]
        placed = self.ask("pages/board/order", "placeAt", [[others, 0], [others, 1], [others, 2], [[], 0]])
        self.assertEqual(placed, [{"before": "A", "position": 1}, {"before": "B", "position": 3}, {"after": "B", "position": 5},
                                  {"position": 1}])

    def test_filters_combine(self):
        task = {"done": False, "priority": "high", "assignee_people": [{"id": "u1"}], "label_tags": [{"id": "l1"}]}
        base = {"people": [], "labels": [], "priorities": [], "done": True}
        rows = [({}, True), ({"people": ["u1", "u2"]}, True), ({"people": ["u2"]}, False), ({"labels": ["l1"], "people": ["u1"]}, True),
                ({"labels": ["l1"], "priorities": ["low"]}, False), ({"priorities": ["low", "high"]}, True)]
        got = self.ask("pages/board/order", "passes", [[{**base, **change}, task] for change, _ in rows])
        self.assertEqual(got, [wanted for _, wanted in rows])
        self.assertEqual(self.ask("pages/board/order", "passes", [[{**base, "done": False}, {**task, "done": True}]]), [False])

    def test_a_change_reaches_every_copy_of_a_task_and_nothing_else(self):
        results = self.browser.js("""
          const { mapTask } = await import('/js/core/tasks.js');
          const done = (task) => ({ ...task, done: true });
          const board = { board: { id: 1 }, tasks: [{ key: 'A' }, { key: 'B' }] };
          const untouched = { tasks: [{ key: 'C' }] };
          const home = { overdue: [{ key: 'A' }], due_today: [], unread: 3 };
          return [mapTask(board, 'A', done), mapTask(untouched, 'A', done) === untouched, mapTask(home, 'A', () => null),
                  mapTask({ key: 'A', title: 'x' }, 'A', done), mapTask(null, 'A', done), board];""")
        self.assertEqual(results, [
            {"board": {"id": 1}, "tasks": [{"key": "A", "done": True}, {"key": "B"}]}, True,
            {"overdue": [], "due_today": [], "unread": 3}, {"key": "A", "title": "x", "done": True}, None,
            {"board": {"id": 1}, "tasks": [{"key": "A"}, {"key": "B"}]}])

    def test_only_real_colours_are_believed_and_ink_is_readable_on_them(self):
        self.check("core/color", "safeColor", {"#A1b2C3": "#A1b2C3", "a1b2c3": "#7A837E", "#a1b2": "#7A837E", "red": "#7A837E",
                                               "#000000;x": "#7A837E", None: "#7A837E"})
        self.check("core/color", "toneClass", {"pink": "tone-pink", "ultraviolet": "tone-gray", None: "tone-gray"})
        ratios = self.browser.js("""
          const { BOARD_COLORS, inkOn } = await import('/js/core/color.js');
          const light = (hex) => [1, 3, 5].map((at) => parseInt(hex.slice(at, at + 2), 16) / 255)
            .map((part) => (part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4))
            .reduce((sum, part, index) => sum + part * [0.2126, 0.7152, 0.0722][index], 0);
          return [...BOARD_COLORS.map((entry) => entry.hex), '#FFFFFF', '#000000', '#777777'].map((hex) => {
            const [a, b] = [light(hex), light(inkOn(hex))].sort((x, y) => y - x);
            return (a + 0.05) / (b + 0.05);
          });""")
        self.assertGreaterEqual(min(ratios), 4.5)

    def test_a_change_shows_at_once_and_is_taken_back_when_it_is_refused(self):
        shown = self.browser.js("""
          const { html, render } = await import('/js/view.js');
          const { invalidate, optimistic, useResource } = await import('/js/core/cache.js');
          const seen = [];
          const answers = [];
          const load = () => new Promise((resolve) => answers.push(resolve));
          const Page = () => {
            const value = useResource('test', load).data?.value ?? '';
            if (seen.at(-1) !== value) seen.push(value);
            return null;
          };
          const until = async (condition) => { while (!condition()) await new Promise((resolve) => setTimeout(resolve, 5)); };
          render(html`<${Page} />`, document.createElement('div'));
          await until(() => answers.length === 1);
          answers[0]({ value: 'loaded' });
          await until(() => seen.at(-1) === 'loaded');
          invalidate((key) => key === 'test');
          let refuse;
          const change = optimistic((data, key) => (key === 'test' ? { value: 'changed' } : data),
            () => new Promise((_resolve, reject) => { refuse = reject; }));
          await until(() => seen.at(-1) === 'changed');
          answers[1]({ value: 'asked before the change' });
          await new Promise((resolve) => setTimeout(resolve));
          refuse(new Error('refused'));
          const message = await change.catch((error) => error.message);
          await until(() => answers.length === 3);
          answers[2]({ value: 'loaded again' });
          await until(() => seen.at(-1) === 'loaded again');
          return [message, seen];""")
        self.assertEqual(shown, ["refused", ["", "loaded", "changed", "loaded", "loaded again"]])
