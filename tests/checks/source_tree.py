"""What the checks of the source share: which files there are, what they include, and a memory of what
was found in order before, so that a second run looks only at what changed."""

import concurrent.futures
import hashlib
import os
import pathlib
import re
import subprocess
import sys

OWN_FOLDERS = ("tavrolin", "adapters", "device", "apps")
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(?:"([^"]+)"|<([^>]+)>)', re.MULTILINE)


class SourceTree:
    def __init__(self, root):
        self.root = pathlib.Path(root)
        self._includes = {}
        self._digests = {}

    def files(self, folders=OWN_FOLDERS, suffixes=(".h", ".cpp")):
        """Paths below the root, as text, in order."""
        found = []
        for folder in folders:
            for path in (self.root / folder).rglob("*"):
                if path.suffix in suffixes:
                    found.append(path.relative_to(self.root).as_posix())
        return sorted(found)

    def includes(self, file):
        """[(text, quoted, line)] of the includes in a file."""
        if file not in self._includes:
            text = (self.root / file).read_text(encoding="utf-8")
            self._includes[file] = [
                (match[1] or match[2], match[1] is not None, text.count("\n", 0, match.start()) + 1)
                for match in INCLUDE.finditer(text)
            ]
        return self._includes[file]

    def own_includes(self, file):
        """The files of this tree that a file includes itself, by the way it includes them: from the root."""
        return [text for text, quoted, _ in self.includes(file) if (self.root / text).is_file()]

    def closure(self, file):
        """The file and all of this tree's files that reach it through includes."""
        seen, todo = set(), [file]
        while todo:
            here = todo.pop()
            if here not in seen:
                seen.add(here)
                todo.extend(self.own_includes(here))
        return sorted(seen)

    def digest(self, file):
        if file not in self._digests:
            self._digests[file] = hashlib.sha256((self.root / file).read_bytes()).hexdigest()
        return self._digests[file]


def check_each(tree, files, command_for, memory, what):
    """Runs command_for(file) for each file, two at a time, and prints what fails. A file whose bytes,
    includes and command are as they were when it last passed is passed by; the folder `memory` holds one
    empty file for each such state. Returns the exit status."""
    memory = pathlib.Path(memory)
    memory.mkdir(parents=True, exist_ok=True)

    def check(file):
        command = command_for(file)
        state = hashlib.sha256("\0".join(command).encode())
        for included in tree.closure(file):
            state.update(f"\0{included}\0{tree.digest(included)}".encode())
        mark = memory / state.hexdigest()
        if mark.exists():
            mark.touch()
            return None
        done = subprocess.run(command, cwd=tree.root, capture_output=True, text=True)
        if done.returncode == 0:
            mark.touch()
            return None
        return done.stdout + ("" if done.stdout.strip() else done.stderr)

    failed = 0
    with concurrent.futures.ThreadPoolExecutor(max_workers=min(2, os.cpu_count() or 1)) as workers:
        for file, complaint in zip(files, workers.map(check, files)):
            if complaint is not None:
                failed += 1
                print(f"{file}: not in order\n{complaint}", flush=True)
    marks = sorted(memory.iterdir(), key=lambda mark: mark.stat().st_mtime)
    for old in marks[: max(0, len(marks) - 4 * len(files))]:
        old.unlink()
    print(f"{what}: {len(files)} files, {failed} not in order")
    return 1 if failed else 0


def tool_version(tool):
    return subprocess.run([tool, "--version"], capture_output=True, text=True, check=True).stdout


def complain(problems, what):
    for problem in problems:
        print(problem, file=sys.stderr)
    print(f"{what}: {len(problems)} problems")
    return 1 if problems else 0
