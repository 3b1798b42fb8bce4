"""What the documentation shows, works: runs the examples of one document, in order, as a reader would.

A fenced block that begins "```sh run" is run by bash, which stops at the first command that fails, in a
fresh folder in which build/ and examples/ are those of the tree, with a device of its own. A block
"```text output" after it is what it prints; "…" in a line stands for anything.

usage: examples_test.py ROOT BUILD DOCUMENT"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^```(sh run|text output)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def matches(expected, printed):
    pattern = r"[^\n]*".join(re.escape(part) for part in expected.strip().split("…"))
    return re.fullmatch(pattern, printed.strip()) is not None


def main(root, build, document):
    text = (pathlib.Path(root) / document).read_text(encoding="utf-8")
    failed = ran = 0
    printed = None
    with tempfile.TemporaryDirectory() as folder:
        os.symlink(build, f"{folder}/build")
        os.symlink(f"{root}/examples", f"{folder}/examples")
        environment = {**os.environ, "TAVROLIN_DEVICE": f"{folder}/device", "HOME": folder, "NO_COLOR": "1"}
        for block in BLOCK.finditer(text):
            where = f"{document}:{text.count(chr(10), 0, block.start()) + 1}"
            if block[1] == "sh run":
                done = subprocess.run(["bash", "-euo", "pipefail", "-c", block[2]], cwd=folder, env=environment,
                                      stdin=subprocess.DEVNULL, capture_output=True, text=True)
                ran += 1
                printed = done.stdout
                if done.returncode != 0:
                    failed += 1
                    print(f"{where}: ended with {done.returncode}\n{block[2]}{done.stdout}{done.stderr}")
            elif printed is None or not matches(block[2], printed):
                failed += 1
                print(f"{where}: shows\n{block[2]}but this is printed:\n{printed}")
    print(f"{document}: {ran} examples, {failed} wrong")
    return 1 if failed else 0


sys.exit(main(*sys.argv[1:]))
