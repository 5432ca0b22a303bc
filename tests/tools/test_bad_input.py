#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The command plex where others, or its user, mean it no good.

    test_bad_input.py CASE   with the variables of test_plex.py
"""

import contextlib
import fcntl
import json
import os
import pathlib
import pty
import re
import select
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time
import unittest

from test_plex import PATIENCE, PLEX, TYPE, PlexTest, run

TITLE = "\x1b]0;owned\x07"  # sets the title of a terminal's window
CLEAR = "\x9b2J"  # clears it, where a terminal obeys control characters beyond those of ASCII
NO_TEXT = "\udcff"  # as a byte, 0xff
HOSTILE = TITLE + CLEAR + "\r\n\t" + NO_TEXT


class Names(PlexTest):
    """Names and texts of others do to a terminal what they like only if it gets them as they are."""

    domain = 112

    def shown(self, *arguments, terminal=True):
        """What plex writes to a terminal, or into a pipe."""
        if not terminal:
            done = subprocess.run([PLEX, *arguments, "-d", str(self.domain)], stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, timeout=PATIENCE, check=True)
            return done.stdout
        ours, theirs = pty.openpty()
        with subprocess.Popen([PLEX, *arguments, "-d", str(self.domain)], stdout=theirs, stderr=theirs,
                              env={**os.environ, "TERM": "xterm"}) as process:
            os.close(theirs)
            shown = b""
            with contextlib.suppress(OSError):  # the end of a terminal
                while piece := os.read(ours, 4096):
                    shown += piece
            self.assertEqual(process.wait(PATIENCE), 0, shown)
        os.close(ours)
        return shown

    def expect_text(self, shown):
        """Lines of text, with colours."""
        text = re.sub(r"\x1b\[\d?\dm|\x1b\[\dm", "", shown.decode())  # which is UTF-8, or this fails
        self.assertNotRegex(text.replace("\r\n", "\n"), "[\x00-\x09\x0b-\x1f\x7f-\x9f]")
        return text

    def test_they_are_shown_and_not_obeyed(self):
        topic = self.topic(HOSTILE)
        self.bare("write", topic, "best-effort", "part" + HOSTILE, "name" + HOSTILE)
        self.bare("read", topic)
        for command in (["list"], ["info", topic, "--duration", "0"], ["hz", topic, "--duration", "0.01"],
                        ["echo", "--help"]):
            for terminal in (True, False):
                with self.subTest(command=command, terminal=terminal):
                    text = self.expect_text(self.shown(*command, terminal=terminal))
                    if command[0] in ("list", "info"):
                        self.assertIn(r"\u001b]0;owned\u0007\u009b2J\u000d\n\t\xff", text)
                        self.assertIn(r"part\u001b]0;owned", text)
                    if command[0] == "list":
                        self.assertIn(r"name\u001b]0;owned", text)
        output, errors, code = self.run_plex("echo", self.topic(TITLE + CLEAR))
        self.assertEqual((output, code), ("", 3))
        self.expect_text(errors.encode())
        output, _, _ = self.run_plex("doctor")
        self.assertIn(r"\u001b]0;owned", self.expect_text(output.encode()))

    def test_json_has_them_as_they_are(self):
        topic = self.topic(HOSTILE)
        self.bare("write", topic, "best-effort", "part" + HOSTILE, "name" + HOSTILE)
        shown = topic.replace(NO_TEXT, "\ufffd")
        output, errors, code = self.run_plex("list", "--json")
        self.assertEqual((errors, code), ("", 0))
        self.expect_text(output.encode())
        seen = json.loads(output)
        self.assertIn(shown, [each["name"] for each in seen["topics"]])
        self.assertIn("name" + HOSTILE.replace(NO_TEXT, "\ufffd"), [each["name"] for each in seen["participants"]])
        for command in ("info", "doctor"):
            output, _, code = self.run_plex(command, *([topic] if command == "info" else []), "--json")
            self.assertIn(code, (0, 4))
            self.expect_text(output.encode())
            json.loads(output)

    def test_texts_in_values_are_shown_and_not_obeyed(self):
        topic = self.topic()
        types = ("--idl", pathlib.Path(os.environ["PLEX_TEST_IDL"]) / "unknown.idl")
        text = "\x1b[2J\x9b\r\n"
        self.plex("pub", topic, "elsewhere::Reading", json.dumps({"channel": text, "number": 1}), *types, "--rate", 50,
                  "--wait", 0)
        deadline = time.monotonic() + PATIENCE
        while self.run_plex("info", topic, "--duration", 0)[2] != 0:
            self.assertLess(time.monotonic(), deadline)
        for form, expected in ((["--format", "{.channel}"], r"\u001b[2J\u009b\u000d\n" + "\n"),
                               (["--format", "{value}"], r'channel="\u001b[2J\u009b\r\n" number=1 '),
                               (["--format", "{key}"], r'channel="\u001b[2J\u009b\r\n"' + "\n"),
                               ([], r'channel="\u001b[2J\u009b\r\n"')):
            output, errors, code = self.run_plex("echo", topic, *types, "--once", *form)
            self.assertEqual(code, 0, errors)
            self.assertIn(expected, self.expect_text(output.encode()))
        output, errors, code = self.run_plex("echo", topic, *types, "--once", "--json")
        self.assertEqual(code, 0, errors)
        self.assertEqual(json.loads(output)["value"]["channel"], text)

    def test_they_are_recorded_and_replayed(self):
        topic = self.topic(HOSTILE)
        writer = self.bare("write", topic, "best-effort", "part" + HOSTILE, "name" + HOSTILE)
        with tempfile.TemporaryDirectory() as folder:
            file = f"{folder}/recording.mcap"
            recorder = self.plex("record", topic, "-o", file, "-n", 10)
            writer.ask("matched 1")
            while recorder.process.poll() is None:
                writer.ask("publish 10 1000")
            output, errors, code = recorder.end()
            self.assertEqual(code, 0, errors)
            self.expect_text((output + errors).encode())
            output, errors, code = self.run_plex("replay", file, "--wait", 0, "--speed", 0)
            self.assertEqual(code, 0, errors)
            self.expect_text((output + errors).encode())
            self.assertIn("published 10 values", errors)

    def test_those_that_dds_would_cut_off_are_refused(self):
        for name, code in (("", 2), ("x" * 255, 0), ("x" * 256, 2)):
            _, errors, found = self.run_plex("pub", name, TYPE, "{}", "--wait", 0)
            self.assertEqual(found, code, errors)
            self.assertIn("published 1 value" if code == 0 else "the name of a topic has 1 to 255 bytes", errors)


class Numbers(unittest.TestCase):
    """Numbers of the command line that make no sense."""

    def test_they_are_refused(self):
        pub = ["pub", "t", TYPE, "{}"]
        for arguments in ([*command, value]
                          for command, values in (
                              (["list", "-d"], ("-1", "233", "4294967296", "1.5", "nan", "", "x", "0x", "1e3")),
                              (["echo", "t", "-n"], ("0", "-1", "18446744073709551616", "1.5", "nan", "")),
                              (["hz", "t", "--interval"], ("nan", "-nan", "inf", "0", "-1", "1e400", "")),
                              (["hz", "t", "--duration"], ("nan", "inf", "-inf", "0", "-1", "1e10")),
                              (["info", "t", "--duration"], ("nan", "inf", "-1")),
                              ([*pub, "--rate"], ("nan", "inf", "0", "-5", "1e6")),
                              ([*pub, "--wait"], ("nan", "inf", "-1", "1e300")),
                              ([*pub, "-n"], ("-1", "0", "99999999999999999999")),
                              (["record", "-o", "f", "--duration"], ("nan", "0")),
                              (["replay", "f", "--speed"], ("nan", "-1", "1e300")),
                              (["replay", "f", "--wait"], ("nan", "-0.1")))
                          for value in values):
            with self.subTest(arguments=arguments):
                output, errors, code = run(*arguments)
                self.assertEqual((output, code), ("", 2))
                self.assertIn({"-n": "--count", "-d": "--domain"}.get(arguments[-2], arguments[-2]), errors)


class Descriptors(PlexTest):
    """Standard input and output that are closed, or can not be written to."""

    domain = 113

    def shell(self, command):
        """Runs a command of a shell; returns error output and exit code."""
        done = subprocess.run(["sh", "-c", command, PLEX], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, timeout=PATIENCE, check=False)
        self.assertEqual(done.stdout, "")
        return done.stderr, done.returncode

    def test_a_closed_output_is_a_failure(self):
        for arguments in ("--help", "--version", f"list -d {self.domain}", f"list --json -d {self.domain}",
                          "completion bash"):
            for target, reason in ((">&-", "Bad file descriptor"), (">/dev/full", "No space left on device")):
                with self.subTest(arguments=arguments, target=target):
                    self.assertEqual(self.shell(f'exec "$0" {arguments} {target}'),
                                     (f"plex: cannot write to the standard output: {reason}\n", 1))

    def test_nothing_is_written_into_what_is_opened_instead(self):
        self.assertEqual(self.shell(f'exec "$0" list -d {self.domain} <&- >&- 2>&-'), ("", 1))
        self.assertEqual(self.shell(f'exec "$0" echo nothing -d {self.domain} <&- >&- 2>&-'), ("", 3))

    def test_lines_of_a_closed_input_are_none(self):
        errors, code = self.shell(f'exec "$0" pub {self.id()} {TYPE} - -d {self.domain} --wait 0 <&-')
        self.assertEqual(code, 0, errors)
        self.assertIn("published 0 values", errors)


class Signals(PlexTest):
    """Signals that are no Ctrl-C."""

    domain = 114

    def echo(self, **settings):
        """`plex echo` of a topic on which values come."""
        topic = self.topic()
        writer = self.bare("write", topic)
        echo = subprocess.Popen([PLEX, "echo", topic, "-d", str(self.domain)], stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True, **settings)
        self.addCleanup(echo.stderr.close)
        self.addCleanup(echo.stdout.close)
        self.addCleanup(echo.kill)
        writer.ask("matched 1")
        writer.say("publish 2000 200")  # for 10 s
        self.assertIn("alt=", echo.stdout.readline())
        return echo

    def test_each_lets_it_finish_with_its_summary(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            echo = self.echo()
            echo.send_signal(number)
            _, errors = echo.communicate(timeout=PATIENCE)
            self.assertEqual(echo.returncode, 0, errors)
            self.assertRegex(errors, r"^plex: \d+ values? in ")

    def test_it_goes_on_without_its_terminal_where_it_is_told_to(self):
        echo = self.echo(preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))  # as nohup does
        echo.send_signal(signal.SIGHUP)
        for _ in range(200):
            self.assertIn("alt=", echo.stdout.readline())
        echo.send_signal(signal.SIGINT)
        _, errors = echo.communicate(timeout=PATIENCE)
        self.assertEqual(echo.returncode, 0, errors)

    def test_it_ends_while_nobody_reads_its_long_lines(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (folder / "long.idl").write_text("module elsewhere { struct Long { string text; }; };", encoding="utf-8")
        topic, types = self.topic(), ("--idl", folder / "long.idl")
        value = json.dumps({"text": "x" * 100_000})
        self.plex("pub", topic, "elsewhere::Long", value, *types, "--rate", 20, "--wait", 0)
        deadline = time.monotonic() + PATIENCE
        while self.run_plex("info", topic, "--duration", 0)[2] != 0:
            self.assertLess(time.monotonic(), deadline)
        echo = self.plex("echo", topic, *types)
        waiting = 0
        while waiting < 60_000:  # of the 65536 bytes that a pipe has
            self.assertLess(time.monotonic(), deadline)
            select.select([], [], [], 0.01)
            waiting = struct.unpack("i", fcntl.ioctl(echo.process.stdout, termios.FIONREAD, bytes(4)))[0]
        echo.process.send_signal(signal.SIGINT)
        self.assertEqual(echo.process.wait(PATIENCE), 0)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]])
