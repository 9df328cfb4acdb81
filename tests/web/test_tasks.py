"""One task's life: made, changed, discussed, finished, deleted and brought back."""

from case import WebCase
from harness.waiting import wait_until


class Making(WebCase):
    def test_keys_alone_make_a_task_with_date_priority_and_label(self):
        self.open("/b/brd_1")
        self.browser.keys("n")
        self.browser.one("dialog textarea", "Title")
        self.browser.type("Order the new sign")
        for button, choice in (("Due date", None), ("Priority", "High"), ("Assignees", "Sam Okafor"), ("Labels", "Design")):
            self._tab_to(button)
            self.browser.keys("Enter")
            if choice is None:
                self.browser.one("[popover] button", "Tomorrow", exact=True)
                self._tab_to("Tomorrow")
                self.browser.keys("Enter", "Escape")
            elif button == "Priority":
                self.browser.one("[role=menuitemradio]", choice)
                self.browser.keys("h", "Enter")
            else:
                self.browser.one("[popover] label", choice)
                self._tab_to_checkbox(choice)
                self.browser.keys("Space", "Escape")
            self.browser.gone("[popover]:popover-open")
        self._tab_to("Create task")
        self.browser.keys("Enter")
        self.browser.gone("dialog")
        card = wait_until(lambda: self.card("Order the new sign"), "the new card")
        self.assertEqual((card["priority"], card["assignees"], [label["name"] for label in card["label_tags"]], card["board"]),
                         ("high", ["Sam Okafor"], ["Design"], "Website relaunch"))
        self.assertEqual(self.browser.js("const { addDays, today } = await import('/js/core/dates.js'); return addDays(today(), 1)"),
                         card["due_date"])

    def _tab_to(self, name):
        for _ in range(40):
            if self.browser.focused().startswith(name):
                return
            self.browser.keys("Tab")
        self.fail(f"Tab never reached {name}")

    def _tab_to_checkbox(self, name):
        for _ in range(20):
            if name in self.browser.js("return document.activeElement.closest('label')?.innerText ?? ''"):
                return
            self.browser.keys("Tab")
        self.fail(f"Tab never reached the box of {name}")

    def test_a_half_written_task_survives_closing_and_reloading(self):
        self.open()
        self.browser.keys("n")
        self.browser.one("dialog textarea", "Title")
        self.browser.type("Half a thought")
        self.browser.keys("Escape")
        self.browser.gone("dialog")
        self.browser.go(self.url("/home"))
        self.browser.one("#main h2", "Good")
        self.browser.keys("n")
        self.browser.one("dialog textarea", "Title")
        self.assertEqual(self.browser.js("return document.querySelector('dialog textarea').value"), "Half a thought")

    def test_an_empty_title_is_refused_with_a_sentence(self):
        self.open()
        self.browser.click("button", "New task")
        self.browser.click("dialog button", "Create task")
        self.browser.wait_text("dialog [role=alert]", "Give the task a title.")


