"""The code and the output that docs/host-app.md shows are those of examples/host.

A block "```cpp NAME" is what stands between "// docs: NAME" and "// docs: end" in one of the example's
files, without its indentation, and every such region is shown. The blocks "```text output", one after
the other, are what the example prints.

usage: host_app_test.py ROOT PROGRAM"""

import difflib
import pathlib
import re
import subprocess
import sys
import textwrap

BLOCK = re.compile(r"^```(\S+) ?(.*)\n((?s:.*?))^```$", re.MULTILINE)
REGION = re.compile(r"^ *// docs: (?!end$)(.+)\n((?s:.*?))^ *// docs: end$", re.MULTILINE)
DOCUMENT = "docs/host-app.md"


def difference(shown, real, name):
    lines = difflib.unified_diff(shown.splitlines(), real.splitlines(), DOCUMENT, name, lineterm="", n=2)
    return "\n".join(lines)


def main(root, program):
    wrong = []
    regions = {}
    for file in sorted((pathlib.Path(root) / "examples/host").glob("*.[ch]*")):
        for name, text in REGION.findall(file.read_text(encoding="utf-8")):
            if name in regions:
                wrong.append(f"examples/host has two regions {name}")
            regions[name] = (file.name, textwrap.dedent(text))

    document = (pathlib.Path(root) / DOCUMENT).read_text(encoding="utf-8")
    shown, output = set(), ""
    for match in BLOCK.finditer(document):
        language, name, text = match.groups()
        where = f"{DOCUMENT}:{document.count(chr(10), 0, match.start()) + 1}"
        if (language, name) == ("text", "output"):
            output += text
        elif language == "cpp" and name not in regions:
            wrong.append(f"{where}: examples/host has no region {name or 'without a name'}")
        elif language == "cpp":
            file, real = regions[name]
            shown.add(name)
            if text != real:
                wrong.append(f"{where}: {name} is not what the example has\n{difference(text, real, file)}")
    for name in regions.keys() - shown:
        wrong.append(f"{DOCUMENT} does not show {name} of {regions[name][0]}")

    done = subprocess.run([program], capture_output=True, text=True, timeout=60)
    if done.returncode != 0:
        wrong.append(f"the example ended with {done.returncode}\n{done.stderr}")
    if done.stdout != output:
        wrong.append(f"the example prints something else\n{difference(output, done.stdout, 'printed')}")

    print("\n".join(wrong) or f"{DOCUMENT}: {len(shown)} pieces of code and the output are the example's")
    return 1 if wrong or not shown else 0


sys.exit(main(*sys.argv[1:]))
