"""Getting in and out: the demo, an account of one's own, a wrong password, and the way back to the desktop app."""

import urllib.parse

from case import WebCase
from harness.waiting import wait_until

UNAUTHORISED = "Failed to load resource: the server responded with a status of 401"


class DemoSignIn(WebCase):
    def test_the_demo_needs_one_click_and_leads_to_the_page_that_was_asked_for(self):
        self.browser.go(self.url("/my"))
        self.browser.click("button", "Explore the demo")
        self.browser.wait_path("/my")
        self.browser.one("h1", "My tasks")

    def test_a_foreign_next_address_is_not_followed(self):
        for address in ("//example.com/x", "https://example.com/", "/sign-in?next=/my", "javascript:alert(1)"):
            with self.subTest(address):
                self.forget_everything()
                self.browser.go(self.url("/sign-in?next=" + urllib.parse.quote(address, safe="")))
                self.browser.click("button", "Explore the demo")
                self.browser.wait_path("/home")

    def test_a_wrong_password_is_said_and_what_was_typed_stays(self):
        self.expected.append("/api/session - " + UNAUTHORISED)
        self.browser.go(self.url("/sign-in"))
        self.browser.type_into("input", "robin@parvela.example", name="Email")
        self.browser.type_into("input", "not the password", name="Password")
        self.browser.click("button", "Sign in", exact=True)
        self.browser.one("[role=alert]")
        self.assertEqual(self.browser.js("return document.querySelector('input[type=email]').value"), "robin@parvela.example")

    def test_signing_out_leads_back_to_the_sign_in_page_for_every_window(self):
        self.open("/settings")
        other = self.browser.new_tab()
        self.open("/my")
        self.browser.tab(other)
        self.browser.click("button", "Sign out")
        self.browser.wait_path("/sign-in?next=%2Fsettings")
        second = [handle for handle in self.browser.command("GET", "/window/handles") if handle != other][0]
        self.browser.tab(second)
        # Nobody touched this window: it noticed by itself.
        self.expected.append(UNAUTHORISED)
        self.browser.one("h1", "Sign in to Parvela")
        self.browser.close_tab(other)

    def test_the_browser_hands_the_sign_in_over_to_the_desktop_app(self):
        address = f"{self.service.api_url}/api/auth/signin/local?state=abc"
        self.browser.go(self.url("/oauth/start?u=" + urllib.parse.quote(address, safe="")))
        self.browser.click("button", "Explore the demo")
        self.browser.one("h1", "Sign in to the desktop app?")
        # A headless browser has nothing that opens "parvela:", so the page itself is asked where it would go.
        self.browser.js("""
          const send = window.fetch;
          window.fetch = async (...request) => {
            const answer = await send(...request);
            if (String(request[0]).endsWith('/api/handoff')) window.handedOver = await answer.clone().json();
            return answer;
          };""")
        self.browser.click("button", "Open Parvela")
        self.browser.one("h1", "Back to Parvela")
        url = urllib.parse.urlsplit(self.browser.js("return window.handedOver.url"))
        self.assertEqual((url.scheme, url.netloc), ("parvela", "auth-callback"))
        code = urllib.parse.parse_qs(url.query)["code"][0]
        self.forget_everything()
        self.browser.go(self.url(f"/oauth/complete?code={code}"))
        self.browser.wait_path("/home")
        self.browser.one("h1", "Home")

    def test_an_incomplete_hand_over_says_so(self):
        for query in ("", "?u=", "?u=javascript%3Aalert(1)", "?u=https%3A%2F%2Fexample.com%2Felsewhere"):
            with self.subTest(query):
                self.browser.go(self.url("/oauth/start" + query))
                self.browser.one("h1", "This link isn't complete")


class FirstAccount(WebCase):
    demo = False

    def test_the_first_person_sets_up_a_workspace_and_a_board(self):
        self.browser.go(self.url("/"))
        self.browser.one("h1", "Set up Parvela")
        for name, text in (("Name", "Ada Quill"), ("Email", "ada@example.com"), ("Password", "correct horse"), ("Workspace", "Quill & Co")):
            self.browser.type_into("input", text, name=name)
        self.browser.click("button", "Create account")
        self.browser.wait_path("/home")
        self.browser.wait_text("#main", "Nothing is due")
        self.browser.click("#main a", "Make a board")
        self.browser.click("button", "Make the first board")
        self.browser.type_into("dialog input", "<b>Plans</b> & \"ideas\"", name="Name")
        self.browser.click("dialog button", "Create board")
        # Names are text, whatever they look like.
        wait_until(lambda: self.browser.text("h1") == "<b>Plans</b> & \"ideas\"", "the new board's name")
        self.assertEqual(self.browser.all("h1 b"), [])
        self.assertRegex(self.browser.js("return document.title"), r"^<b>Plans</b>")
