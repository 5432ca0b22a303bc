#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""`plex doctor` on a host of its own, made of namespaces: see ../network/hosts.py.

    test_doctor.py   with the variables of test_plex.py; exits with 77 where this machine makes no namespaces
"""

import json
import os
import pathlib
import signal
import sys
import unittest

sys.path.append(str(pathlib.Path(__file__).parent.parent / "network"))

import hosts  # noqa: E402  pylint: disable=wrong-import-position
from test_plex import PROGRAMS, PlexTest, Process  # noqa: E402  pylint: disable=wrong-import-position

NO_NETWORK = "No network interface is up that can multicast"


class Doctor(PlexTest):
    """The host has the loopback interface, and shared memory that is empty."""

    domain = 106

    def setUp(self):
        """Empty shared memory, whatever the test before has left."""
        hosts.system_call("mount", b"tmpfs", b"/dev/shm", b"tmpfs", 0, None)
        self.addCleanup(hosts.system_call, "umount2", b"/dev/shm", 2)  # as soon as nobody uses it

    def examine(self, *options):
        """What it says as JSON, and the exit code."""
        output, errors, code = self.run_plex("doctor", "--json", *options)
        self.assertEqual(errors, "")
        return json.loads(output), code

    def problems(self, *options):
        report, code = self.examine(*options)
        self.assertEqual(code, 4 if report["problems"] else 0)
        return [each["text"] for each in report["problems"]]

    def connect(self):
        """Has a network, for the time of the test."""
        hosts.command("ip", "link", "add", "cable", "type", "veth", "peer", "name", "other")
        self.addCleanup(hosts.command, "ip", "link", "delete", "cable")
        hosts.command("ip", "address", "add", "10.0.0.1/24", "dev", "cable")
        for name in ("cable", "other"):
            hosts.command("ip", "link", "set", name, "up")
        hosts.wait_for(lambda: "LOWER_UP" in hosts.command("ip", "link", "show", "cable"), "connection")

    def left(self):
        """Files that a killed program has left."""
        with Process(PROGRAMS / "tools-bare", "write", self.domain, self.topic(), last=signal.SIGKILL) as victim:
            self.assertEqual(victim.line(), "ready")
            victim.process.kill()
            victim.process.wait()
        return sorted(os.listdir("/dev/shm"))

    def test_nothing_is_wrong(self):
        self.connect()
        report, code = self.examine()
        self.assertEqual((report["problems"], code), ([], 0))
        cable = next(each for each in report["machine"]["interfaces"] if each["name"] == "cable")
        self.assertIn("10.0.0.1", cable["addresses"])
        self.assertTrue(cable["up"] and cable["multicast"])
        output, errors, code = self.run_plex("doctor")
        self.assertEqual((errors, code), ("", 0))
        self.assertIn("Nothing is wrong", output)

    def test_a_host_without_a_network(self):
        problems = self.problems()
        self.assertEqual(len(problems), 1, problems)
        self.assertIn(NO_NETWORK, problems[0])
        output, _, code = self.run_plex("doctor")
        self.assertEqual(code, 4)
        self.assertIn(NO_NETWORK, output)
        self.assertIn("cure: ", output)

    def test_multicast_that_does_not_come_back(self):
        self.connect()
        limit = pathlib.Path("/proc/sys/net/ipv4/igmp_max_memberships")  # of this network namespace
        self.addCleanup(limit.write_text, limit.read_text(encoding="ascii"), encoding="ascii")
        limit.write_text("0", encoding="ascii")  # nobody joins a group
        self.assertTrue(any("sent by cable does not come back" in each for each in self.problems()))

    def test_leftovers_are_removed_and_nothing_else(self):
        self.connect()
        living = self.bare("write", self.topic())
        before = set(os.listdir("/dev/shm"))
        left = set(self.left()) - before
        self.assertTrue(left)
        problems = self.problems()
        self.assertEqual(len(problems), 1, problems)
        self.assertIn("Programs that are gone have left", problems[0])
        report, code = self.examine("--clean")
        self.assertEqual((report["problems"], code), ([], 0))
        self.assertGreater(report["machine"]["sharedMemory"]["filesRemoved"], 0)
        self.assertGreater(report["machine"]["sharedMemory"]["filesInUse"], 0)
        self.assertLessEqual(before, set(os.listdir("/dev/shm")))
        self.bare("read", self.topic())
        living.ask("matched 1")
        self.assertEqual(self.problems(), [])

    def test_refused_pairs_come_with_their_cure(self):
        self.connect()
        self.bare("write", self.topic(), "best-effort")
        self.bare("read", self.topic())
        report, code = self.examine()
        self.assertEqual(code, 4)
        self.assertEqual([each["cure"] for each in report["problems"]],
                         ["reliability: have the writer offer reliable, or the reader ask for best-effort"])
        self.assertEqual([each["participants"] for each in report["implementations"]], [2])

    def test_shared_memory_is_full(self):
        self.connect()
        hosts.system_call("mount", b"tmpfs", b"/dev/shm", b"tmpfs", 0x20, b"size=4k")  # MS_REMOUNT
        self.assertTrue(any("bytes left of the" in each for each in self.problems()))


if __name__ == "__main__":
    try:
        hosts.start_again_inside_namespaces()
        hosts.Host("10.0.0.1")
    except hosts.Refused as refusal:
        print(f"skipped: {refusal}")
        sys.exit(77)
    unittest.main()
