"""What can be measured of the looks: contrast, room, names, and that keys reach everything."""

from case import WebCase

PAGES = ("/home", "/my", "/boards", "/b/brd_1", "/b/brd_1?view=list", "/b/brd_1?view=table", "/b/brd_1?view=calendar",
         "/b/brd_1?view=timeline", "/t/TSK-3", "/inbox", "/search?q=launch", "/settings", "/settings/developers", "/nowhere")

# Texts whose contrast with what lies behind them is below WCAG AA: 4.5, or 3 for large text. Colours are painted on a canvas, so
# that every notation and transparency counts as it is shown.
FAINT = """
const context = new OffscreenCanvas(1, 1).getContext('2d', { willReadFrequently: true });
const over = (below, colour) => {
  context.fillStyle = `rgb(${below.join(' ')})`;
  context.fillRect(0, 0, 1, 1);
  context.fillStyle = colour;
  context.fillRect(0, 0, 1, 1);
  return [...context.getImageData(0, 0, 1, 1).data].slice(0, 3);
};
const groundOf = (element) => {
  const chain = [];
  for (let at = element; at; at = at.parentElement) chain.unshift(at);
  return chain.reduce((below, at) => over(below, getComputedStyle(at).backgroundColor), [255, 255, 255]);
};
const light = (colour) => colour.map((part) => part / 255)
  .map((part) => (part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4))
  .reduce((sum, part, index) => sum + part * [0.2126, 0.7152, 0.0722][index], 0);
const faint = [];
const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
while (walker.nextNode()) {
  const element = walker.currentNode.parentElement;
  if (!walker.currentNode.data.trim() || !element.checkVisibility({ opacityProperty: true, visibilityProperty: true })) continue;
  if (element.closest(':disabled, .sr-only, option, script, noscript')) continue;
  const style = getComputedStyle(element);
  const ground = groundOf(element);
  const [a, b] = [light(over(ground, style.color)), light(ground)];
  const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
  const size = parseFloat(style.fontSize);
  const large = size >= 24 || (size >= 18.66 && style.fontWeight >= 700);
  if (ratio < (large ? 3 : 4.5)) faint.push(`${walker.currentNode.data.trim().slice(0, 30)}: ${ratio.toFixed(2)}`);
}
return [...new Set(faint)];
"""

# Controls that a screen reader could not name.
NAMELESS = """
return [...document.querySelectorAll('a[href], button, input, select, textarea, [role=checkbox], [role=img]')]
  .filter((element) => element.checkVisibility() && element.type !== 'hidden')
  .filter((element) => !(element.getAttribute('aria-label') || element.textContent.trim() || element.labels?.length || element.title))
  .map((element) => element.outerHTML.slice(0, 120));
"""

OVERFLOW = """
return [...document.querySelectorAll('body, .app, header, #sidebar, #main, .page, .board-page, .task')]
  .filter((element) => element.scrollWidth > element.clientWidth + 1 && element.clientWidth > 0)
  .map((element) => `${element.tagName}.${element.className}: ${element.scrollWidth} > ${element.clientWidth}`);
"""


class Look(WebCase):
    def setUp(self):
        super().setUp()
        self.addCleanup(self.browser.prefer, "light")
        self.addCleanup(self.browser.resize, 1280, 820)

    def test_text_is_readable_in_light_and_dark(self):
        for scheme in ("light", "dark"):
            self.browser.prefer(scheme)
            for page in PAGES:
                with self.subTest(f"{page} {scheme}"):
                    self.open(page)
                    self.assertEqual(self.browser.js(FAINT), [])

    def test_dark_and_light_differ(self):
        self.open()
        ground = "return getComputedStyle(document.documentElement).backgroundColor"
        self.browser.prefer("light")
        self.assertEqual(self.browser.js(ground), "rgb(238, 240, 238)")
        self.browser.prefer("dark")
        self.assertEqual(self.browser.js(ground), "rgb(18, 21, 20)")

    def test_nothing_sticks_out_at_the_smallest_window_and_on_a_phone(self):
        self.person().call("PATCH", "/api/v1/tasks/TSK-3", {"title": "Wide" * 120})
        for width, height in ((1280, 820), (800, 520), (390, 780)):
            self.browser.resize(width, height)
            for page in PAGES:
                with self.subTest(f"{page} {width}"):
                    self.open(page)
                    self.assertEqual(self.browser.js(OVERFLOW), [])

    def test_every_control_has_a_name(self):
        for page in PAGES:
            with self.subTest(page):
                self.open(page)
                self.assertEqual(self.browser.js(NAMELESS), [])

    def test_tab_walks_every_control_once_and_shows_where_it_is(self):
        self.open("/my")
        wanted = self.browser.js("""
          return [...document.querySelectorAll('a[href], button, input, summary, select, textarea')]
            .filter((element) => element.checkVisibility() && !element.disabled && element.tabIndex >= 0).length""")
        seen = []
        for _ in range(wanted):
            self.browser.keys("Tab")
            seen.append(self.browser.js("""
              const at = document.activeElement;
              const shown = [at, at.closest('.task-row'), at.parentElement].some((element) => element &&
                (parseFloat(getComputedStyle(element).outlineWidth) >= 2 && getComputedStyle(element).outlineStyle !== 'none'
                  || getComputedStyle(element).boxShadow !== 'none'));
              at.dataset.walked = Number(at.dataset.walked ?? 0) + 1;
              return [at.outerHTML.slice(0, 90), shown]"""))
        self.assertEqual([html for html, shown in seen if not shown], [])
        self.assertEqual(self.browser.js("return document.querySelectorAll('[data-walked]').length"), wanted)

    def test_the_policy_forbids_scripts_in_the_page(self):
        self.expected.append("Content Security Policy")
        self.open()
        self.browser.js("const script = document.createElement('script'); script.textContent = 'window.injected = 1';"
                        "document.body.append(script)")
        self.assertIsNone(self.browser.js("return window.injected ?? null"))


class Settings(WebCase):
    def test_a_token_is_shown_once_and_can_be_revoked(self):
        self.open("/settings/developers")
        self.browser.click("button", "New token")
        self.browser.type_into("dialog input", "Backup", name="Name")
        self.browser.click("dialog button", "Create token")
        self.browser.one("dialog h2", "Your new token")
        token = self.browser.js("return document.querySelector('dialog input').value")
        self.assertRegex(token, r"^tk_\S{8,}$")
        self.browser.click("dialog button", "Done")
        self.browser.wait_text("#main", "Backup")
        self.assertNotIn(token, self.browser.js("return document.documentElement.outerHTML"))
        self.browser.click("#main button", "Revoke Backup")
        self.browser.click("dialog button", "Revoke", exact=True)
        self.browser.gone("#main .token-row", "Backup")
        self.assertEqual(self.person().tokens(), [])

    def test_search_follows_the_typing_and_opens_by_keys(self):
        self.open("/search")
        self.browser.type_into("header input[type=search]", "newsletter")
        self.browser.wait_path("/search?q=newsletter")
        self.browser.one(".task-row-title", "Write the newsletter")
        self.browser.keys("ArrowDown", "Enter")
        self.browser.one("textarea", "Title")
        self.browser.wait_text("h1", "Write the newsletter")
