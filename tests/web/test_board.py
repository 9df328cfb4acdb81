"""A board: cards moved by pointer and by keys, and its five views."""

import datetime

from case import WebCase
from harness.waiting import wait_until

BOARD = "/b/brd_1"


class Moving(WebCase):
    def _order(self, list_name):
        """Titles of a list as the service orders them."""
        cards = [card for card in self.person().cards("brd_1") if card["list"] == list_name]
        return [card["title"] for card in sorted(cards, key=lambda card: card["position"])]

    def _shown(self, list_name):
        return self.browser.js("return [...document.querySelectorAll(`section[aria-label=\"${arguments[0]}\"] .card-title`)]"
                               ".map((title) => title.textContent)", list_name)

    def _wait_order(self, list_name, titles):
        wait_until(lambda: self._order(list_name) == titles, f"{list_name} to hold {titles}, not {self._order(list_name)}")
        wait_until(lambda: self._shown(list_name) == titles, f"{list_name} to show {titles}, not {self._shown(list_name)}")

    def _focus(self, title):
        self.browser.js("arguments[0].focus()", self.browser.one(".card-title", title))

    def test_a_card_is_dragged_between_two_others(self):
        self.open(BOARD)
        before = self._order("In progress")
        moved = self._order("Backlog")[1]
        last = self.browser.one(".card", before[-1])
        x, y = self.browser.middle(last)
        self.browser.drag(self.browser.one(".card", moved), x, y - 25)
        self._wait_order("In progress", [*before[:-1], moved, before[-1]])
        self.assertEqual(self.browser.path(), BOARD, "the drop is no click")

    def test_escape_during_a_drag_leaves_everything_as_it_was(self):
        self.open(BOARD)
        before = self._order("Backlog")
        x, y = self.browser.middle(self.browser.one("section[aria-label=Review] .column-head"))
        self.browser.drag(self.browser.one(".card", before[0]), x, y + 60, drop=False)
        self.browser.one("section[aria-label=Review] .card-gap")
        self.browser.keys("Escape")
        self.browser.release()
        self.browser.gone(".card-gap")
        self._wait_order("Backlog", before)

    def test_keys_move_a_card_and_say_where_it_is(self):
        self.open(BOARD)
        source, target = self._order("In progress"), self._order("Review")
        self._focus(source[0])
        self.browser.keys("Space")
        self.browser.wait_text("#announcer", f"Picked up {source[0]}")
        self.browser.keys("ArrowRight")
        self.browser.wait_text("#announcer", "Review, position 1 of")
        self.browser.keys("ArrowDown")
        self.browser.wait_text("#announcer", "Review, position 2 of")
        self.assertEqual(self.browser.focused(), source[0])
        self.browser.keys("Space")
        self._wait_order("Review", [target[0], source[0], *target[1:]])
        self.assertEqual(self.browser.focused(), source[0])

    def test_escape_puts_a_card_moved_by_keys_back(self):
        self.open(BOARD)
        before = self._order("Review")
        self._focus(before[0])
        self.browser.keys("Space", "ArrowRight", "Escape")
        self.browser.wait_text("#announcer", "Put back.")
        self._wait_order("Review", before)

    def test_arrows_walk_enter_opens_and_the_browser_goes_back(self):
        self.open(BOARD)
        backlog = self._order("Backlog")
        self._focus(backlog[0])
        self.browser.keys("ArrowDown")
        self.assertEqual(self.browser.focused(), backlog[1])
        self.browser.keys("ArrowRight")
        self.assertIn(self.browser.focused(), self._order("In progress"))
        self.browser.keys("Enter")
        wait_until(lambda: self.browser.path().startswith("/t/TSK-"), "the task page")
        self.browser.js("history.back()")
        self.browser.wait_path(BOARD)

    def test_a_card_in_the_completion_list_is_done(self):
        self.open(BOARD)
        title = self._order("Backlog")[-1]
        self._focus(title)
        self.browser.keys("Space", "ArrowRight", "ArrowRight", "ArrowRight", "Space")
        wait_until(lambda: self.card(title)["done"], "the card to be done")
        self.browser.one(".card.is-done", title)

    def test_a_list_is_made_renamed_and_deleted(self):
        self.open(BOARD)
        self.browser.click("button", "Add a list")
        self.browser.type_into("input", "Parked\n", name="List name")
        self.browser.one("section[aria-label=Parked]")
        self.browser.click("button", "Menu of Parked")
        self.browser.click("[role=menuitem]", "Rename")
        self.browser.type_into(".column-head input", "Parked for now\n")
        self.browser.click("button", "Menu of Parked for now")
        self.browser.click("[role=menuitem]", "Delete", exact=True)
        self.browser.gone("section[aria-label='Parked for now']")


