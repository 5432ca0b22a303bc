#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The worked sessions of docs/tools.md: what they show is what the program says, and docs/tools.svg shows them.

    test_sessions.py [--write]   with the variables of test_plex.py, and PLEX_DOCUMENT, the document

A session is a block of text whose first line begins with "$ plex". Its commands are carried out in the scene of
its section, on a host of its own (../network/hosts.py), and what they say is compared, but for times and
numbers. With --write the document and the drawing get what they say. Exits with 77 where this machine makes
no namespaces.
"""

import contextlib
import difflib
import json
import os
import pathlib
import re
import shlex
import signal
import socket
import subprocess
import sys
import tempfile

sys.path.append(str(pathlib.Path(__file__).parent.parent / "network"))

import hosts  # noqa: E402  pylint: disable=wrong-import-position
from picture import picture  # noqa: E402  pylint: disable=wrong-import-position
from test_plex import PATIENCE, PLEX, PROGRAMS, Process  # noqa: E402  pylint: disable=wrong-import-position
from test_top import Terminal  # noqa: E402  pylint: disable=wrong-import-position

DOCUMENT = pathlib.Path(os.environ["PLEX_DOCUMENT"])
DRAWING = DOCUMENT.with_suffix(".svg")
SKIPPED = 77
CLONE_NEWUTS = 0x04000000
BLOCK = re.compile(r"^```text\n(\$ plex.*?)^```$", re.MULTILINE | re.DOTALL)
POSITION = "dome/position"


def check(holds, complaint):
    if not holds:
        raise RuntimeError(complaint)


class Scene(contextlib.ExitStack):
    """Programs that run while a session is recorded, on one of two hosts, in a directory that goes with them. They end
    with the namespaces."""

    def __init__(self):
        super().__init__()
        hosts.DEVICE = "eth0"
        hosts.system_call("unshare", CLONE_NEWUTS)
        socket.sethostname("dome")
        with contextlib.suppress(OSError):  # not all kernels let it
            pathlib.Path("/proc/sys/kernel/ns_last_pid").write_text("4710", encoding="ascii")
        self.network = hosts.Network()
        self.enter_context(contextlib.chdir(self.enter_context(tempfile.TemporaryDirectory())))

    def bare(self, *arguments):
        process = self.enter_context(Process(PROGRAMS / "tools-bare", arguments[0], 0, *arguments[1:],
                                             last=signal.SIGKILL))
        check(process.line() == "ready", "a program does not start")
        return process

    def shutters(self):
        self.enter_context(Process(PROGRAMS / "shutter-publisher", 0, 100000, last=signal.SIGKILL))
        self.enter_context(Process(PROGRAMS / "shutter-subscriber", 0, 200000, last=signal.SIGKILL))

    def subscriber(self):
        self.enter_context(Process(PROGRAMS / "shutter-subscriber", 0, 200000, last=signal.SIGKILL))

    def refused(self):
        self.bare("write", POSITION, "best-effort", "north").say("publish 10000 50")
        self.bare("read", POSITION)

    def ill(self):
        """A host with a network, what a killed program has left, and a pair that does not match."""
        self.network.join()
        with Process(PROGRAMS / "tools-bare", "write", 1, POSITION, last=signal.SIGKILL) as victim:
            victim.line()
            victim.process.kill()
        self.bare("write", POSITION, "best-effort")
        self.bare("read", POSITION)

    def busy(self):
        self.bare("write", POSITION).say("publish 20000 200")
        self.bare("read", POSITION)
        self.bare("write", "dome/temperature", "best-effort").say("publish 500 5")
        self.bare("read", "dome/temperature")

    def moving(self):
        self.bare("write", POSITION).say("publish 20000 40")

    def recorded(self):
        """Two recordings, one of which is none, and a program that listens to what the first is replayed as."""
        with Process(PROGRAMS / "tools-bare", "write", 0, POSITION, last=signal.SIGKILL) as writer:
            writer.line()
            writer.say("publish 20000 100")
            subprocess.run([PLEX, "record", POSITION, "-o", "night.mcap", "-n", "187"], check=True, timeout=PATIENCE,
                           capture_output=True)
        pathlib.Path("night.bag").write_text("another format\n", encoding="ascii")
        self.bare("read", "simulator/position")
        self.enter_context(Process(PLEX, "replay", "night.mcap", "--loop", "--rename",
                                   f"{POSITION}=simulator/position", last=signal.SIGKILL))


SCENES = {"list": Scene.shutters, "info": Scene.refused, "echo": Scene.shutters, "hz, bw and delay": Scene.shutters,
          "pub": Scene.subscriber, "record": Scene.moving, "replay": Scene.recorded, "top": Scene.busy, "doctor": Scene.ill}


def screen():
    """What `plex top` shows after some seconds, with the second topic selected."""
    with Terminal(PLEX, "top", columns=120) as top:
        top.wait_for(lambda shown: any("▇" * 5 in line or "█" * 5 in line for line in shown))
        top.press("\033[B")
        lines = top.wait_for(lambda shown: any("reliability" in line for line in shown) and list(shown))
    lines = [line.rstrip() for line in lines]
    return re.sub(r"\n{2,}", "\n\n", "\n".join(lines) + "\n")


def said(command):
    """What a command of a session writes, to both outputs."""
    words = shlex.split(command)
    if words[1] == "top":
        return screen()
    done = subprocess.run([PLEX, *words[1:]], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=PATIENCE, check=False)
    return done.stdout


def record(section, session):
    """A session's text anew."""
    commands = [line[2:] for line in session.splitlines() if line.startswith("$ ")]
    with Scene() as scene:
        SCENES[section](scene)
        return "\n".join(f"$ {command}\n{said(command)}" for command in commands)


