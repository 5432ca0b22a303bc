#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Which lines of each room the tests ran, from gcovr's JSON report.

Fails when a room has less than 95 % of its lines covered, and when a line that no test ran has no reason in
uncovered.json beside this script.
"""

import argparse
import json
import pathlib
import sys

LEAST_PERCENT = 95.0
ROOMS = {  # by folder; the longest that fits counts
    "include/plex/": "contract",
    "include/plex/fastdds/": "fastdds",
    "include/plex/module/": "module",
    "include/plex/ps/": "engine",
    "src/engine/": "engine",
    "src/profiles/": "engine",
    "generated/": "generated layer",
    "platform/": "platform",
}


def room_of(file):
    return ROOMS[max((folder for folder in ROOMS if file.startswith(folder)), key=len)]


def lines_of(entry, project):
    """Yields (number, text, whether it ran) of the lines with code in them. The end of a block is none: the compiler
    counts there what follows an exception, or nothing."""
    source = (project / entry["file"]).read_text(encoding="utf-8").splitlines()
    for line in entry["lines"]:
        number = line["line_number"]
        text = source[number - 1].strip()
        if not line.get("gcovr/noncode") and text not in ("}", "};"):
            yield number, text, line["count"] > 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("report", type=pathlib.Path, help="what gcovr --json wrote")
    parser.add_argument("project", type=pathlib.Path, help="the project's directory")
    arguments = parser.parse_args()

    reasons = json.loads((pathlib.Path(__file__).parent / "uncovered.json").read_text(encoding="utf-8"))
    unused = {(file, text) for file, texts in reasons.items() for text in texts}
    counts = {room: [0, 0] for room in ROOMS.values()}
    unexplained = 0
    faults = []

    print("Lines that no test ran:")
    for entry in json.loads(arguments.report.read_text(encoding="utf-8"))["files"]:
        file = entry["file"]
        for number, text, ran in lines_of(entry, arguments.project):
            count = counts[room_of(file)]
            count[0] += ran
            count[1] += 1
            if ran:
                continue
            reason = reasons.get(file, {}).get(text)
            unused.discard((file, text))
            unexplained += reason is None
            print(f"  {file}:{number}: {text}\n      {reason or 'NO REASON GIVEN'}")
    for file, text in sorted(unused):
        print(f"  {file}: has run this time, so its reason was not needed: {text}")

    print(f"\n{'room':<16} {'lines':>6} {'run':>6} {'percent':>8}")
    for room, (ran, total) in counts.items():
        percent = 100.0 * ran / total if total else 0.0
        print(f"{room:<16} {total:>6} {ran:>6} {percent:>8.1f}")
        if percent < LEAST_PERCENT:
            faults.append(f"{room}: {percent:.1f} % of the lines ran, less than {LEAST_PERCENT} %")
    if unexplained:
        faults.append(f"{unexplained} lines were not run and have no reason in tests/coverage/uncovered.json")
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