class Views(WebCase):
    def test_each_view_shows_the_boards_tasks(self):
        cards = self.person().cards("brd_1")
        titles = {card["title"] for card in cards}
        dated = {card["title"] for card in cards if card.get("due_date") or card.get("start_date")}
        for view, selector, wanted in (("", ".card-title", titles), ("?view=list", ".task-row-title", titles),
                                       ("?view=table", ".table-title", titles), ("?view=timeline", ".timeline-name", dated)):
            with self.subTest(view):
                self.open(BOARD + view)
                self.assertEqual(set(self.browser.texts(selector)) - {"Task"}, wanted)

    def test_number_keys_change_the_view_and_the_address(self):
        self.open(BOARD)
        for key, view in (("2", "list"), ("3", "table"), ("4", "calendar"), ("5", "timeline")):
            self.browser.keys(key)
            self.browser.wait_path(f"{BOARD}?view={view}")
            self.browser.one(".view-tab[aria-current=page]", view.capitalize())
        self.browser.keys("1")
        self.browser.wait_path(BOARD)

    def test_the_table_sorts_both_ways(self):
        self.open(BOARD + "?view=table")
        titles = sorted(self.browser.texts(".table-title a"), key=str.casefold)
        for order, wanted in (("ascending", titles), ("descending", titles[::-1])):
            self.browser.click("th button", "Task")
            self.browser.one(f"th[aria-sort={order}]")
            self.assertEqual(self.browser.texts(".table-title a"), wanted)

    def test_the_calendar_moves_a_due_date_by_pointer_and_by_keys(self):
        title = "Choose the hero illustration"
        today = self.person().call("GET", "/api/session")["today"]
        key = self.card(title)["key"]
        # Two days of this month that nothing else is due on: a full day shows only its first tasks.
        taken = {card.get("due_date") for card in self.person().cards("brd_1")}
        free = [day for day in (f"{today[:8]}{number:02}" for number in range(1, 28)) if day not in taken]
        start, day = free[0], free[-1]
        self.person().call("PATCH", f"/api/v1/tasks/{key}", {"due_date": start, "due_time": None})
        self.open(BOARD + "?view=calendar")
        x, y = self.browser.middle(self.browser.one(f"[data-day='{day}']"))
        self.browser.drag(self.browser.one(f".cal-task[data-key={key}]"), x, y)
        wait_until(lambda: self.card(title)["due_date"] == day, f"the task to be due {day}")
        self.browser.js("arguments[0].focus()", self.browser.one(f".cal-task[data-key={key}]"))
        self.browser.keys("Shift+ArrowRight")
        wait_until(lambda: self.card(title)["due_date"] == f"{day[:8]}{int(day[8:]) + 1:02}", "the task to be due a day later")

    def test_fields_are_changed_in_the_table(self):
        title = "Photograph the workshop"
        self.open(BOARD + "?view=table")
        row = f"tr:has([aria-label='Done: {title}'])"
        self.browser.click(f"{row} button", "Priority")
        self.browser.click("[role=menuitemradio]", "Low", exact=False)
        self.browser.click(f"{row} button", "Assignees")
        self.browser.click("[popover] label", "Jonas Lind")
        self.browser.keys("Escape")
        self.browser.click(f"{row} button", "Due date")
        self.browser.click("[popover] button", "Clear", exact=True)
        wait_until(lambda: (self.card(title)["priority"], self.card(title).get("due_date")) == ("low", None), "the fields to be saved")
        self.assertIn("Jonas Lind", self.card(title)["assignees"])

    def test_the_timeline_moves_a_task_by_keys(self):
        title = "Set up redirects for old addresses"
        key = self.card(title)["key"]
        self.person().call("PATCH", f"/api/v1/tasks/{key}", {"start_date": "2026-11-10", "due_date": "2026-11-12"})
        self.open(BOARD + "?view=timeline")
        self.browser.js("arguments[0].focus()", self.browser.one(f".bar[data-key={key}]"))
        self.browser.keys("Shift+ArrowLeft")
        wait_until(lambda: (self.card(title)["start_date"], self.card(title)["due_date"]) == ("2026-11-09", "2026-11-11"),
                   "both dates to move")

    def test_the_timeline_moves_and_stretches_a_task_by_the_pointer(self):
        def days(start, end):
            """Days from today on: the timeline opens with today in sight."""
            return tuple((datetime.date.today() + datetime.timedelta(days=number)).isoformat() for number in (start, end))

        title = "Set up redirects for old addresses"
        key = self.card(title)["key"]
        start, due = days(4, 8)
        self.person().call("PATCH", f"/api/v1/tasks/{key}", {"start_date": start, "due_date": due})
        self.open(BOARD + "?view=timeline")
        # From its middle both ends move; from an end only that one.
        for share, steps, dates in ((0.5, 2, days(6, 10)), (0.99, 1, days(6, 11)), (0.01, -3, days(3, 11))):
            with self.subTest(share=share, steps=steps):
                bar = self.browser.one(f".bar[data-key={key}]")
                x, y, width = self.browser.js("const b = arguments[0].getBoundingClientRect(); return [b.x, b.y + b.height / 2, b.width]",
                                              bar)
                begin = (round(x + width * share), round(y))
                self.browser.drag(bar, begin[0] + steps * 34 + 1, begin[1] + 3, start=begin)
                wait_until(lambda: (self.card(title)["start_date"], self.card(title)["due_date"]) == dates, "the dates to change")
        self.assertIn("view=timeline", self.browser.js("return location.search"), "a drag is no click")

    def test_a_board_is_edited_and_deleted(self):
        self.open("/boards")
        self.browser.click("button", "New board")
        self.browser.type_into("dialog input", "Short-lived", name="Name")
        self.browser.click("dialog input", "Berry")
        self.browser.type_into("dialog input", "Trials", name="Section")
        self.browser.click("dialog button", "Create board")
        self.browser.one("h1", "Short-lived")
        board = next(entry for entry in self.person().boards() if entry["name"] == "Short-lived")
        self.assertEqual((board["color"], board["section"]), ("#C23D7E", "Trials"))
        self.browser.click("button", "Star this board")
        self.browser.one("nav section[aria-label=Starred] a", "Short-lived")
        # The news of the deletion may reach the page while it still shows the board, and makes it ask once more.
        self.expected.append(f"/api/boards/{board['id']}/full - Failed to load resource: the server responded with a status of 404")
        self.browser.click("button", "Board menu")
        self.browser.click("[role=menuitem]", "Delete board")
        self.browser.click("dialog button", "Delete board")
        self.browser.wait_path("/boards")
        self.browser.gone("nav a", "Short-lived")

    def test_the_filter_hides_and_says_so(self):
        self.open(BOARD)
        mine = {card["title"] for card in self.person().cards("brd_1") if "Rosa Diaz" in card["assignees"]}
        self.browser.click("button", "Filter")
        self.browser.click("[popover] label", "Rosa Diaz")
        wait_until(lambda: set(self.browser.texts(".card-title")) == mine, "only Rosa's cards")
        self.browser.keys("Escape")
        self.browser.click(".filter-note button", "Show all")
        self.browser.gone(".filter-note")
