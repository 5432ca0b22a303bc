#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the includes of all sources against the table of rooms in CONTRIBUTING.md.

The table says of each room which others it may use. A file belongs to the room with the longest name that its path
begins with. Folders called internal are for their own room.
"""

import argparse
import pathlib
import re
import sys

SUFFIXES = (".hpp", ".cpp", ".inl")
ROW = re.compile(r"^\| `([^`|]+)/` \|[^|]*\| ([^|]*) \|$", re.MULTILINE)
NAME = re.compile(r"`([^`]+)/`")
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*[<"]([^>"]+)[>"]', re.MULTILINE)
EVERYTHING = "everything"


def rooms_of(table):
    """{room: the rooms that it may use, itself included, or None for all} of the text that holds the table."""
    rooms = {}
    for name, uses in ROW.findall(table):
        rooms[name] = None if uses.strip() == EVERYTHING else {name, *NAME.findall(uses)}
    for name, uses in rooms.items():
        for used in uses or ():
            if used not in rooms:
                sys.exit(f"CONTRIBUTING.md: {name}/ may use {used}/, which is no room")
    return rooms


def room_of(path, rooms):
    """The room of a file, named from the project's root; None where it is in none."""
    return max((room for room in rooms if path.startswith(room + "/")), key=len, default=None)


class Sources:
    """The files of the project, and what an include of one of them means."""

    def __init__(self, root, rooms):
        self.root = root
        tops = sorted({room.split("/")[0] for room in rooms})
        self.files = sorted(path.relative_to(root).as_posix() for top in tops
                            for path in (root / top).rglob("*") if path.suffix in SUFFIXES)

    def meant_by(self, name, includer):
        """The file of the project that is included by a name, or None for one of somebody else's."""
        beside = (pathlib.PurePosixPath(includer).parent / name).as_posix()
        if beside in self.files:
            return beside
        matches = [file for file in self.files if file == name or file.endswith("/include/" + name)
                   or file == "include/" + name or file.endswith("/" + name) and file.startswith("tests/support/")]
        return matches[0] if matches else None


def complaints_of(root, table):
    rooms = rooms_of(table)
    sources = Sources(root, rooms)
    complaints = []
    for file in sources.files:
        room = room_of(file, rooms)
        if room is None:
            complaints.append(f"{file} is in no room")
            continue
        for name in INCLUDE.findall((root / file).read_text(encoding="utf-8")):
            included = sources.meant_by(name, file)
            used = included and room_of(included, rooms)
            if used is None or rooms[room] is None:
                continue
            if used not in rooms[room]:
                complaints.append(f"{file} includes {included}, but {room}/ may not use {used}/")
            elif "/internal/" in included and used != room and not is_same_engine(room, used):
                complaints.append(f"{file} includes {included}, which is internal to {used}/")
    return complaints


def is_same_engine(room, used):
    """The engine stands in two folders: its templates, and what is compiled of it."""
    return {room, used} <= {"include/plex/ps", "src/engine"}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("root", type=pathlib.Path, help="the project")
    parser.add_argument("--table", type=pathlib.Path, help="default: CONTRIBUTING.md of the project")
    arguments = parser.parse_args()
    table = arguments.table or arguments.root / "CONTRIBUTING.md"
    complaints = complaints_of(arguments.root, table.read_text(encoding="utf-8"))
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
