"""The keeper of the walls sees a breach of each, and lets what is allowed pass."""

import pathlib
import tempfile
import unittest

import walls

ALLOWED = {
    "tavrolin/foundation/value.h": "#include <vector>\n",
    "tavrolin/platform/files.h": '#include "tavrolin/foundation/value.h"\n',
    "tavrolin/core/logger.h": '#include "tavrolin/platform/files.h"\n',
    "tavrolin/core/logger.cpp": '#include "tavrolin/core/logger.h"\n',
    "tavrolin/events/date_utility.h": "",
    "tavrolin/payload/parser.h": '#include "tavrolin/events/date_utility.h"\n',
    "adapters/memory/memory.h": '#include "tavrolin/platform/files.h"\n#include <sqlite3.h>\n',
    "device/device.h": '#include "adapters/memory/memory.h"\n#include "tavrolin/core/logger.h"\n',
    "apps/main.cpp": '#include "device/device.h"\n',
}
BREACHES = [
    ("tavrolin/foundation/a.h", "#include <sqlite3.h>\n", "standard library"),
    ("tavrolin/foundation/a.h", "#include <sys/stat.h>\n", "standard library"),
    ("tavrolin/platform/a.h", '  #  include "tavrolin/core/logger.h"\n', "no arrow"),
    ("tavrolin/core/a.h", '#include "adapters/memory/memory.h"\n', "its own headers"),
    ("tavrolin/payload/a.h", '#include "tavrolin/events/recorder.h"\n', "no arrow"),
    ("tavrolin/newroom/a.h", '#include "tavrolin/core/logger.h"\n', "no arrow"),
    ("adapters/memory/a.cpp", '#include "tavrolin/core/logger.h"\n', "an adapter includes"),
    ("adapters/other/a.cpp", '#include "adapters/memory/memory.h"\n', "an adapter includes"),
    ("device/a.h", '#include "apps/main.cpp"\n', "knows no app"),
    ("tavrolin/foundation/value.cpp", '#include "value.h"\n', "its own headers"),
    ("tavrolin/foundation/value.cpp", '#include "tavrolin/foundation/gone.h"\n', "there is no such file"),
]


def problems_of(files):
    with tempfile.TemporaryDirectory() as root:
        for name, text in files.items():
            path = pathlib.Path(root, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        return walls.problems(root)


class WallsTest(unittest.TestCase):
    def test_lets_pass_what_is_allowed(self):
        self.assertEqual(problems_of(ALLOWED), [])

    def test_sees_a_breach_of_each_wall(self):
        for name, text, complaint in BREACHES:
            with self.subTest(name=name, text=text):
                found = problems_of({**ALLOWED, name: text})
                self.assertEqual(len(found), 1, found)
                self.assertIn(complaint, found[0])

    def test_sees_a_circle_that_runs_through_a_source_file(self):
        found = problems_of({
            "tavrolin/core/a.h": "",
            "tavrolin/core/a.cpp": '#include "tavrolin/core/a.h"\n#include "tavrolin/core/b.h"\n',
            "tavrolin/core/b.h": '#include "tavrolin/core/a.h"\n',
        })
        self.assertEqual(found, ["units that reach themselves: tavrolin/core/a -> tavrolin/core/b -> tavrolin/core/a"])


if __name__ == "__main__":
    unittest.main()
