#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that what the documents show and name is there.

    check_documents.py [--root DIRECTORY] [--compile-commands FILE] [--write]

With --write it first renews the code blocks from the files that they are cut from.

A code block of a language in CUT must be the text of a file that the build or a test uses. The line before the
block says of which, or of which piece of it:

    <!-- snippet: docs/snippets/guide.cpp publish -->

A piece stands in its file between "// [publish]" and "// [/publish]" (behind "#" in CMake). Every piece of
docs/snippets/ is shown somewhere. An XML block names a file only and is some of its lines, one after the other.
An IDL block with such a line is checked likewise; one without may show what is no definition of ours.

Of shell blocks, every command must exist, and every command of ./dev. Links must lead somewhere, and paths of the
project and headers that stand in backticks must exist.
"""

import argparse
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import textwrap

CUT = {"cpp", "cmake", "xml"}
FREE = {"text", "idl"}
SHELL = "sh"

FENCE = re.compile(r"^(?P<indent> *)```(?P<language>[\w+-]*)\s*$")
MARK = re.compile(r"^ *<!-- snippet: (?P<file>\S+?)(?: (?P<piece>[\w-]+))? -->$")
PIECE = re.compile(r"^\s*(?://|#)\s*\[(?P<end>/?)(?P<name>[\w-]+)\]\s*$")
HEADING = re.compile(r"^#+ (?P<text>.+?)\s*$")
LINK = re.compile(r"\[[^\]]*\]\((?P<target>[^)\s]+)\)")
CODE = re.compile(r"`(?P<text>[^`\n]+)`")
FOLDERS = ("bench", "cmake", "docs", "examples", "generated", "include", "packaging", "platform", "profiles",
           "src", "tests", "tools")
PROJECT_PATH = re.compile(r"(?:%s)/[\w./*+-]*" % "|".join(FOLDERS))
HEADER = re.compile(r"(?:plex|vexstubif)/[\w./]*\.(?:hpp|inl)")
ASSIGNMENT = re.compile(r"\w+=")


class Block:
    """A fenced block of a document."""

    def __init__(self, line, language, mark):
        self.line = line
        self.language = language
        self.mark = mark
        self.lines = []

    @property
    def text(self):
        return stripped(self.lines)


def stripped(lines):
    """Lines without common indentation and without empty lines around them."""
    return textwrap.dedent("\n".join(line.rstrip() for line in lines)).strip("\n")


def blocks_of(text):
    """The fenced blocks of a document, and its lines outside of them with their numbers."""
    blocks, outside, block, previous = [], [], None, ""
    for number, line in enumerate(text.splitlines(), 1):
        fence = FENCE.match(line)
        if block is not None:
            if fence and not fence["language"]:
                block = None
            else:
                block.lines.append(line)
        elif fence:
            block = Block(number, fence["language"], MARK.match(previous))
            blocks.append(block)
        else:
            outside.append((number, line))
        previous = line
    return blocks, outside


def piece_of(source, name):
    """A piece of a source between its marks, or None; marks of other pieces inside are left out."""
    lines, inside, found = [], False, False
    for line in source.splitlines():
        mark = PIECE.match(line)
        if mark and mark["name"] == name:
            inside = not mark["end"]
            found = True
        elif inside and not mark:
            lines.append(line)
    return stripped(lines) if found and not inside else None


def whole(source):
    """A source without its licence line and its marks."""
    return stripped(line for line in source.splitlines() if "SPDX" not in line and not PIECE.match(line))


def commands_of(script):
    """The simple commands of a shell block, each as its words."""
    script = re.sub(r"\\\n", " ", script)
    for line in script.splitlines():
        lexer = shlex.shlex(line, posix=True, punctuation_chars=True)
        lexer.whitespace_split = True
        words = []
        for word in [*lexer, ";"]:
            if set(word) <= set("();<>|&"):
                if words and not set(word) <= set("<>"):
                    yield words
                    words = []
            else:
                words.append(word)


def command_word(words):
    """The position of a command's name behind assignments and sudo."""
    position = 0
    while position < len(words) and (ASSIGNMENT.match(words[position]) or words[position] == "sudo"):
        position += 1
    return position


