"""clang-tidy finds nothing in the program's own source.

usage: tidy.py ROOT BUILD MEMORY CLANG_TIDY"""

import hashlib
import json
import pathlib
import sys

from source_tree import OWN_FOLDERS, SourceTree, check_each, tool_version

root, build, memory, clang_tidy = sys.argv[1:]
tree = SourceTree(root)
compiled = {entry["file"]: entry["command"] for entry in json.loads((pathlib.Path(build) / "compile_commands.json").read_text())}
setting = hashlib.sha256(((tree.root / ".clang-tidy").read_text() + tool_version(clang_tidy)).encode()).hexdigest()


def command(file):
    # The state of a file depends on the settings and on how it is compiled as well: both stand in the
    # command, as an argument that changes nothing.
    how = hashlib.sha256((setting + compiled[f"{root}/{file}"]).encode()).hexdigest()
    return [clang_tidy, "-p", build, "--quiet", "--warnings-as-errors=*", "--extra-arg=-w", f"--extra-arg=-DTIDY_{how}",
            f"--header-filter=^{root}/({'|'.join(OWN_FOLDERS)})/", file]


files = [file for file in tree.files(suffixes=(".cpp",)) if f"{root}/{file}" in compiled]
sys.exit(check_each(tree, files, command, memory, "clang-tidy"))
