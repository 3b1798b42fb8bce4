"""Where the documents link to a place in the tree, it is there: files, pictures and headings.

usage: links_test.py ROOT"""

import pathlib
import re
import sys
import urllib.parse

LINK = re.compile(r"\]\((?!https?:)([^)\s]+)\)")
HEADING = re.compile(r"^#+ +(.*)$", re.MULTILINE)
BLOCK = re.compile(r"^```.*?^```$", re.MULTILINE | re.DOTALL)


def anchors_in(document):
    headings = HEADING.findall(BLOCK.sub("", document.read_text(encoding="utf-8")))
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def leads_somewhere(document, target):
    path, _, anchor = urllib.parse.unquote(target).partition("#")
    place = document.parent / path if path else document
    return place.exists() and (not anchor or anchor in anchors_in(place))


def main(root):
    documents = [path for folder in (".", "docs", "examples/host")
                 for path in sorted((pathlib.Path(root) / folder).glob("*.md"))]
    links = [(document, target) for document in documents
             for target in LINK.findall(BLOCK.sub("", document.read_text(encoding="utf-8")))]
    wrong = [(document, target) for document, target in links
             if not leads_somewhere(document, target)]
    for document, target in wrong:
        print(f"{document}: {target} is not there")
    print(f"{len(links)} links, {len(wrong)} wrong")
    return 1 if wrong or not links else 0


sys.exit(main(*sys.argv[1:]))
