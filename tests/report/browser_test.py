#!/usr/bin/env python3
"""Makes reports of traces with make_report and uses them in a real browser, as a reader would.

usage: browser_test.py MAKE_REPORT [--screenshots FOLDER]
"""
import argparse
import base64
import json
import pathlib
import subprocess
import sys
import tempfile
import time

from browser import Browser

LINES = 100000
HOSTILE = ("</script><script>document.title='broken'</script>"
           "<img src=x onerror=alert(1)>\"'\\<!--")
PATIENCE_MS = 10000  # a page that needs longer is broken; usual are a few hundred

failures = []


def check(what, found, wanted):
    if found != wanted:
        failures.append(f"{what}: found {found!r}, wanted {wanted!r}")


def check_true(what, holds):
    if not holds:
        failures.append(what)


def make(program, folder, lines, layout):
    folder.mkdir()
    done = subprocess.run([program, folder, str(lines), layout], check=True, capture_output=True,
                          text=True)
    return (folder / "report.html").as_uri(), json.loads(done.stdout)


def rows(browser):
    return int(browser.value("byId('lines').getAttribute('aria-rowcount')"))


def wait_for_rows(browser, wanted, what):
    try:
        browser.wait_for(f"byId('lines').getAttribute('aria-rowcount') === '{wanted}'", 5)
    except RuntimeError:
        check(what, rows(browser), wanted)


def figure(browser, name):
    text = browser.value(
        f"[...document.querySelectorAll('#summary div')].find((box) => "
        f"box.querySelector('dt').textContent === {json.dumps(name)})"
        ".querySelector('dd').firstChild.textContent")
    return int("".join(c for c in text if c.isdigit()))


def check_summary(browser, made):
    check("lines in the summary", figure(browser, "Lines"), made["lines"])
    check("requests in the summary", figure(browser, "Requests"), made["requests"])
    check("errors in the summary", figure(browser, "Error lines"), made["errorLines"])
    cells = browser.value("[...document.querySelectorAll('#commands tbody tr')].map((row) => "
                          "[...row.cells].map((cell) => cell.textContent))")
    counts = {cell[0]: int("".join(c for c in cell[1] if c.isdigit())) for cell in cells}
    check("requests of Reg_GetValue", counts.get("Reg_GetValue"), made["getValues"])
    check("requests of all commands", sum(counts.values()), made["requests"])
    odd = sum(int("".join(c for c in cell[3] if c.isdigit())) for cell in cells)
    check("requests with a result other than 0", odd, made["refused"])
    check_true("each command has its histogram", browser.value(
        "[...document.querySelectorAll('#commands tbody tr')].every((row) => "
        "row.querySelector('.bins span:not(.empty)'))"))


def check_list(browser):
    check("rows of the list", rows(browser), LINES)
    drawn = browser.value("document.querySelectorAll('#rows .row').length")
    check_true(f"only the rows in view exist, not {drawn}", 5 < drawn < 120)
    browser.value("byId('lines').focus()")
    browser.press("End")
    browser.wait_for("document.querySelector('#rows .row.chosen') !== null")
    check("the last row", browser.value(
        "document.querySelector('#rows .row:last-child').dataset.index"), str(LINES - 1))
    browser.press("Home")
    browser.press("ArrowDown")
    check("the chosen row", browser.value(
        "document.querySelector('#rows .row.chosen').firstChild.textContent"), "2")
    check_true("the details of the chosen row", "StartSRV" in browser.value(
        "byId('detail').hidden ? '' : byId('detail').textContent"))


def check_hostile_text(browser):
    browser.press("/", "/")
    browser.type("onerror=alert")
    wait_for_rows(browser, 1, "rows with the hostile text")
    check("the hostile text", browser.value(
        "document.querySelector('#rows .row').lastChild.textContent"), HOSTILE)
    check("pictures in the page", browser.value("document.images.length"), 0)
    check("scripts in the page", browser.value("document.scripts.length"), 2)
    check("the title", browser.value("document.title"), "Trace ZqFILE1.TRC")
    browser.press("Escape")
    wait_for_rows(browser, LINES, "rows without a filter")


def choose(browser, field, option):
    browser.value(f"byId('{field}').value = '{option}';"
                  f"byId('{field}').dispatchEvent(new Event('change'))")


def check_filter(browser, made):
    choose(browser, "marks", 2)
    wait_for_rows(browser, made["errorLines"], "rows with errors")
    choose(browser, "marks", "")
    browser.value("byId('lines').focus()")
    browser.press("e", "e")
    check_true("e goes to an error", browser.value(
        "document.querySelector('#rows .row.chosen').classList.contains('error')"))
    choose(browser, "function", "StartSRV")
    wait_for_rows(browser, 65, "rows of StartSRV")
    choose(browser, "connection", "-1")
    choose(browser, "level", "--")
    wait_for_rows(browser, 65, "rows of StartSRV without a connection")
    browser.click("#filter button[type=reset]")
    wait_for_rows(browser, LINES, "rows after clearing")

    browser.click("#commands tbody tr:first-child button")
    browser.wait_for(f"byId('lines').getAttribute('aria-rowcount') !== '{LINES}'")
    check_true("the lines of one command", browser.value(
        "[...list.passing].every((line) => trace.owner[line] >= 0 && "
        "commandName(requests[trace.owner[line]].command) === 'Reg_GetValue')"))
    check("the requests they belong to", browser.value(
        "new Set([...list.passing].map((line) => trace.owner[line])).size"), made["getValues"])
    check_true("the filter stands in the address", "command=22" in browser.value(
        "location.hash"))
    browser.click("#filter button[type=reset]")
    wait_for_rows(browser, LINES, "rows after clearing again")


