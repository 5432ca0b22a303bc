#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""`plex top` in a virtual terminal.

    test_top.py   with the variables of test_plex.py
"""

import fcntl
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time
import unittest

import pyte

from test_plex import PATIENCE, PLEX, PlexTest, run

ROWS, COLUMNS = 20, 150
LEAVES = "\033[?1049l"  # the alternative screen


class Terminal:
    """A program in a terminal of its own, and what the terminal shows."""

    def __init__(self, *arguments, columns=COLUMNS):
        self.screen = pyte.Screen(columns, ROWS)
        self.stream = pyte.Stream(self.screen)
        self.written = ""
        self.ours, self.theirs = pty.openpty()
        fcntl.ioctl(self.theirs, termios.TIOCSWINSZ, struct.pack("HHHH", ROWS, columns, 0, 0))
        self.settings = termios.tcgetattr(self.theirs)
        environment = {**os.environ, "TERM": "xterm-256color", "COLORTERM": "truecolor"}
        self.process = subprocess.Popen(arguments, stdin=self.theirs, stdout=self.theirs, stderr=subprocess.PIPE,
                                        env=environment, start_new_session=True,
                                        preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.terminate()
            self.end()
        self.process.stderr.close()
        os.close(self.ours)
        os.close(self.theirs)

    def read(self, seconds):
        if select.select([self.ours], [], [], seconds)[0]:
            piece = os.read(self.ours, 65536).decode(errors="replace")
            self.written += piece
            self.stream.feed(piece)

    def wait_for(self, condition):
        """Until the screen fulfils a condition. Returns what that gives."""
        deadline = time.monotonic() + PATIENCE
        while not (found := condition(self.screen.display)):
            if time.monotonic() > deadline:
                raise AssertionError("it does not come:\n" + "\n".join(self.screen.display))
            self.read(0.1)
        return found

    def press(self, keys):
        os.write(self.ours, keys.encode())

    def end(self):
        """Waits for its end. Returns the exit code."""
        deadline = time.monotonic() + PATIENCE
        while self.process.poll() is None and time.monotonic() < deadline:
            self.read(0.05)
        self.read(0)
        return self.process.wait(1)

    def is_restored(self):
        """Whether the terminal is as it was before."""
        return termios.tcgetattr(self.theirs) == self.settings and LEAVES in self.written and \
            self.written.rfind("\033[?25h") >= self.written.rfind("\033[?25l")  # the cursor


class Top(PlexTest):
    domain = 107

    def top(self):
        return self.enterContext(Terminal(PLEX, "top", "-d", str(self.domain)))

    def test_it_shows_what_is_published(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        self.bare("read", topic)
        top = self.top()
        writer.say("publish 3000 200")  # for 15 s

        def figures(lines):
            rows = [re.split(r"\s+", line.strip()) for line in lines if line.startswith(topic)]
            return next((row for row in rows if abs(float(row[1]) - 200) < 20), None)

        row = top.wait_for(figures)
        self.assertEqual(row[3:7], ["kB", "1", "1", "0"])
        self.assertAlmostEqual(float(row[2]) * 1000 / 20, float(row[1]), delta=1)  # so many bytes has a value
        top.press("\r")

        def values(lines):
            return [int(value) for value in re.findall(r"^alt=(\d+)\.0 az=-0\.5", "\n".join(lines), re.MULTILINE)]

        first = top.wait_for(values)[0]

        def goes_on(lines):
            shown = values(lines)
            return len(shown) > 10 and shown[0] > first + 20 and shown == list(range(shown[0], shown[-1] + 1))

        top.wait_for(goes_on)
        top.press("\033")
        top.wait_for(lambda lines: any(line.startswith("TOPIC") for line in lines))
        top.press("q")
        self.assertEqual(top.end(), 0)
        self.assertTrue(top.is_restored())
        self.assertEqual(top.process.stderr.read(), b"")

    def test_refused_pairs_are_red(self):
        topic = self.topic()
        self.bare("write", topic, "best-effort")
        self.bare("read", topic)
        top = self.top()
        top.wait_for(lambda lines: any("reliability: reliable asked for, best-effort offered" in line
                                       for line in lines))
        place = next(i for i, line in enumerate(top.screen.display) if line.startswith(topic))
        self.assertEqual(top.screen.buffer[place][0].fg, "red")

    def test_keys_sort(self):
        slow, fast = self.topic("a-slow"), self.topic("b-fast")
        for name, rate in ((slow, 10), (fast, 100)):
            self.bare("write", name).say(f"publish {10 * rate} {rate}")
        top = self.top()

        def names(lines):
            return [line.split()[0] for line in lines if line.startswith(self.topic("")[:10])]

        top.wait_for(lambda lines: names(lines) == [slow, fast])
        top.press("v")
        top.wait_for(lambda lines: names(lines) == [fast, slow])
        top.press("n")
        top.wait_for(lambda lines: names(lines) == [slow, fast])

    def test_signals_restore_the_terminal(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            top = self.top()
            top.wait_for(lambda lines: any(line.startswith("plex top, domain") for line in lines))
            top.process.send_signal(number)
            self.assertEqual(top.end(), 0)
            self.assertTrue(top.is_restored())

    def test_without_a_terminal_it_names_another_way(self):
        output, errors, code = run("top", "-d", self.domain)
        self.assertEqual((output, code), ("", 2))
        self.assertIn("plex hz", errors)


if __name__ == "__main__":
    unittest.main()
