"""Draws states with the program itself, each on a device of its own."""

import concurrent.futures
import contextlib
import dataclasses
import itertools
import json
import os
import pathlib
import shlex
import shutil
import struct
import subprocess
import tempfile
import threading

from serve_pictures import server_of

# What the payloads of examples/ name, and so what is taken unless somebody else has it.
PORT = 8099
PATIENCE = 60  # seconds, for one command
IDENTIFIER = "push"
MEMORY = "/dev/shm"
ROOT = pathlib.Path(__file__).resolve().parents[2]
PAYLOADS = ROOT / "examples/payloads"
MEDIA = ROOT / "examples/media"


class NotDrawn(Exception):
    """A command of the program failed; the text says which, and what it said."""


@dataclasses.dataclass(frozen=True)
class Picture:
    file: pathlib.Path
    width: float  # in points
    height: float


@dataclasses.dataclass(frozen=True)
class Drawn:
    state: object
    layout: str
    view: Picture
    card: Picture
    payload: pathlib.Path  # as it was delivered
    commands: tuple  # that draw it again, as they are typed


def payload_of(state):
    """The state's payload: that of the example, with the state's changes."""
    payload = json.loads((PAYLOADS / f"{state.payload}.json").read_text(encoding="utf-8"))
    for path, change in state.changes.items():
        *parents, last = path.split(".")
        at = payload
        for key in parents:
            at = at[key]
        value = change(at.get(last)) if callable(change) else change
        if value is None:
            at.pop(last, None)
        else:
            at[last] = value
    return payload


def size_of(png):
    """Width and height of a PNG file in pixels."""
    with open(png, "rb") as file:
        return struct.unpack(">II", file.read(24)[16:])


@contextlib.contextmanager
def media_server():
    """Serves the media of the examples meanwhile; gives the port."""
    server = server_of(MEDIA, PORT)
    thread = threading.Thread(target=server.serve_forever)
    thread.start()
    try:
        yield server.server_port
    finally:
        server.shutdown()
        thread.join()
        server.server_close()


def expansion(state):
    """The arguments of `expand` that bring the state about, as groups that belong together."""
    yield ["expand", IDENTIFIER]
    if state.width != 375:
        yield ["--width", str(state.width)]
    if state.dark:
        yield ["--dark"]
    for step in state.steps:
        yield ["--do", step]


def typed(program, now, *groups):
    """A command as it is typed in the folder of the gallery's page."""
    lines = [f'{shlex.quote(program)} --device "$device" --time jump', f"--now {now}",
             *map(shlex.join, groups)]
    return " \\\n    ".join(lines)


class Draughtsman:
    """Draws into the folders `views`, `cards` and `payloads` of a folder, which it makes anew."""

    def __init__(self, program, folder, scale, port):
        self.program = str(program)
        self.folder = pathlib.Path(folder)
        self.scale = scale
        self.port = port
        # A device makes sure of what it stores, and these live for a moment: memory is enough.
        self.devices = MEMORY if os.access(MEMORY, os.W_OK) else None

    def draw(self, states):
        """The states drawn, in their order. Raises NotDrawn."""
        for name in ("views", "cards", "payloads"):
            shutil.rmtree(self.folder / name, ignore_errors=True)
            (self.folder / name).mkdir(parents=True)
        workers = len(os.sched_getaffinity(0))
        with concurrent.futures.ThreadPoolExecutor(workers) as pool:
            return list(pool.map(self.draw_state, states))

    def draw_state(self, state):
        payload = self.folder / "payloads" / f"{state.name}.json"
        payload.write_text(self.text_of(state), encoding="utf-8")
        view = self.folder / "views" / f"{state.name}.png"
        card = self.folder / "cards" / f"{state.name}.png"
        groups = list(expansion(state))
        with tempfile.TemporaryDirectory(prefix="tavrolin-gallery-", dir=self.devices) as device:
            delivery = self.run(device, state.delivered,
                                ["deliver", str(payload), "--id", IDENTIFIER])
            if delivery["outcome"] != "completed":
                raise NotDrawn(f"the push of {payload} {delivery['outcome']}")
            shown = self.run(device, state.at, [
                *itertools.chain(*groups),
                "--scale", str(self.scale), "--png", str(view), "--card-png", str(card)])
        program = os.path.relpath(self.program, self.folder)
        commands = (
            "device=$(mktemp -d)",  # a clock never goes back, so each time a new one
            typed(program, state.delivered,
                  ["deliver", f"payloads/{payload.name}", "--id", IDENTIFIER]),
            typed(program, state.at, *groups, ["--png", "view.png", "--card-png", "card.png"]))
        return Drawn(state, shown["layout"], self.picture(view), self.picture(card), payload,
                     commands)

    def text_of(self, state):
        text = json.dumps(payload_of(state), indent=2, ensure_ascii=False) + "\n"
        return text.replace(f"127.0.0.1:{PORT}/", f"127.0.0.1:{self.port}/")

    def picture(self, file):
        return Picture(file, *(pixels / self.scale for pixels in size_of(file)))

    def run(self, device, now, arguments):
        command = [self.program, "--device", device, "--time", "jump", "--now", now, "--log", "9",
                   "--json", *arguments]
        try:
            done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                  timeout=PATIENCE, check=False)
        except subprocess.TimeoutExpired as late:
            raise NotDrawn(f"{shlex.join(command)}\nwas not done after {PATIENCE} seconds") from late
        if done.returncode != 0:
            raise NotDrawn(f"{shlex.join(command)}\nended with {done.returncode}: "
                           f"{done.stderr.strip() or done.stdout.strip()}")
        return json.loads(done.stdout)
