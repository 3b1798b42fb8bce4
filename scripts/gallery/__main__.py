"""Draws what a push may look like, in every layout and state, into one page of pictures: the view
alone, the card that a phone shows, and the payload that was delivered.

usage: python3 scripts/gallery --program build/tavrolin --folder build/gallery [--scale 2]"""

import argparse
import pathlib
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
from drawing import Draughtsman, NotDrawn, media_server
from page import write_page
from states import SECTIONS, all_states


def parsed():
    parser = argparse.ArgumentParser(prog="gallery", description=__doc__.split("\n\n", 1)[0])
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--folder", required=True, type=pathlib.Path)
    parser.add_argument("--scale", default=2, type=int, help="pixels for a point")
    return parser.parse_args()


def main():
    arguments = parsed()
    begin = time.monotonic()
    try:
        with media_server() as port:
            artist = Draughtsman(arguments.program, arguments.folder, arguments.scale, port)
            drawn = artist.draw(all_states())
    except NotDrawn as failure:
        print(f"gallery: {failure}", file=sys.stderr)
        return 1
    seconds = time.monotonic() - begin
    count = 2 * len(drawn)
    page = write_page(arguments.folder, SECTIONS, drawn)
    print(f"{count} pictures in {seconds:.1f} s: {count / seconds:.0f} a second\n{page}")
    return 0


sys.exit(main())
