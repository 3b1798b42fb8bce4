"""The golden pictures: some of the gallery's states, which must be drawn as they were, byte for byte.

Of a picture that changed it leaves the new one and the difference, in which what is the same is black.
With --accept the new pictures become the golden ones; those that did not change are not touched.

usage: golden_test.py ROOT PROGRAM FOLDER [--accept]"""

import pathlib
import shutil
import sys

# A picture is for comparing here, not for looking at: small is enough, and keeps the tree small.
SCALE = 1


def draw(root, program, folder):
    """The new pictures: {name: file}."""
    sys.path[:0] = [f"{root}/scripts/gallery", f"{root}/scripts"]
    from drawing import Draughtsman, media_server
    from states import all_states
    states = [state for state in all_states() if state.golden]
    with media_server() as port:
        drawn = Draughtsman(program, folder, SCALE, port).draw(states)
    return {each.state.name: getattr(each, each.state.golden).file for each in drawn}


def write_difference(old, new, file):
    from PIL import Image, ImageChops  # Debian's, and so not in every Python
    pictures = [Image.open(each).convert("RGB") for each in (old, new)]
    size = [max(each.size[axis] for each in pictures) for axis in (0, 1)]
    canvases = []
    for each in pictures:
        canvases.append(Image.new("RGB", size))
        canvases[-1].paste(each)
    # So that the least difference can be seen.
    ImageChops.difference(*canvases).point(lambda value: min(255, value * 8)).save(file)


def compare(golden, drawn, folder):
    """What is wrong, a line each; leaves pictures that show it."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, file in drawn.items():
        old = golden / f"{name}.png"
        if old.exists() and old.read_bytes() == file.read_bytes():
            continue
        new = folder / f"{name}.new.png"
        shutil.copyfile(file, new)
        if not old.exists():
            yield f"{name} is new: {new}"
            continue
        difference = folder / f"{name}.difference.png"
        write_difference(old, new, difference)
        yield f"{name} changed: {new}\n    was {old}\n    differs by {difference}"
    for old in sorted(golden.glob("*.png")):
        if old.stem not in drawn:
            yield f"{old} is of no state of the gallery"


def accept(golden, drawn):
    """Says what it changed, a line each."""
    golden.mkdir(exist_ok=True)
    for name, file in drawn.items():
        old = golden / f"{name}.png"
        if not old.exists() or old.read_bytes() != file.read_bytes():
            shutil.copyfile(file, old)
            yield f"accepted {old}"
    for old in sorted(golden.glob("*.png")):
        if old.stem not in drawn:
            old.unlink()
            yield f"removed {old}"


def main(root, program, folder, *options):
    golden = pathlib.Path(root) / "tests/gallery/golden"
    drawn = draw(root, program, pathlib.Path(folder) / "drawn")
    if options == ("--accept",):
        print("\n".join(accept(golden, drawn)) or "nothing changed")
        return 0
    wrong = list(compare(golden, drawn, pathlib.Path(folder) / "differences"))
    for line in wrong:
        print(line)
    print(f"{len(drawn)} pictures, {len(wrong)} wrong"
          + ("; `make accept-pictures` takes the new ones, if they are as they should be" if wrong
             else ""))
    return 1 if wrong else 0


sys.exit(main(*sys.argv[1:]))
