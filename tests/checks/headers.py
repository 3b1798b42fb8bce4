"""Every header compiles alone, so that a reader may include it first, and any header without another.

usage: headers.py ROOT MEMORY COMPILER [FOLDER-OF-A-LIBRARY'S-HEADERS…]"""

import subprocess
import sys

from source_tree import SourceTree, check_each

root, memory, compiler, *folders = sys.argv[1:]
tree = SourceTree(root)


def command(header):
    return [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
            "-I", root, *(word for folder in folders for word in ("-isystem", folder)), "-include", header, "-x", "c++", "/dev/null"]


def clashes():
    """The library's headers in one source: no two define the same name."""
    source = "".join(f'#include "{header}"\n' for header in tree.files(suffixes=(".h",))
                     if str(header).startswith("tavrolin/"))
    result = subprocess.run([compiler, "-std=c++20", "-fsyntax-only", "-I", root, "-x", "c++", "-"],
                            input=source, text=True)
    return result.returncode


sys.exit(clashes() or check_each(tree, tree.files(suffixes=(".h",)), command, memory, "headers that compile alone"))
