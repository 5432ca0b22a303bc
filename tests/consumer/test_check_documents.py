#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The checker of the documents notices what is wrong, in a small tree of its own."""

import json
import pathlib
import tempfile
import unittest

from check_documents import Checker

SOURCE = """// SPDX-License-Identifier: Apache-2.0
int main()
{
    // [add]
    const int sum = 1 + 1;

    return sum;
    // [/add]
}
"""

PIECE = """const int sum = 1 + 1;

return sum;
"""

DEV = """#!/bin/sh
echo '  test [ARG]  tests'
"""


class CheckDocumentsTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        self.write("docs/snippets/add.cpp", SOURCE)
        self.write("tests/consumer/installed-tree.sh", "cmake docs/snippets/project\n")
        self.write("profiles/plex.xml", "<a>\n  <b>\n    <c/>\n  </b>\n</a>\n")
        self.write("dev", DEV)
        (self.root / "dev").chmod(0o755)
        self.compile("docs/snippets/add.cpp")
        self.show(PIECE)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def compile(self, *files):
        entries = [{"directory": str(self.root), "file": file} for file in files]
        self.write("compile_commands.json", json.dumps(entries))

    def show(self, text, mark="docs/snippets/add.cpp add", language="cpp", more=""):
        comment = f"<!-- snippet: {mark} -->\n" if mark else ""
        self.write("README.md", f"# A title\n\n{comment}```{language}\n{text}```\n{more}")

    def checker(self):
        return Checker(self.root, self.root / "compile_commands.json")

    def expect(self, *complaints):
        self.assertEqual(self.checker().check(), list(complaints))

    def expect_shell(self, script, *complaints):
        block = f"\n```sh\n{script}\n```\n"
        self.show(PIECE, more=block)
        self.expect(*(f"README.md:10: {complaint}" for complaint in complaints))

    def test_takes_what_is_right(self):
        self.expect()

    def test_wants_every_block_of_code_cut_from_a_file(self):
        self.write("docs/guide.md", "```cpp\nint i;\n```\n")
        self.expect("docs/guide.md:1: a block in cpp needs \"<!-- snippet: FILE [PIECE] -->\" on the line before it")

    def test_knows_no_other_language(self):
        self.write("docs/guide.md", "```c++\nint i;\n```\n\n```\nint i;\n```\n")
        self.expect("docs/guide.md:1: a block in \"c++\" is checked by nothing",
                    "docs/guide.md:5: a block in \"\" is checked by nothing")

    def test_notices_a_difference(self):
        self.show(PIECE.replace("1 + 1", "1 + 2"))
        self.expect("README.md:4: differs from docs/snippets/add.cpp add")

    def test_notices_that_nothing_compiles_it(self):
        self.compile("other.cpp")
        self.expect("README.md:4: docs/snippets/add.cpp is not compiled by this build")

    def test_notices_a_source_that_is_not_there(self):
        self.show(PIECE, mark="docs/snippets/gone.cpp add")
        self.expect("README.md:4: docs/snippets/gone.cpp is not there",
                    "docs/snippets/add.cpp: no document shows the piece add")

    def test_notices_a_piece_that_is_not_there(self):
        self.show(PIECE, mark="docs/snippets/add.cpp gone")
        self.expect("README.md:4: docs/snippets/add.cpp has no piece gone",
                    "docs/snippets/add.cpp: no document shows the piece add")

    def test_notices_a_piece_without_an_end(self):
        self.write("docs/snippets/add.cpp", SOURCE.replace("// [/add]", ""))
        self.expect("README.md:4: docs/snippets/add.cpp has no piece add")

    def test_takes_a_whole_file_without_its_licence_line_and_marks(self):
        text = "".join(line for line in SOURCE.splitlines(True) if "SPDX" not in line and "[" not in line)
        self.write("docs/guide.md", f"<!-- snippet: docs/snippets/add.cpp -->\n```cpp\n{text}```\n")
        self.expect()

    def test_takes_pieces_in_lists(self):
        indented = "".join(f"   {line}".rstrip() + "\n" for line in PIECE.splitlines())
        self.write("README.md", "1. First:\n\n   <!-- snippet: docs/snippets/add.cpp add -->\n"
                   f"   ```cpp\n{indented}   ```\n")
        self.expect()

    def test_notices_a_project_that_no_test_builds(self):
        self.write("docs/snippets/project/CMakeLists.txt", "project(one)\n")
        self.write("docs/snippets/other/CMakeLists.txt", "project(two)\n")
        self.write("docs/guide.md", "<!-- snippet: docs/snippets/project/CMakeLists.txt -->\n```cmake\nproject(one)\n"
                   "```\n\n<!-- snippet: docs/snippets/other/CMakeLists.txt -->\n```cmake\nproject(two)\n```\n")
        self.expect("docs/guide.md:7: docs/snippets/other/CMakeLists.txt is built by no test: none of "
                    "tests/consumer/*.sh names its folder")

    def test_notices_definitions_that_are_shown_otherwise_or_made_into_no_module(self):
        self.write("docs/snippets/one.idl", "// [one]\nmodule one { };\n// [/one]\n")
        self.show("module one { };\n", "docs/snippets/one.idl one", "idl", f"\n<!-- snippet: docs/snippets/add.cpp add -->\n"
                  f"```cpp\n{PIECE}```\n")
        self.expect("README.md:4: docs/snippets/one.idl is part of no module: no CMakeLists.txt names it")
        self.write("tests/one/CMakeLists.txt", "plex_add_module(one IDL docs/snippets/one.idl)\n")
        self.expect()
        self.write("docs/snippets/one.idl", "// [one]\nmodule two { };\n// [/one]\n")
        self.expect("README.md:4: differs from docs/snippets/one.idl one")

    def test_takes_neighbouring_lines_of_xml(self):
        self.write("docs/a.md", "<!-- snippet: profiles/plex.xml -->\n```xml\n<b>\n  <c/>\n</b>\n```\n")
        self.expect()
        self.write("docs/a.md", "<!-- snippet: profiles/plex.xml -->\n```xml\n<b>\n</b>\n```\n")
        self.expect("docs/a.md:2: profiles/plex.xml has no such lines")

    def test_takes_commands_that_are_there(self):
        self.expect_shell("cd docs && NAME=value ls \\\n  docs | sort >build/list  # a comment\n./dev test ls")

    def test_notices_a_command_that_is_not_there(self):
        self.expect_shell("ls | no-such-command", "command no-such-command is not there")

    def test_takes_commands_of_packages_that_the_project_uses(self):
        self.write("packaging/packages.txt", "# Tools\nno-such-command\n")
        self.expect_shell("no-such-command")

    def test_notices_a_command_that_dev_does_not_have(self):
        self.expect_shell("./dev tset", "./dev has no command tset")

    def test_notices_a_path_that_is_not_there(self):
        self.expect_shell("cat docs/gone.md", "docs/gone.md is not there")

    def test_notices_broken_shell(self):
        self.show(PIECE, more="\n```sh\nls &&\n```\n")
        self.assertIn("syntax error", "".join(self.checker().check()))

    def test_notices_links_that_lead_nowhere(self):
        self.show(PIECE, more="[a](gone.md) [b](#no-such) [c](#a-title) [d](https://example.org) [e](dev)\n")
        self.expect("README.md:9: the link to gone.md leads nowhere", "README.md:9: #no-such: there is no such heading")

    def test_notices_paths_in_backticks_that_are_not_there(self):
        self.show(PIECE, more="`docs/gone.hpp`, `docs/snippets/`, `docs/snippets/*.cpp`, `docs/*.hpp`\n")
        self.expect("README.md:9: docs/gone.hpp is not there", "README.md:9: docs/*.hpp is not there")

    def test_notices_headers_in_backticks_that_are_not_there(self):
        self.write("include/plex/Here.hpp", "")
        self.write("platform/part/include/plex/There.hpp", "")
        self.show(PIECE, more="`plex/Here.hpp`, `plex/There.hpp`, `plex/Gone.hpp`\n")
        self.expect("README.md:9: plex/Gone.hpp is not there")

    def test_writes_what_differs(self):
        self.show("old\n")
        self.checker().write()
        self.expect()


if __name__ == "__main__":
    unittest.main()
