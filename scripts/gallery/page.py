"""The gallery's page: one HTML file, with the pictures and the payloads in folders beside it."""

import html
import math
import pathlib
import shutil
import urllib.parse

STYLE = pathlib.Path(__file__).with_name("style.css")

PAGE = """<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<link rel="icon" href="data:,">
<link rel="stylesheet" href="style.css">
<title>Gallery of notifications</title>
</head>
<body>
<header id="top">
<h1>Gallery of notifications</h1>
<p>{count} pushes, each delivered to a device of its own and expanded there: the view that the library draws, and the
card around it as a phone shows it. Their pictures were served from <code>examples/media</code>; to draw one again,
serve them with <code>python3 scripts/serve_pictures.py examples/media 8099</code> in the project's folder, and type the
commands beside it in this page's.</p>
</header>
<nav aria-label="Layouts">{links}</nav>
<main>
{sections}
</main>
</body>
</html>
"""

SECTION = """<section id="{anchor}">
<h2>{title}</h2>
<p>{about}</p>
{states}
</section>"""

STATE = """<article id="{name}">
<h3><a href="#{name}">{title}</a></h3>
<div class="pictures">{view}{card}</div>
<div class="facts">
<dl>{facts}</dl>
<pre class="commands" tabindex="0" aria-label="Commands that draw it">{commands}</pre>
<p><a href="{file}">{file}</a></p>
<pre class="payload" tabindex="0" aria-label="Payload">{payload}</pre>
</div>
</article>"""

PICTURE = """<figure class="{kind}"><img src="{file}" width="{width:.0f}" height="{height}" loading="lazy" \
alt="{alt}"><figcaption>{caption}</figcaption></figure>"""


def link(folder, file):
    return urllib.parse.quote(str(file.relative_to(folder)))


def picture(folder, kind, caption, drawn):
    shown = drawn.view if kind == "view" else drawn.card
    return PICTURE.format(kind=kind, file=link(folder, shown.file), width=shown.width,
                          height=math.ceil(shown.height), caption=caption,
                          alt=html.escape(f"{drawn.state.title}: {caption.lower()}"))


def facts(drawn):
    state = drawn.state
    seen = [("Class", drawn.layout), ("Example", f"{state.payload}.json"),
            ("Width", f"{state.width} points"), ("Appearance", "dark" if state.dark else "light"),
            ("Expanded", state.at.replace("T", " "))]
    if state.steps:
        seen.append(("Steps", ", ".join(state.steps)))
    return "".join(f"<div><dt>{name}</dt><dd>{html.escape(text)}</dd></div>" for name, text in seen)


def view_caption(drawn):
    return "The view" if drawn.view.height > 1 else "The view is empty"


def article(folder, drawn):
    return STATE.format(
        name=f"state-{drawn.state.name}", title=html.escape(drawn.state.title),
        view=picture(folder, "view", view_caption(drawn), drawn),
        card=picture(folder, "card", "On a phone", drawn),
        facts=facts(drawn), commands=html.escape("\n".join(drawn.commands)),
        file=link(folder, drawn.payload),
        payload=html.escape(drawn.payload.read_text(encoding="utf-8")))


def write_page(folder, sections, drawn):
    """Gives the page's file."""
    by_name = {each.state.name: each for each in drawn}
    shutil.copyfile(STYLE, folder / STYLE.name)
    page = folder / "index.html"
    page.write_text(PAGE.format(
        count=len(drawn),
        links="".join(f'<a href="#{each.anchor}">{html.escape(each.title.partition(":")[0])}</a>'
                      for each in sections),
        sections="\n".join(SECTION.format(
            anchor=each.anchor, title=html.escape(each.title), about=html.escape(each.about),
            states="\n".join(article(folder, by_name[state.name]) for state in each.states))
            for each in sections)), encoding="utf-8")
    return page
