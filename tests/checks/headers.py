"""Every header compiles alone, so that a reader may include it first, and any header without another.

usage: headers.py ROOT MEMORY COMPILER"""

import sys

from source_tree import SourceTree, check_each

root, memory, compiler = sys.argv[1:]
tree = SourceTree(root)


def command(header):
    return [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
            "-I", root, "-include", header, "-x", "c++", "/dev/null"]


sys.exit(check_each(tree, tree.files(suffixes=(".h",)), command, memory, "headers that compile alone"))
