#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""check_rooms.py notices what the table does not allow."""

import pathlib
import tempfile
import unittest

import check_rooms

TABLE = """| folder | holds | may use |
|---|---|---|
| `include/a/` | the lower room | nothing |
| `include/b/` | the upper room | `include/a/` |
| `tests/` | tests | everything |
"""


class CheckRooms(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)

    def complaints(self, files):
        for name, text in files.items():
            path = self.root / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return check_rooms.complaints_of(self.root, TABLE)

    def test_the_way_down_is_allowed(self):
        self.assertEqual(self.complaints({"include/a/A.hpp": "#include <string>\n",
                                          "include/b/B.hpp": "#include <a/A.hpp>\n",
                                          "tests/b/BTest.cpp": "#include <b/B.hpp>\n"}), [])

    def test_the_way_up_is_not(self):
        self.assertEqual(self.complaints({"include/a/A.hpp": "#include <b/B.hpp>\n", "include/b/B.hpp": ""}),
                         ["include/a/A.hpp includes include/b/B.hpp, but include/a/ may not use include/b/"])

    def test_internal_is_for_its_own_room(self):
        self.assertEqual(self.complaints({"include/a/internal/A.hpp": "", "include/a/Own.hpp": "#include <a/internal/A.hpp>\n",
                                          "include/b/B.hpp": "#include <a/internal/A.hpp>\n"}),
                         ["include/b/B.hpp includes include/a/internal/A.hpp, which is internal to include/a/"])

    def test_a_file_belongs_somewhere(self):
        self.assertEqual(self.complaints({"include/c/C.hpp": ""}), ["include/c/C.hpp is in no room"])


if __name__ == "__main__":
    unittest.main()
