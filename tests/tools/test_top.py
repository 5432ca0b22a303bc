#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""`plex top` in a virtual terminal.

    test_top.py   with the variables of test_plex.py
"""

import fcntl
import os
import pathlib
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

from test_plex import PATIENCE, PLEX, PROGRAMS, PlexTest, run

ROWS, COLUMNS = 20, 150
LEAVES = "\033[?1049l"  # the alternative screen


class Terminal:
    """A program in a terminal of its own, and what the terminal shows."""

    def __init__(self, *arguments, columns=COLUMNS, last=signal.SIGTERM):
        self.last = last
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
            self.process.send_signal(self.last)
            self.end()
        self.process.stderr.close()
        self.hang_up()
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

    def resize(self, rows, columns):
        fcntl.ioctl(self.ours, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        self.screen.resize(rows, columns)

    def hang_up(self):
        """The window of the terminal is closed."""
        if self.ours is not None:
            os.close(self.ours)
            self.ours = None

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

    def test_it_ends_with_its_terminal(self):
        top = self.top()
        top.wait_for(lambda lines: any(line.startswith("plex top, domain") for line in lines))
        top.hang_up()
        self.assertEqual(top.process.wait(PATIENCE), 0)

    def test_a_small_terminal_has_the_names_and_what_fits(self):
        topic = self.topic()
        self.bare("write", topic)
        top = self.enterContext(Terminal(PLEX, "top", "-d", str(self.domain), columns=40))
        top.wait_for(lambda lines: any(line.startswith(topic[:15]) and line.rstrip().endswith("0.0")
                                       for line in lines))
        top.resize(5, 100)
        shown = topic[:40]
        head = "TOPIC.*VALUES/S.*BYTES/S.*WRITERS.*READERS.*LOST.*REFUSED"
        top.wait_for(lambda lines: re.search(head, "\n".join(lines)) and any(shown in line for line in lines))
        top.resize(1, 1)
        top.resize(ROWS, COLUMNS)
        top.wait_for(lambda lines: re.search(head, "\n".join(lines)) and any(shown in line for line in lines))
        top.press("q")
        self.assertEqual(top.end(), 0)

    def test_an_open_topic_may_go_and_come_back(self):
        topic, other = self.topic(), self.topic("another")  # which comes before it
        self.bare("write", other)
        writer = self.bare("write", topic)
        top = self.top()
        top.wait_for(lambda lines: any(line.startswith(topic) for line in lines) and
                     any(line.startswith(other) for line in lines))
        top.press("\033[B")
        top.press("\r")
        top.wait_for(lambda lines: lines[0].startswith(topic) and "values/s" in lines[1])
        writer.process.stdin.close()
        writer.process.wait(PATIENCE)
        top.wait_for(lambda lines: lines[0].startswith(topic) and lines[1].startswith("It has gone."))
        self.bare("write", topic).say("publish 3000 200")
        top.wait_for(lambda lines: lines[0].startswith(topic) and "values/s" in lines[1] and
                     any(line.startswith("alt=") for line in lines))
        top.press("\033")
        top.wait_for(lambda lines: any(line.startswith(other) for line in lines))
        top.press("q")
        self.assertEqual((top.end(), top.process.stderr.read()), (0, b""))

    def test_names_are_shown_and_not_obeyed(self):
        topic = self.topic("\x1b]0;owned\x07")
        self.bare("write", topic, "best-effort", "\x1b]0;part\x07")
        self.bare("read", topic)
        top = self.enterContext(Terminal(PLEX, "top", "-d", str(self.domain), columns=200))
        top.wait_for(lambda lines: any(line.startswith(self.topic("\\u001b]0;owned\\u0007")) for line in lines) and
                     any("\\u001b]0;part\\u0007" in line for line in lines))
        top.press("\r")
        top.wait_for(lambda lines: lines[0].startswith(self.topic("\\u001b]0;owned\\u0007")))
        self.assertNotIn("\x1b]", top.written)

    def test_what_it_keeps_of_an_open_topic_has_a_bound(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        top = self.top()
        top.wait_for(lambda lines: any(line.startswith(topic) for line in lines))
        top.press("\r")

        def held():
            status = pathlib.Path(f"/proc/{top.process.pid}/status").read_text(encoding="ascii")
            return int(re.search(r"VmRSS:\s*(\d+) kB", status)[1])

        def publish(count):
            """Values that go by; returns the memory once the last ones are on the screen, or were lost."""
            writer.say(f"publish {count} 4000")
            top.wait_for(lambda lines: any(int(value) > 0.9 * count for value in
                                           re.findall(r"^alt=(\d+)\.0 ", "\n".join(lines), re.MULTILINE)))
            top.wait_for(lambda _: select.select([writer.process.stdout], [], [], 0)[0])
            self.assertTrue(writer.line().startswith("published"))
            return held()

        before = publish(4000)
        after = publish(40000)
        self.assertLess(after, before + 4000)  # kB: a tenth of what the values would take

    def test_without_a_terminal_it_names_another_way(self):
        output, errors, code = run("top", "-d", self.domain)
        self.assertEqual((output, code), ("", 2))
        self.assertIn("plex hz", errors)


class Failing(unittest.TestCase):
    """The screen, with a content that fails when it is told to."""

    def test_a_failure_restores_the_terminal_and_is_said(self):
        for key, complaint, code in (("u", "it fails at u", 3), ("d", "it fails at d", 3), ("o", "it fails at o", 3),
                                     ("x", "something else", 1)):
            with Terminal(str(PROGRAMS / "tools-screen")) as screen:
                screen.wait_for(lambda lines: any(line.startswith("none") for line in lines))
                screen.press("k")
                screen.wait_for(lambda lines: any(line.startswith("k ") for line in lines))
                screen.press(key)
                self.assertEqual(screen.end(), code)
                self.assertTrue(screen.is_restored())
                self.assertEqual(screen.process.stderr.read().decode(), f"plex: {complaint}\n")


if __name__ == "__main__":
    unittest.main()