def anchor(heading):
    """The anchor under which a heading can be linked to."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


class Checker:
    def __init__(self, root, compile_commands=None):
        self.root = pathlib.Path(root)
        self.compiled = self.read_compiled(compile_commands)
        self.shown = set()
        self.complaints = []

    def read_compiled(self, compile_commands):
        """The files that the build compiles, or None where that is not known."""
        if compile_commands is None:
            return None
        entries = json.loads(pathlib.Path(compile_commands).read_text(encoding="utf-8"))
        return {os.path.realpath(os.path.join(entry["directory"], entry["file"])) for entry in entries}

    def documents(self):
        return sorted([*self.root.glob("*.md"), *self.root.glob("docs/**/*.md")])

    def write(self):
        """Renews the blocks that are cut from files."""
        for document in self.documents():
            text = document.read_text(encoding="utf-8")
            lines = text.splitlines()
            for block in reversed(blocks_of(text)[0]):
                cut = self.cut(block) if block.mark and block.language != "xml" else None
                if cut:
                    indent = re.match(" *", lines[block.line - 1])[0]
                    lines[block.line:block.line + len(block.lines)] = [
                        (indent + line).rstrip() for line in cut.splitlines()]
            document.write_text("\n".join(lines) + "\n", encoding="utf-8")

    def cut(self, block):
        """The text that a block must have, or None where its mark names none."""
        file = self.root / block.mark["file"]
        source = file.read_text(encoding="utf-8") if file.is_file() else ""
        return piece_of(source, block.mark["piece"]) if block.mark["piece"] else whole(source) or None

    def check(self):
        for document in self.documents():
            blocks, outside = blocks_of(document.read_text(encoding="utf-8"))
            for block in blocks:
                self.check_block(document, block)
            self.check_text(document, outside)
        self.check_all_shown()
        return self.complaints

    def complain(self, document, line, text):
        self.complaints.append(f"{document.relative_to(self.root)}:{line}: {text}")

    def check_block(self, document, block):
        complaint = None
        if block.language in CUT or (block.language == "idl" and block.mark):
            complaint = self.check_cut(block)
        elif block.language == SHELL:
            complaint = self.check_shell(block)
        elif block.language not in FREE:
            complaint = f"a block in \"{block.language}\" is checked by nothing"
        if complaint:
            self.complain(document, block.line, complaint)

    def check_cut(self, block):
        if block.mark is None:
            return f"a block in {block.language} needs \"<!-- snippet: FILE [PIECE] -->\" on the line before it"
        name, piece = block.mark["file"], block.mark["piece"]
        if not (self.root / name).is_file():
            return f"{name} is not there"
        self.shown.add((name, piece))
        unused = self.check_used(block.language, name)
        if unused:
            return unused
        if block.language == "xml":
            return None if self.has_lines(name, block) else f"{name} has no such lines"
        text = self.cut(block)
        if text is None:
            return f"{name} has no piece {piece}"
        return None if text == block.text else f"differs from {name} {piece or ''}".rstrip()

    def has_lines(self, name, block):
        """Whether a file has the lines of a block one after the other, however they are indented."""
        lines = [line.strip() for line in (self.root / name).read_text(encoding="utf-8").splitlines()]
        wanted = [line.strip() for line in block.text.splitlines()]
        return any(lines[i:i + len(wanted)] == wanted for i in range(len(lines) - len(wanted) + 1))

    def check_used(self, language, name):
        """Why a file proves nothing, as no build and no test uses it."""
        if language == "cpp":
            compiled = self.compiled is None or os.path.realpath(self.root / name) in self.compiled
            return None if compiled else f"{name} is not compiled by this build"
        if language == "cmake":
            scripts = self.root.glob("tests/consumer/*.sh")
            used = any(os.path.dirname(name) in script.read_text(encoding="utf-8") for script in scripts)
            return None if used else f"{name} is built by no test: none of tests/consumer/*.sh names its folder"
        if language == "idl":
            builds = [*self.root.glob("examples/**/CMakeLists.txt"), *self.root.glob("tests/**/CMakeLists.txt")]
            used = any(os.path.basename(name) in build.read_text(encoding="utf-8") for build in builds)
            return None if used else f"{name} is part of no module: no CMakeLists.txt names it"
        return None if name.startswith("profiles/") else f"{name} is loaded by no test"

    def check_shell(self, block):
        syntax = subprocess.run(["bash", "-n"], input=block.text, text=True, capture_output=True, check=False)
        if syntax.returncode != 0:
            return syntax.stderr.strip()
        for words in commands_of(block.text):
            at = command_word(words)
            if at == len(words):
                continue
            complaint = self.check_command(words[at], words[at + 1:])
            if complaint:
                return complaint
        return None

    def check_command(self, command, arguments):
        for argument in arguments:
            if not self.is_there(argument):
                return f"{argument} is not there"
        if command == "./dev":
            return self.check_dev(arguments)
        if command.startswith("build/") or command in ("cd", "export", "ulimit"):
            return None
        if "/" in command:
            return None if os.access(self.root / command, os.X_OK) else f"{command} is no program"
        packages = self.root / "packaging/packages.txt"
        listed = packages.is_file() and command in packages.read_text(encoding="utf-8").splitlines()
        return None if listed or shutil.which(command) else f"command {command} is not there"

    def check_dev(self, arguments):
        if not arguments:
            return None
        usage = subprocess.run([self.root / "dev", "help"], text=True, capture_output=True, check=True).stdout
        if not re.search(rf"^  {re.escape(arguments[0])}\b", usage, re.MULTILINE):
            return f"./dev has no command {arguments[0]}"
        within = arguments[1:] if arguments[0] == "run" else []
        return self.check_command(within[0], within[1:]) if within else None

    def check_text(self, document, lines):
        for number, line in lines:
            for link in LINK.finditer(line):
                self.check_link(document, number, link["target"])
            if document.name == "CHANGELOG.md": # tells of what was
                continue
            for code in CODE.finditer(line):
                if not self.is_there(code["text"]):
                    self.complain(document, number, f"{code['text']} is not there")

    def is_there(self, text):
        """Whether a text names a file or folder of the project, or a header as it is included, or is no path."""
        if HEADER.fullmatch(text):
            return any(self.root.glob(f"include/{text}")) or any(self.root.glob(f"platform/*/include/{text}"))
        return not PROJECT_PATH.fullmatch(text) or any(self.root.glob(text.rstrip("/")))

    def check_link(self, document, number, target):
        if re.match(r"\w+:", target):
            return
        path, _, fragment = target.partition("#")
        file = document.parent / path if path else document
        if not file.exists():
            self.complain(document, number, f"the link to {target} leads nowhere")
        elif fragment and fragment not in self.anchors(file):
            self.complain(document, number, f"{target}: there is no such heading")

    @staticmethod
    def anchors(file):
        _, outside = blocks_of(file.read_text(encoding="utf-8"))
        headings = (HEADING.match(line) for _, line in outside)
        return {anchor(heading["text"]) for heading in headings if heading}

    def check_all_shown(self):
        for file in sorted(self.root.glob("docs/snippets/**/*")):
            if not file.is_file():
                continue
            name = str(file.relative_to(self.root))
            marks = (PIECE.match(line) for line in file.read_text(encoding="utf-8").splitlines())
            for piece in sorted({mark["name"] for mark in marks if mark}):
                if (name, piece) not in self.shown:
                    self.complaints.append(f"{name}: no document shows the piece {piece}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", default=pathlib.Path(__file__).resolve().parents[2])
    parser.add_argument("--compile-commands")
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    checker = Checker(arguments.root, arguments.compile_commands)
    if arguments.write:
        checker.write()
    complaints = checker.check()
    for complaint in complaints:
        print(complaint)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