def check_timeline(browser):
    browser.value("byId('timeline-title').scrollIntoView()")
    check_true("the time line is drawn", browser.value(
        "(() => { const c = byId('lanes-canvas'); const d = c.getContext('2d')"
        ".getImageData(0, 0, c.width, c.height).data; let n = 0;"
        "for (let i = 3; i < d.length; i += 4) n += d[i] > 0; return n; })()") > 2000)
    whole = browser.value("timeline.to - timeline.from")
    browser.click("#zoom-in")
    check("the span after a step", browser.value("timeline.to - timeline.from"), whole / 2)
    browser.click("#in-span")
    browser.wait_for(f"Number(byId('lines').getAttribute('aria-rowcount')) < {LINES}")
    check_true("lines of the span only", browser.value(
        "[...list.passing].every((i) => axis[i] >= timeline.from && axis[i] <= timeline.to)"))
    browser.click("#in-span")
    x, y = browser.value("(() => { byId('lanes').scrollIntoView({block: 'center'});"
                         "const b = byId('lanes-canvas').getBoundingClientRect();"
                         "return [b.x, b.y]; })()")
    browser.mouse("mousePressed", x + 400, y + 30, button="left", clickCount=1)
    browser.mouse("mouseMoved", x + 500, y + 30, button="left")
    browser.mouse("mouseReleased", x + 500, y + 30, button="left", clickCount=1)
    check_true("dragging zooms", browser.value("timeline.to - timeline.from") < whole / 4)
    browser.value("byId('lanes').focus()")
    browser.press("0", "0")
    check("0 shows everything", browser.value("timeline.to - timeline.from"), whole)
    browser.click("#by-function")
    check("a row for each function", browser.value("timeline.lanes.length"),
          browser.value("new Set(raw.places.map((place) => place[kFunction])).size"))


def check_looks(browser):
    background = "getComputedStyle(document.body).backgroundColor"
    browser.look(1280, 900, dark=False)
    light = browser.value(background)
    browser.look(1280, 900, dark=True)
    check_true("dark looks different", browser.value(background) != light)
    browser.look(390, 844)
    browser.wait_for("innerWidth === 390")
    check_true("a narrow page is not wider than its window", browser.value(
        "document.documentElement.scrollWidth") <= 390)
    browser.look(1280, 900)
    paper = base64.b64decode(browser.send("Page.printToPDF")["data"])
    check_true("the page prints", paper.startswith(b"%PDF") and paper.count(b"/Page") > 5)
    check("rows left over from printing", browser.value("byId('printed').children.length"), 0)


def check_quiet(browser, url, what):
    check(f"console of {what}", browser.complaints(), [])
    check(f"requests of {what}", browser.requested(), [url])


def take_screenshots(browser, url, folder):
    folder.mkdir(parents=True, exist_ok=True)
    for width, height in ((1280, 1700), (390, 2400)):
        for dark in (False, True):
            browser.open(url + "#line=167", width, height, dark)
            browser.click("#by-function")
            browser.mouse("mouseMoved", 300 if width > 400 else 200, 300)
            browser.value("scrollTo(0, 0)")
            time.sleep(0.2)
            shot = browser.send("Page.captureScreenshot")["data"]
            name = f"{'dark' if dark else 'light'}-{width}.png"
            (folder / name).write_bytes(base64.b64decode(shot))
            browser.value("byId('detail').scrollIntoView({block: 'end'})")
            shot = browser.send("Page.captureScreenshot")["data"]
            (folder / f"detail-{name}").write_bytes(base64.b64decode(shot))
    browser.open(url + "#marks=1", 800, 2000)
    (folder / "paper.pdf").write_bytes(base64.b64decode(browser.send("Page.printToPDF")["data"]))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("make_report")
    parser.add_argument("--screenshots", type=pathlib.Path)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="report-test-") as name, Browser() as browser:
        folder = pathlib.Path(name)
        url, made = make(arguments.make_report, folder / "long", LINES, "long")
        if arguments.screenshots:
            take_screenshots(browser, url, arguments.screenshots)
            return 0
        browser.open(url)
        ready = int(browser.value("document.documentElement.dataset.readyAfter"))
        size = (folder / "long" / "report.html").stat().st_size
        print(f"{LINES} lines: {size / 1e6:.1f} MB, ready after {ready} ms")
        check_true(f"ready after {ready} ms", ready < PATIENCE_MS)
        check_summary(browser, made)
        check_list(browser)
        check_hostile_text(browser)
        check_filter(browser, made)
        check_timeline(browser)
        check_looks(browser)
        check_quiet(browser, url, "the long trace")

        for layout, lines in (("time", 500), ("text", 500), ("short", 500), ("long", 0)):
            url, made = make(arguments.make_report, folder / f"{layout}-{lines}", lines, layout)
            browser.open(url)
            check(f"rows of {layout}", rows(browser), made["lines"])
            check(f"requests of {layout}", figure(browser, "Requests"), made["requests"])
            check_quiet(browser, url, f"{layout} with {lines} lines")
    print("\n".join(failures) or "all as it should be")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
