#!/usr/bin/env python3
"""Opens pages in a browser and says what is wrong with them. In light and in dark: no complaint, nothing loaded, nothing wider
than the page, every text readable; then the filters by keyboard, and the page without its script. Leaves pictures."""

import argparse
import pathlib
import shutil
import tempfile

from browser import Browser

WIDTH = 1200
LEAST_TEXT = 4.5  # contrast, of any size
LEAST_SHAPE = 3
FEW_TABS = 3  # until a filter, from what is before it
MORE_TABS = 20
HIGHEST = 3000  # pixels of a picture
FACTS = (pathlib.Path(__file__).parent / "page_facts.js").read_text()


class Page:
    """An open page, and what is wrong with it."""

    def __init__(self, browser, path):
        self.browser, self.path, self.complaints = browser, path, []

    def complain(self, text):
        self.complaints.append(f"{self.path.name}: {text}")

    def expect(self, what, found, expected):
        if found != expected:
            self.complain(f"{what}: expected {expected}, found {found}")

    def ask(self, question):
        return self.browser.evaluate(f"({FACTS}).{question}")

    def open(self):
        self.browser.open(self.path.absolute().as_uri())

    def look(self, scheme, pictures):
        self.browser.show_as(WIDTH, 900, scheme)
        self.open()
        for event in self.browser.events:
            self.listen(event)
        self.expect(f"{scheme}: wider than {WIDTH} pixels", self.ask("wide()"), [])
        texts = self.ask(f"faintTexts({LEAST_TEXT})")
        self.expect(f"{scheme}: texts with too little contrast", texts["faint"], [])
        self.expect(f"{scheme}: texts", texts["count"] > 0, True)
        self.expect(f"{scheme}: shapes with too little contrast", self.ask(f"faintBars({LEAST_SHAPE})"), [])
        if pictures:
            self.browser.picture(pictures / f"{self.path.stem}-{scheme}.png", HIGHEST)

    def listen(self, event):
        told = event["params"]
        if event["method"] == "Network.requestWillBeSent" and told["type"] != "Document":
            self.complain(f"loads {told['request']['url']}")
        if event["method"] in ("Runtime.exceptionThrown", "Runtime.consoleAPICalled", "Log.entryAdded"):
            self.complain(f"the browser complains: {told}")

    def expect_rows(self, what, name, fits):
        rows = self.ask(f"rows('{name}')")
        found = [row["text"][:20] for row in rows if row["shown"]]
        self.expect(what, found, [row["text"][:20] for row in rows if fits(row)])
        status = f"{len(found)} of {len(rows)} rows shown" if len(found) < len(rows) else ""
        self.expect(f"{what}: status", self.browser.evaluate(
            f"document.querySelector('form[name=\"{name}\"] .shown').textContent"), status)

    def tab(self):
        """Presses the key. Returns where the keyboard is then."""
        self.browser.press("Tab")
        focus = self.ask("focus()")
        if not focus["seen"] and focus["tag"] != "BODY":
            self.complain(f"a focus that cannot be seen: {focus}")
        return focus

    def tab_to(self, form, field):
        self.ask(f"goBefore('{form}')")
        for _ in range(FEW_TABS):
            focus = self.tab()
            if (focus["form"], focus["field"]) == (form, field):
                return focus
        self.complain(f"expected Tab to come to {form} {field}")
        return None

    def try_filter(self, name):
        self.open()
        if not self.tab_to(name, "text"):
            return
        wanted = self.ask(f"rows('{name}')")[-1]["text"][:8]
        self.browser.type(wanted)
        self.expect_rows(f"rows with {wanted}", name, lambda row: wanted in row["text"])
        for _ in wanted:
            self.browser.press("Backspace")
        self.expect_rows("all rows again", name, lambda row: True)
        if len({row["outcome"] for row in self.ask(f"rows('{name}')")}) > 1:
            self.try_box(name)

    def try_box(self, name):
        """The first box of a filter, which the keyboard comes to next."""
        box = self.tab()
        self.expect("the field after the text", [box["form"], box["field"]], [name, "outcome"])
        self.browser.press(" ", "Space", " ")
        self.expect_rows(f"rows without {box['value']}", name, lambda row: row["outcome"] != box["value"])
        self.browser.events.clear()
        self.browser.call("Page.reload")
        self.browser.wait_for("Page.loadEventFired")
        self.expect_rows("rows after a reload", name, lambda row: row["outcome"] != box["value"])

    def try_without_script(self, filters):
        self.browser.call("Emulation.setScriptExecutionDisabled", value=True)
        self.open()
        self.expect("forms without a script", self.browser.evaluate(
            "[...document.forms].filter(one => one.getClientRects().length > 0).length"), 0)
        for name in filters:
            self.expect("all rows without a script", [row for row in self.ask(f"rows('{name}')") if not row["shown"]], [])
        self.browser.call("Emulation.setScriptExecutionDisabled", value=False)

    def look_at_all(self, pictures):
        for scheme in ("dark", "light"):
            self.look(scheme, pictures)
        for _ in range(MORE_TABS):
            self.tab()
        filters = self.ask("filters()")
        for name in filters:
            self.try_filter(name)
        self.try_without_script(filters)


def look_at(browser, paths, pictures):
    complaints = []
    for path in paths:
        page = Page(browser, path)
        page.look_at_all(pictures)
        complaints += page.complaints
    return complaints


def renew(browser, before, after, folder):
    """A page that is replaced, as a campaign replaces its page: the browser shows the new one, filtered as before."""
    path = pathlib.Path(folder) / "renewed.html"
    shutil.copy(before, path)
    page = Page(browser, path)
    page.open()
    page.tab_to("cases", "text")
    browser.type("done")
    browser.events.clear()
    shutil.copy(after, path)
    browser.wait_for("Page.loadEventFired")
    page.expect("the word of the band", browser.evaluate("document.querySelector('.outcome').textContent"), "FAIL")
    page.expect("renewals", browser.evaluate("document.querySelectorAll('meta[http-equiv=refresh]').length"), 0)
    page.expect_rows("rows after the renewal", "cases", lambda row: "done" in row["text"])
    focus = page.ask("focus()")
    page.expect("focus after the renewal", [focus["form"], focus["field"], focus["value"]], ["cases", "text", "done"])
    return page.complaints


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("pages", nargs="+", type=pathlib.Path)
    parser.add_argument("--pictures", type=pathlib.Path, help="folder for pictures, made anew")
    parser.add_argument("--renew", action="store_true", help="instead: the first page is replaced by the second")
    arguments = parser.parse_args()
    if arguments.pictures:
        shutil.rmtree(arguments.pictures, ignore_errors=True)
        arguments.pictures.mkdir(parents=True)
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        browser = Browser(folder)
        try:
            complaints = renew(browser, *arguments.pages, folder) if arguments.renew else look_at(
                browser, arguments.pages, arguments.pictures)
        finally:
            browser.close()
    print("\n".join(complaints))
    raise SystemExit(1 if complaints else 0)


if __name__ == "__main__":
    main()
