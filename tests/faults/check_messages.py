#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Keeps messages.json true: what the system says, word for word, and the test that makes it say so.

Every string literal of the sources is either a message (or a piece of one), with what it comes with and the tests
that provoke it, or something else, with the reason why it is none. A text that stands in two files has two entries.
"""

import argparse
import json
import pathlib
import re
import sys

SOURCE_FOLDERS = ("include/plex", "src", "generated", "platform")
SOURCE_SUFFIXES = (".hpp", ".inl", ".cpp", ".h")
OUTCOMES = (None, "process ends", "PlexException", "IllegalStateException", "std::runtime_error", "std::system_error",
            "eprosima::fastcdr::exception::BadParamException",
            "eprosima::fastcdr::exception::NotEnoughMemoryException")
LEVELS = (None, "TRACE", "DEBUG", "WARN", "ERROR")

TOKEN = re.compile(r"""
    (?P<comment>  //[^\n]* | /\*.*?\*/ )
  | (?P<include>  ^[ \t]*\#[ \t]*include[^\n]* )
  | (?P<raw>      (?:u8|[uUL])?R"(?P<fence>[^()\\\s]{0,16})\((?P<body>.*?)\)(?P=fence)" )
  | (?P<string>   (?:u8|[uUL])?"(?P<text>(?:[^"\\\n]|\\.)*)" )
  | (?P<char>     (?:u8|[uUL])?'(?:[^'\\\n]|\\.)+' )
  | (?P<number>   \.?[0-9](?:[eEpP][+-]|'?[0-9A-Za-z_]|\.)* )
  | (?P<word>     [A-Za-z_][A-Za-z0-9_]* )
  | (?P<space>    \s+ )
  | (?P<other>    . )
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

ESCAPE = re.compile(r"\\(?:x([0-9A-Fa-f]+)|u([0-9A-Fa-f]{4})|U([0-9A-Fa-f]{8})|([0-7]{1,3})|(.))", re.DOTALL)
SIMPLE_ESCAPES = {"n": "\n", "t": "\t", "r": "\r", "a": "\a", "b": "\b", "f": "\f", "v": "\v"}

TEST = re.compile(r"\b(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\(\s*(\w+)\s*,\s*(\w+)\s*\)")
LOCAL_INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.MULTILINE)


def unescaped(text):
    """The characters that a literal's text stands for."""

    def character(match):
        hexadecimal, short, long, octal, simple = match.groups()
        if simple is not None:
            return SIMPLE_ESCAPES.get(simple, simple)
        return chr(int(octal, 8) if octal is not None else int(hexadecimal or short or long, 16))

    return ESCAPE.sub(character, text)


def literals(source):
    """All string literals of a C++ source as (line, text), adjacent ones joined as the compiler does."""
    source = source.replace("\\\n", "")
    found = []
    joinable = False
    in_directive = False
    for token in TOKEN.finditer(source):
        kind = token.lastgroup
        if token["string"] is not None or token["raw"] is not None:
            text = token["body"] if token["raw"] is not None else unescaped(token["text"])
            if joinable:
                found[-1] = (found[-1][0], found[-1][1] + text)
            else:
                found.append((source.count("\n", 0, token.start()) + 1, text))
            joinable = True
        elif kind == "space":
            if in_directive and "\n" in token[0]:
                joinable = in_directive = False
        elif kind != "comment":
            joinable = False
            in_directive = in_directive or token[0] == "#"
    return found


def source_texts(root):
    """Where each text stands: {(file, text): line}."""
    texts = {}
    for folder in SOURCE_FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in SOURCE_SUFFIXES:
                for line, text in literals(path.read_text(encoding="utf-8")):
                    texts.setdefault((path.relative_to(root).as_posix(), text), line)
    return texts


class Tests:
    """The tests of the tree, and what they expect."""

    def __init__(self, root):
        self.root = root
        self.files = {}
        for path in sorted((root / "tests").rglob("*.cpp")):
            for suite, name in TEST.findall(path.read_text(encoding="utf-8")):
                self.files.setdefault(f"{suite}.{name}", []).append(path)

    def mention(self, test, text):
        """Whether a test's file, or a header of the tests that it includes, has the text in a literal."""
        return any(text in literal for path in self.files[test] for literal in self._literals(path, set()))

    def _literals(self, path, seen):
        if path in seen or not path.is_file():
            return []
        seen.add(path)
        source = path.read_text(encoding="utf-8")
        texts = [text for _, text in literals(source)]
        for name in LOCAL_INCLUDE.findall(source):
            for folder in (path.parent, *(self.root / "tests" / room for room in ("engine", "support"))):
                texts += self._literals((folder / name).resolve(), seen)
        return texts


def check_entries(table, texts):
    """What is wrong between the table and the sources."""
    complaints = []
    listed = {}
    for section, entries in table.items():
        for entry in entries:
            key = (entry["source"], entry["text"])
            if key in listed:
                complaints.append(f'{key[0]}: "{key[1]}" is listed twice')
            listed[key] = section
            if key not in texts:
                complaints.append(f'{key[0]}: "{key[1]}" is listed but not in the code')
    for (file, text), line in texts.items():
        if (file, text) not in listed:
            complaints.append(f'{file}:{line}: "{text}" is not listed; is it a message?')
    return complaints


def check_messages(messages, tests):
    """What is wrong with the messages themselves and with their tests."""
    complaints = []
    for entry in messages:
        where = f'{entry["source"]}: "{entry["text"]}"'
        if entry["outcome"] not in OUTCOMES or entry["logged"] not in LEVELS:
            complaints.append(f'{where} has an unknown kind: {entry["outcome"]}, {entry["logged"]}')
        for test in entry["tests"]:
            if test not in tests.files:
                complaints.append(f"{where} names a test that does not exist: {test}")
            elif not tests.mention(test, entry["text"]):
                complaints.append(f"{where} is not in the file of its test {test}")
        if not entry["tests"]:
            complaints.append(f"{where} names no test")
    return complaints


def check_others(others):
    return [f'{entry["source"]}: "{entry["text"]}" is listed as no message, without a reason'
            for entry in others if not entry["reason"]]


def check(root, table_file):
    table = json.loads(table_file.read_text(encoding="utf-8"))
    return (check_entries(table, source_texts(root)) + check_messages(table["messages"], Tests(root)) +
            check_others(table["others"]))


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", type=pathlib.Path, default=here.parent.parent, help="the project")
    parser.add_argument("--table", type=pathlib.Path, default=here / "messages.json")
    arguments = parser.parse_args()
    complaints = check(arguments.root, arguments.table)
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