class Changing(WebCase):
    def test_fields_of_the_page_are_saved(self):
        title = "Set up redirects for old addresses"
        self.open("/t/" + self.card(title)["key"])
        self.browser.click("aside button", "Priority")
        self.browser.click("[role=menuitemradio]", "Urgent")
        wait_until(lambda: self.card(title)["priority"] == "urgent", "the priority to be saved")

        self.browser.click("aside button", "Due date")
        self.browser.type_into("[popover] input", "9:30 pm\n", name="Due time")
        wait_until(lambda: self.card(title).get("due_time") == "21:30", "the time to be saved")

        self.browser.type_into("aside input", "1 h 30\n", name="Estimate")
        self.browser.wait_text("aside [role=alert]", "Try")
        self.browser.type_into("aside input", " min\n", name="Estimate")
        self.browser.gone("aside [role=alert]")

        self.browser.click("textarea", "Title")
        self.browser.keys("Control+a")
        self.browser.type("Redirect the old addresses")
        self.browser.keys("Enter")
        wait_until(lambda: self.card("Redirect the old addresses"), "the title to be saved")
        wait_until(lambda: self.browser.js("return document.title").startswith("Redirect"), "the window's title to follow")

    def test_a_comment_is_sent_edited_and_deleted(self):
        key = self.card("Plan the launch announcement")["key"]
        self.open("/t/" + key)
        self.browser.type_into("textarea", "See https://example.com/a?b=1&c=2, then TSK-1. <img src=x onerror=alert(1)>", name="Write a comment")
        self.browser.keys("Control+Enter")
        self.browser.one(".comment a", "https://example.com/a?b=1&c=2", exact=True)
        self.browser.one(".comment a", "TSK-1", exact=True)
        self.assertEqual(self.browser.all(".comment img"), [])
        self.assertEqual(self.browser.js("return document.querySelector('.composer textarea').value"), "")
        self.browser.click("button", "Edit comment")
        self.browser.type_into(".comment textarea", " Thanks.")
        self.browser.click(".comment button", "Save")
        self.browser.wait_text(".comment", "edited")
        self.browser.click("button", "Delete comment")
        self.browser.click("dialog button", "Delete", exact=True)
        self.browser.gone(".comment")

    def test_an_unsent_comment_is_still_there_after_a_reload(self):
        self.open("/t/TSK-1")
        self.browser.type_into("textarea", "not yet", name="Write a comment")
        self.browser.go(self.url("/t/TSK-1"))
        self.browser.one("textarea", "Write a comment")
        self.assertEqual(self.browser.js("return document.querySelector('.composer textarea').value"), "not yet")

    def test_checklists_and_subtasks_grow_and_are_ticked(self):
        key = self.card("Line up two partner posts")["key"]
        self.open("/t/" + key)
        self.browser.click("button", "Add a checklist")
        self.browser.wait_focus("Checklist title")
        self.browser.keys("Enter")
        self.browser.type_into("input", "First\n", name="Add to Checklist")
        self.browser.one(".checklist [role=checkbox]", "First")
        self.browser.type_into("input", "Second\n", name="Add to Checklist")
        self.browser.click(".checklist [role=checkbox]", "Second")
        wait_until(lambda: self.person().call("GET", f"/api/v1/tasks/{key}/detail")["checklists"][0]["items"][1]["done"], "the tick")
        self.browser.type_into("input", "Ask Jonas\n", name="Add a subtask")
        self.browser.click(".sub-list a", "Ask Jonas")
        self.browser.wait_text(".crumbs", key)

    def test_a_file_goes_up_comes_down_and_goes_away(self):
        key = self.card("Write the newsletter")["key"]
        file = self.folder / "notes & <plans>.txt"
        file.write_text("seventeen bytes..")
        self.open("/t/" + key)
        self.browser.choose_file("input[type=file]", file)
        self.browser.one(".file-row a", "notes & <plans>.txt")
        body = self.browser.js("return fetch(document.querySelector('.file-name').href).then(async (answer) => "
                               "[answer.headers.get('Content-Disposition').split(';')[0], await answer.text()])")
        self.assertEqual(body, ["attachment", "seventeen bytes.."])
        self.browser.click(".file-row button", "Delete notes")
        self.browser.gone(".file-row")

    def test_the_timer_runs_in_the_header_until_it_is_stopped(self):
        self.open("/t/TSK-3")
        self.browser.click("aside button", "Start timer")
        self.browser.one("header [role=group]", "Timer on")
        self.browser.one("aside button", "Stop timer")
        self.assertEqual(self.person().call("GET", "/api/timer")["timer"]["task_key"], "TSK-3")
        self.browser.click("header button", "Stop timer")
        self.browser.gone("header [role=group]")
        self.assertIsNone(self.person().call("GET", "/api/timer")["timer"])


class Finishing(WebCase):
    def test_done_can_be_taken_back(self):
        self.open("/my")
        title = "Return library books"
        self.browser.click("#main [role=checkbox]", f"Done: {title}")
        wait_until(lambda: self.card(title)["done"], "the task to be done")
        self.browser.one(".toast", "Completed")
        self.browser.keys("z")
        wait_until(lambda: not self.card(title)["done"], "the task to be open again")

    def test_a_refused_change_is_taken_back_and_said(self):
        self.expected.append("status of 500")
        self.open("/my")
        title = "Second interview with Alex"
        self.browser.js("""
          const send = window.fetch;
          window.fetch = (path, options) => options.method === 'PATCH'
            ? Promise.resolve(new Response('{"error":{"message":"The disk is full."}}', { status: 500 })) : send(path, options);""")
        self.browser.click("#main [role=checkbox]", f"Done: {title}")
        self.browser.one(".toast-error", "The disk is full.")
        self.browser.one("#main [role=checkbox][aria-checked=false]", f"Done: {title}")
        self.assertFalse(self.card(title)["done"])

    def test_arrows_walk_the_list_and_x_finishes(self):
        self.open("/my")
        titles = self.browser.texts(".task-row-title")
        self.browser.js("document.querySelector('.task-row-title').focus()")
        self.browser.keys("ArrowDown", "ArrowDown", "ArrowUp")
        self.assertEqual(self.browser.focused(), titles[1])
        self.browser.keys("x")
        wait_until(lambda: self.card(titles[1])["done"], "the task to be done")

    def test_delete_can_be_taken_back(self):
        title = "Measure page weight on a slow phone"
        card = self.card(title)
        self.open("/t/" + card["key"])
        self.browser.click("button", "Task menu")
        self.browser.click("[role=menuitem]", "Delete task")
        self.browser.wait_path("/b/" + card["board_id"])
        self.browser.gone(".card", title)
        self.assertIsNone(self.card(title))
        self.browser.click(".toast button", "Undo")
        self.browser.one(".card", title)
        self.assertIsNotNone(self.card(title))

    def test_a_task_that_is_not_there_is_said_to_be_missing(self):
        self.expected.append("status of 404")
        self.open("/t/TSK-99999")
        self.browser.one("#main [role=alert]", "This page isn't here")