def record_elsewhere(section, session):
    """The same on a host of its own."""
    done = subprocess.run([sys.executable, "-B", __file__, "--record", section, session], stdout=subprocess.PIPE,
                          text=True, timeout=4 * PATIENCE, check=False)
    if done.returncode == SKIPPED:
        sys.exit(SKIPPED)
    check(done.returncode == 0, f"the session of {section} can not be recorded")
    return json.loads(done.stdout.splitlines()[-1])


def normal(session):
    """What must not change. Lines that are alike are one."""
    lines = []
    for line in session.splitlines():
        if not line.startswith("$ "):
            line = re.sub(r"\bname=\w+", "name=upper", line)
            line = re.sub(r"fault=(\"[^\"]*\"|null)", "fault=null", line)
            line = re.sub(r"\b[0-9a-f:]+::[0-9a-f:]*(%\w+)?|fe80::[0-9a-f:%\w]*", "N", line)
            line = re.sub(r"[#▁▂▃▄▅▆▇█]+", "", line)
            line = re.sub(r"Fast DDS [\d.]+", "Fast DDS", line)  # of generation 2 none is told
            line = re.sub(r"\d+(?:[:.T-]\d+)*Z?", "N", line)
            line = re.sub(r"\bN (?:[mµn]?s|[kMG]?B)\b", "N U", line)
            line = re.sub(r"\b(\w+?)s?\b", r"\1", re.sub(r"[\s,]+", " ", line)).strip()
        if not lines or line != lines[-1]:
            lines.append(line)
    return lines


def sessions(text):
    """All sessions: (section, match)."""
    for match in BLOCK.finditer(text):
        yield re.findall(r"^## (.*)$", text[:match.start()], re.MULTILINE)[-1], match


def compare(text):
    """Returns what differs, as lines."""
    differences = []
    for section, match in sessions(text):
        old, new = normal(match[1]), normal(record_elsewhere(section, match[1]))
        differences += difflib.unified_diff(old, new, f"docs/tools.md, {section}", "what it says", lineterm="")
    return differences


def drawing(text):
    return picture([(section, match[1]) for section, match in sessions(text)])


def renewed(text):
    pieces, end = [], 0
    for section, match in sessions(text):
        pieces += [text[end:match.start(1)], record_elsewhere(section, match[1])]
        end = match.end(1)
    return "".join(pieces) + text[end:]


def main(arguments):
    if arguments[:1] == ["--record"]:
        hosts.start_again_inside_namespaces()
        print(json.dumps(record(*arguments[1:])))
        return 0
    text = DOCUMENT.read_text(encoding="utf-8")
    check({section for section, _ in sessions(text)} == set(SCENES), "sections and scenes differ")
    if arguments == ["--write"]:
        text = renewed(text)
        DOCUMENT.write_text(text, encoding="utf-8")
        DRAWING.write_text(drawing(text), encoding="utf-8")
        return 0
    check(DRAWING.read_text(encoding="utf-8") == drawing(text), "the drawing shows other sessions: make it with --write")
    differences = compare(text)
    print("\n".join(differences))
    return 1 if differences else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    except hosts.Refused as refusal:
        print(f"skipped: {refusal}")
        sys.exit(SKIPPED)
