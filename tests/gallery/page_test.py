"""The gallery's page in a real browser: draws it, opens it in Chromium without a window, at the width
of a phone and of a screen, and looks at what the browser made of it. Then types what it says that one
has to type.

usage: page_test.py ROOT PROGRAM FOLDER"""

import html
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import urllib.parse

BROWSER, DRIVER = "/usr/bin/chromium", "/usr/bin/chromedriver"
PATIENCE = 60  # seconds for all that the browser does
SCALE = 2
WIDTHS = (390, 1280)
WITHOUT_MEDIA = "01-progress"  # a state that needs no server

# Gives what each picture says and is, once all are there; those of no size could not be loaded.
PICTURES = """
const done = arguments[0];
const images = [...document.images];
images.forEach(image => { image.loading = "eager"; });
Promise.allSettled(images.map(image => image.decode())).then(() => done(images.map(image => ({
  file: image.getAttribute("src"), alt: image.alt,
  declared: [image.getAttribute("width"), image.getAttribute("height")].map(Number),
  real: [image.naturalWidth, image.naturalHeight]}))));
"""
SECTIONS = """
return [...document.querySelectorAll("section")].map(section => [
  section.id, [...section.querySelectorAll("article")].map(article => article.id)]);
"""
PAYLOADS = """
return [...document.querySelectorAll("article")].map(article => [
  article.querySelector(".facts a").getAttribute("href"),
  article.querySelector(".payload").textContent]);
"""
TARGETS = """
return [...document.querySelectorAll("[href]")].map(link => link.getAttribute("href"))
  .filter(target => !target.startsWith("data:"));
"""
IDENTIFIERS = 'return [...document.querySelectorAll("[id]")].map(element => element.id);'
# What sticks out of the window, or of what cuts it off without a way to scroll there.
TOO_WIDE = """
const page = document.documentElement;
return [...document.querySelectorAll("body *")].filter(element =>
    element.getBoundingClientRect().right > page.clientWidth + 0.5 && !element.closest("nav, pre"))
  .map(element => element.tagName + " " + element.textContent.slice(0, 40))
  .concat(page.scrollWidth > page.clientWidth ? ["the page"] : []);
"""


def open_browser():
    # These are Debian's, and so not in every Python.
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    options = webdriver.ChromeOptions()
    options.binary_location = BROWSER
    options.add_argument("--headless=new")
    options.add_argument("--disable-gpu")
    options.add_argument("--disable-dev-shm-usage")  # a container may have little there
    if os.geteuid() == 0:
        options.add_argument("--no-sandbox")  # it has none for root
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service(DRIVER), options=options)


def look(page, sections):
    """Prints what is wrong with the page, a line each; nothing else."""
    browser = open_browser()
    try:
        browser.set_script_timeout(PATIENCE)
        browser.get(page.as_uri())
        wrong = [*wrong_pictures(browser), *wrong_texts(browser, page.parent),
                 *wrong_links(browser, page.parent), *wrong_sections(browser, sections),
                 *wrong_widths(browser)]
        wrong += [f"the browser says: {entry['message']}" for entry in browser.get_log("browser")]
    finally:
        browser.quit()
    print("\n".join(wrong))


def wrong_pictures(browser):
    pictures = browser.execute_async_script(PICTURES)
    if not pictures:
        yield "there are no pictures"
    for each in pictures:
        pixels = [points * SCALE for points in each["declared"]]
        # Half a point can't be said.
        if any(abs(real - wanted) >= SCALE for real, wanted in zip(each["real"], pixels)):
            yield f"{each['file']} has {each['real']} pixels where {pixels} are declared"
        if not each["alt"]:
            yield f"{each['file']} has no text for those who don't see it"


def wrong_texts(browser, folder):
    for file, text in browser.execute_script(PAYLOADS):
        delivered = (folder / urllib.parse.unquote(file)).read_text(encoding="utf-8")
        try:
            same = json.loads(text) == json.loads(delivered)
        except ValueError as error:
            yield f"{file} is shown as what is no JSON: {error}"
        else:
            if not same:
                yield f"{file} is not what is shown"


def wrong_links(browser, folder):
    known = set(browser.execute_script(IDENTIFIERS))
    for target in browser.execute_script(TARGETS):
        path, _, anchor = urllib.parse.unquote(target).partition("#")
        if not (folder / path).exists() or (anchor and anchor not in known):
            yield f"the link {target} leads nowhere"


def wrong_sections(browser, sections):
    shown = browser.execute_script(SECTIONS)
    if shown != sections:
        yield f"these sections are shown: {shown}"


def wrong_widths(browser):
    for width in WIDTHS:
        browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        for element in browser.execute_script(TOO_WIDE):
            yield f"at {width} pixels this is too wide: {element}"


def sections_of(root):
    sys.path.insert(0, f"{root}/scripts/gallery")
    from states import SECTIONS as sections
    return [[each.anchor, [f"state-{state.name}" for state in each.states]] for each in sections]


def looked_at(root, page):
    """What `look` prints, from a process of its own: a browser that hangs goes with all its own."""
    looking = subprocess.Popen([sys.executable, __file__, "--look", root, str(page)],
                               stdout=subprocess.PIPE, text=True, start_new_session=True)
    try:
        wrong = looking.communicate(timeout=PATIENCE)[0].strip()
    except subprocess.TimeoutExpired:
        os.killpg(looking.pid, signal.SIGKILL)
        return f"the browser was not done after {PATIENCE} seconds"
    return wrong or ("" if looking.returncode == 0 else "the browser could not be used, see above")


def typed(page, state):
    """What is wrong with the pictures that the page's commands for a state leave; twice, as one may."""
    article = page.read_text(encoding="utf-8").partition(f'id="state-{state}"')[2]
    commands = html.unescape(re.search('<pre class="commands".*?>(.*?)</pre>', article, re.S)[1])
    with tempfile.TemporaryDirectory() as devices:
        for _ in range(2):
            done = subprocess.run(["bash", "-ec", commands], cwd=page.parent, text=True, check=False,
                                  env={**os.environ, "TMPDIR": devices}, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.PIPE)
            if done.returncode != 0:
                return f"{commands}\nends with {done.returncode}: {done.stderr}"
    for kind in ("view", "card"):
        again = page.with_name(f"{kind}.png").read_bytes()
        if again != (page.parent / f"{kind}s" / f"{state}.png").read_bytes():
            return f"{commands}\ndraws another {kind}"
    return ""


def main(root, program, folder):
    subprocess.run([sys.executable, f"{root}/scripts/gallery", "--program", program, "--folder",
                    folder, "--scale", str(SCALE)], check=True)
    page = pathlib.Path(folder).resolve() / "index.html"
    wrong = looked_at(root, page) or typed(page, WITHOUT_MEDIA)
    print(wrong or "the page is in order")
    return 1 if wrong else 0


if sys.argv[1] == "--look":
    look(pathlib.Path(sys.argv[3]), sections_of(sys.argv[2]))
else:
    sys.exit(main(*sys.argv[1:]))
