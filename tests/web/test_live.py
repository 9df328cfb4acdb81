"""Windows that follow each other, and a service that goes away and comes back."""

from case import WebCase
from harness.waiting import wait_until


class Live(WebCase):
    def test_a_change_in_one_tab_shows_in_another_without_a_load(self):
        self.open("/b/brd_2")
        self.browser.js("window.sameDocument = true")
        first = self.browser.new_tab()
        self.open("/b/brd_2")
        self.browser.click("section.column button", "Add a task")
        self.browser.wait_focus("New task in Ideas")
        self.browser.type("Seen from afar")
        self.browser.keys("Enter")
        self.browser.one(".card", "Seen from afar")
        self.browser.close_tab(first)
        self.browser.one(".card", "Seen from afar")
        self.assertTrue(self.browser.js("return window.sameDocument"))

    def test_a_change_by_the_api_reaches_home_task_and_inbox(self):
        self.open("/t/TSK-8")
        self.person().call("PATCH", "/api/v1/tasks/TSK-8", {"title": "Plan the announcement again"})
        wait_until(lambda: self.browser.js("return document.querySelector('.task-title-field').value") == "Plan the announcement again",
                   "the new title")

    def test_the_service_goes_away_and_comes_back(self):
        self.expected += ["net::ERR_CONNECTION_REFUSED", "net::ERR_INCOMPLETE_CHUNKED_ENCODING", "net::ERR_EMPTY_RESPONSE",
                          "net::ERR_CONNECTION_RESET"]
        self.open("/home")
        self.service.stop()
        self.addCleanup(self.service.start)
        self.browser.one("#main [role=alert]", "Parvela can't be reached")
        self.browser.keys("n")
        self.browser.one("dialog textarea", "Title")
        self.browser.type("Typed while offline")
        self.browser.click("dialog button", "Create task")
        self.browser.wait_text("dialog [role=alert]", "What you typed is kept.")
        self.service.start()
        self.browser.click("dialog button", "Create task")
        self.browser.gone("dialog")
        self.browser.gone("#main [role=alert]", "Parvela can't be reached")
        self.assertIsNotNone(self.card("Typed while offline"))

    def test_the_first_page_waits_for_the_service(self):
        self.expected += ["net::ERR_CONNECTION_REFUSED", "net::ERR_FAILED", "status of 503"]
        self.open("/home")
        # The page itself comes from the running service, its first call finds none.
        identifier = self.browser.before_load("""
          const send = window.fetch;
          window.reachable = false;
          window.fetch = (...request) => window.reachable ? send(...request) : Promise.reject(new TypeError('refused'));""")
        self.addCleanup(self.browser.take_back, identifier)
        self.browser.go(self.url("/my"))
        self.browser.one("h1", "Parvela can't be reached")
        self.browser.js("window.reachable = true")
        self.browser.click("button", "Try again")
        self.browser.one("h1", "My tasks")
