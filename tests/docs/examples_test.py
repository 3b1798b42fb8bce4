"""What the documentation shows, works: runs the examples of one document, in order, as a reader would.

A fenced block that begins "```sh run" is run by bash, which stops at the first command that fails, in a
fresh folder in which build/ and examples/ are those of the tree, with a device of its own, and with the
pictures of the examples being served. A block "```text output" after it is what it prints; "…" in a line
stands for anything.

usage: examples_test.py ROOT BUILD DOCUMENT"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^```(sh run|text output)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def matches(expected, printed):
    pattern = r"[^\n]*".join(re.escape(part) for part in expected.strip().split("…"))
    return re.fullmatch(pattern, printed.strip()) is not None


def copy_examples(root, folder, port):
    """The payloads name the port that their pictures are served from; here it may be another one."""
    shutil.copytree(f"{root}/examples", f"{folder}/examples")
    for payload in pathlib.Path(folder, "examples", "payloads").iterdir():
        text = payload.read_text(encoding="utf-8")
        payload.write_text(text.replace("127.0.0.1:8099", f"127.0.0.1:{port}"), encoding="utf-8")


def main(root, build, document):
    server = subprocess.Popen([sys.executable, f"{root}/scripts/serve_pictures.py", f"{root}/examples/media", "8099"],
                              stdout=subprocess.PIPE, text=True)
    try:
        return run(root, build, document, port=server.stdout.readline().strip())
    finally:
        server.kill()
        server.wait()


def run(root, build, document, port):
    text = (pathlib.Path(root) / document).read_text(encoding="utf-8")
    failed = ran = 0
    printed = None
    with tempfile.TemporaryDirectory() as folder:
        os.symlink(build, f"{folder}/build")
        copy_examples(root, folder, port)
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
