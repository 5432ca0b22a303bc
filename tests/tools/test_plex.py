#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The command plex as people use it: in processes of its own, with pipes.

    test_plex.py CASE   with PLEX_PROGRAMS (folder of programs) and PLEX_IDL (folder of definitions) in the environment

Each case has a domain of its own, and topics that no other run has.
"""

import contextlib
import json
import os
import pathlib
import pty
import resource
import select
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

import mcap_file

PROGRAMS = pathlib.Path(os.environ["PLEX_PROGRAMS"])
PLEX = str(PROGRAMS / "plex")
PATIENCE = 30
TYPE = "generated::dds_::vexstubif::AltAz"


class Process:
    """A program with pipes; it does not outlive the block that it is used in.

    It is asked to end with its input, or by a signal: one that is killed leaves files in shared memory.
    """

    def __init__(self, *arguments, environment=None, last=None):
        self.last = last  # the signal that ends it; None: its input's end does
        self.arguments = [str(argument) for argument in arguments]
        self.output = ""  # that was read, and not asked for yet
        self.process = subprocess.Popen(self.arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True, bufsize=1,
                                        env={**os.environ, **(environment or {})})

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None and self.last:
            self.process.send_signal(self.last)
        with contextlib.suppress(BrokenPipeError):
            self.process.stdin.close()
        try:
            self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise
        finally:
            self.process.stdout.close()
            self.process.stderr.close()

    def say(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()

    def line(self):
        """The next line of its output, without its end; fails where none comes."""
        while "\n" not in self.output:
            ready, _, _ = select.select([self.process.stdout], [], [], PATIENCE)
            piece = os.read(self.process.stdout.fileno(), 65536) if ready else b""
            if not piece:
                self.process.kill()
                raise AssertionError(f"{self.arguments} says nothing more; {self.process.communicate()[1]}")
            self.output += piece.decode()
        line, self.output = self.output.split("\n", 1)
        return line

    def ask(self, question):
        self.say(question)
        return self.line()

    def interrupt(self):
        """Ctrl-C. Returns output, error output, exit code, and how long it took."""
        begin = time.monotonic()
        self.process.send_signal(signal.SIGINT)
        return *self.end(), time.monotonic() - begin

    def end(self):
        """Waits for its end. Returns output, error output and exit code."""
        output, errors = self.process.communicate(timeout=PATIENCE)
        return self.output + output, errors, self.process.returncode


def run(*arguments, given=None):
    """Runs plex. Returns output, error output and exit code."""
    done = subprocess.run([PLEX, *map(str, arguments)], input=given, capture_output=True, text=True, timeout=PATIENCE,
                          check=False)
    return done.stdout, done.stderr, done.returncode


class PlexTest(unittest.TestCase):
    """Verbs for the cases."""

    maxDiff = None
    domain = 0

    def topic(self, name="topic"):
        return f"{self.id().rsplit('.', maxsplit=1)[-1]}/{os.getpid()}/{name}"

    def bare(self, verb, topic, *rest):
        """A process of bare Fast DDS, once it is there."""
        process = Process(PROGRAMS / "tools-bare", verb, self.domain, topic, *rest)
        self.enterContext(process)
        self.assertEqual(process.line(), "ready")
        return process

    def plex(self, *arguments):
        return self.enterContext(Process(PLEX, *arguments, "-d", self.domain, last=signal.SIGINT))

    def run_plex(self, *arguments, given=None):
        return run(*arguments, "-d", self.domain, given=given)

    def seen(self, topic):
        """What `plex list` says of a topic."""
        output, errors, code = self.run_plex("list", "--json")
        self.assertEqual((errors, code), ("", 0))
        found = [each for each in json.loads(output)["topics"] if each["name"] == topic]
        self.assertEqual(len(found), 1, output)
        return found[0]


class CommandLine(PlexTest):
    domain = 0  # takes no part in any

    def test_help_names_all_commands_and_exit_codes(self):
        output, errors, code = run("--help")
        self.assertEqual((errors, code), ("", 0))
        for word in ("list", "info", "echo", "hz", "bw", "delay", "pub", "top", "doctor", "Exit codes"):
            self.assertIn(word, output)

    def test_each_command_has_help(self):
        for command in ("list", "info", "echo", "hz", "bw", "delay", "pub", "doctor"):
            output, errors, code = run(command, "--help")
            self.assertEqual((errors, code), ("", 0))
            self.assertIn("--domain", output)
            self.assertIn("--json", output)

    def test_wrong_usage_ends_with_2(self):
        for arguments in ([], ["lst"], ["echo"], ["list", "-d", "233"], ["echo", "t", "-n", "0"],
                          ["echo", "t", "--json", "--format", "{value}"], ["hz", "t", "--interval", "0"]):
            output, errors, code = run(*arguments)
            self.assertEqual(code, 2, arguments)
            self.assertNotEqual(output + errors, "")

    def test_version_is_said(self):
        output, _, code = run("--version")
        self.assertRegex(output, r"^plex \d+\.\d+\.\d+\n$")
        self.assertEqual(code, 0)

    def test_it_starts_quickly(self):
        def spent():
            usage = resource.getrusage(resource.RUSAGE_CHILDREN)
            return usage.ru_utime + usage.ru_stime

        begin = spent()
        for _ in range(5):
            run("--version")
        self.assertLess((spent() - begin) / 5, 0.3)  # of the processor's time: others may be busy


class List(PlexTest):
    domain = 216

    def test_endpoints_come_with_process_type_and_qos(self):
        topic = self.topic()
        writer = self.bare("write", topic, "best-effort", "north")
        reader = self.bare("read", topic)
        seen = self.seen(topic)
        self.assertEqual(seen["types"], [TYPE])
        self.assertEqual([each["process"] for each in seen["writers"]], [str(writer.process.pid)])
        self.assertEqual([each["process"] for each in seen["readers"]], [str(reader.process.pid)])
        self.assertEqual(seen["writers"][0]["qos"]["reliability"], "best-effort")
        self.assertEqual(seen["writers"][0]["qos"]["partition"], '"north"')
        self.assertEqual(seen["readers"][0]["qos"]["reliability"], "reliable")
        self.assertFalse(seen["readers"][0]["keyed"])

    def test_people_read_the_same(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        output, errors, code = self.run_plex("list")
        self.assertEqual((errors, code), ("", 0))
        self.assertIn(topic, output)
        self.assertRegex(output, rf"writer .*{writer.process.pid} .*{TYPE} .*reliable, transient-local, xcdr1")
        self.assertNotIn("\033", output)

    def test_it_is_no_reader(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        with Process(PLEX, "list", "-d", self.domain) as listing, Process(PLEX, "list", "--json", "-d",
                                                                          self.domain) as other:
            output, _, _ = other.end()
            listing.end()
        names = [each["name"] for each in json.loads(output)["topics"]]
        self.assertIn(topic, names)
        self.bare("read", topic)
        writer.ask("matched 1")
        self.assertEqual(len(self.seen(topic)["readers"]), 1)

    def test_it_settles_within_3_seconds(self):
        begin = time.monotonic()
        self.run_plex("list")
        self.assertLess(time.monotonic() - begin, 4)

    def test_colours_are_for_terminals_that_want_them(self):
        self.bare("write", self.topic())
        for settings, expected in (({}, True), ({"NO_COLOR": "1"}, False), ({"TERM": "dumb"}, False)):
            ours, theirs = pty.openpty()
            environment = {**os.environ, "TERM": "xterm", **settings}
            if "NO_COLOR" not in settings:
                environment.pop("NO_COLOR", None)
            with subprocess.Popen([PLEX, "list", "-d", str(self.domain)], stdout=theirs, env=environment) as process:
                os.close(theirs)
                shown = b""
                with contextlib.suppress(OSError):  # the end of a terminal
                    while piece := os.read(ours, 4096):
                        shown += piece
                self.assertEqual(process.wait(PATIENCE), 0)
            os.close(ours)
            self.assertEqual(b"\033[" in shown, expected, settings)


class Crowd(PlexTest):
    """50 participants in one process, with 500 endpoints."""

    domain = 109

    def test_all_are_listed_in_less_than_5_seconds(self):
        topic = self.topic()
        self.enterContext(crowd := Process(PROGRAMS / "tools-bare", "crowd", self.domain, topic, 50, 5))
        self.assertEqual(crowd.line(), "ready")
        begin = time.monotonic()
        output, errors, code = self.run_plex("list", "--json")
        seconds = time.monotonic() - begin
        self.assertEqual((errors, code), ("", 0))
        seen = json.loads(output)
        endpoints = [each for found in seen["topics"] for each in found["writers"] + found["readers"]]
        self.assertEqual((len(seen["participants"]), len(endpoints)), (50, 500))
        self.assertLess(seconds, 5)


class Info(PlexTest):
    domain = 217

    def test_each_pair_is_matched_or_says_why_not(self):
        topic = self.topic()
        reliable = self.bare("write", topic)
        self.bare("write", topic, "best-effort")
        self.bare("read", topic)
        output, errors, code = self.run_plex("info", topic, "--json")
        self.assertEqual((errors, code), ("", 0))
        info = json.loads(output)
        matched = {each["writer"]: each for each in info["pairs"]}
        self.assertEqual(len(matched), 2)
        for writer in info["writers"]:
            pair = matched[writer["guid"]]
            fits = writer["process"] == str(reliable.process.pid)
            self.assertEqual(pair["matched"], fits)
            self.assertEqual(pair["refusals"], [] if fits else [
                {"policy": "reliability", "offered": "best-effort", "asked": "reliable"}])

    def test_what_each_writer_sends_is_measured(self):
        topic = self.topic()
        fast, slow = self.bare("write", topic), self.bare("write", topic)
        fast.say("publish 2000 200")
        slow.say("publish 200 20")
        output, errors, code = self.run_plex("info", topic, "--json", "--duration", 3)
        self.assertEqual((errors, code), ("", 0))
        for writer in json.loads(output)["writers"]:
            rate = 200 if writer["process"] == str(fast.process.pid) else 20
            self.assertAlmostEqual(writer["rate"] / rate, 1, delta=0.1)
            self.assertAlmostEqual(writer["bytesPerSecond"], 20 * writer["rate"])
        output, _, _ = self.run_plex("info", topic)
        self.assertRegex(output, r"\n +\d+\.\d values/s, .*B/s\n")
        output, _, _ = self.run_plex("info", topic, "--json", "--duration", 0)
        self.assertNotIn("rate", json.loads(output)["writers"][0])

    def test_people_read_the_same(self):
        topic = self.topic()
        self.bare("write", topic, "best-effort", "north")
        self.bare("read", topic)
        output, _, code = self.run_plex("info", topic)
        self.assertEqual(code, 0)
        self.assertIn(f"{topic}: 1 writer, 1 reader, 0 of 1 pair matched", output)
        self.assertIn("reliability: reliable asked for, best-effort offered", output)
        self.assertIn('partition: "" asked for, "north" offered', output)

    def test_the_nearest_topic_is_named(self):
        self.bare("write", self.topic("shutters"))
        for command in ("info", "echo", "hz"):
            output, errors, code = self.run_plex(command, self.topic("shuters"))
            self.assertEqual((output, code), ("", 3))
            self.assertIn(f'did you mean "{self.topic("shutters")}"?', errors)


class Echo(PlexTest):
    domain = 218

    def values(self, count, *arguments):
        """What `plex echo` shows of so many values of a bare writer."""
        topic = self.topic()
        writer = self.bare("write", topic)
        echo = self.plex("echo", topic, *arguments)
        writer.ask("matched 1")
        writer.ask(f"publish {count} 200")
        return writer, echo

    def test_values_come_as_json_with_time_age_and_publisher(self):
        writer, echo = self.values(100, "--json", "-n", 3)
        output, errors, code = echo.end()
        self.assertEqual(code, 0, errors)
        values = [json.loads(line) for line in output.splitlines()]
        self.assertEqual(len(values), 3)
        first = values[0]["value"]["alt"]
        self.assertEqual([each["value"] for each in values],
                         [{"alt": first + i, "az": -0.5} for i in range(3)])
        self.assertEqual([each["sequence"] for each in values], [int(first) + 1 + i for i in range(3)])
        self.assertEqual(values[0]["publisher"]["process"], str(writer.process.pid))
        self.assertRegex(values[0]["time"], r"^20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{9}Z$")
        self.assertTrue(0 <= values[0]["age"] < 5, values[0]["age"])

    def test_one_value_is_one_line(self):
        writer, echo = self.values(100, "--once")
        output, errors, code = echo.end()
        self.assertEqual(code, 0, errors)
        self.assertRegex(output, rf"^\d\d:\d\d:\d\d\.\d{{6}}  [\d.e+-]+ (s|ms|µs) +\S+ {writer.process.pid}  "
                                 rf"alt=\d+\.0 az=-0\.5\n$")
        self.assertRegex(errors, r"^plex: 1 value in .* from 1 publisher, 0 lost\n$")

    def test_a_filter_chooses(self):
        _, echo = self.values(200, "--filter", "alt >= 150 and not alt == 151 and az < 0", "--format", "{.alt}",
                              "-n", 3)
        output, errors, code = echo.end()
        self.assertEqual((output, code), ("150.0\n152.0\n153.0\n", 0), errors)

    def test_a_filter_that_makes_no_sense_is_refused(self):
        topic = self.topic()
        self.bare("write", topic)
        for text, complaint in (("altt > 4", 'has no member "altt", did you mean "alt"?'), ("alt >", "missing"),
                                ("(alt > 4", "missing"), ("alt.x == 1", "has no members"), ("alt > 4 4", "expected"),
                                ("alt == 'x", "does not end")):
            output, errors, code = self.run_plex("echo", topic, "--filter", text)
            self.assertEqual((output, code), ("", 2), errors)
            self.assertIn(complaint, errors)

    def test_bytes_of_unknown_types_are_shown_and_not_guessed(self):
        topic = self.topic()
        definition = pathlib.Path(os.environ["PLEX_TEST_IDL"]) / "unknown.idl"
        pub = self.plex("pub", topic, "elsewhere::Reading", '{"channel": "a", "number": 258}', "--idl", definition,
                        "--rate", 50, "--wait", 0)
        echo = self.plex("echo", topic, "--json", "--once")
        output, errors, code = echo.end()
        self.assertEqual(code, 0, errors)
        self.assertIn('type "generated::dds_::elsewhere::Reading" is unknown', errors)
        value = json.loads(output)
        self.assertNotIn("value", value)
        self.assertTrue(value["bytes"].startswith("00"), value)
        _, errors, code = self.run_plex("echo", topic, "--filter", "number > 1")
        self.assertEqual(code, 3)
        output, errors, code = self.run_plex("echo", topic, "--idl", definition, "--key", "a", "--format",
                                             "{key} {.number}", "--once")
        self.assertEqual((output, code), ("channel=a 258\n", 0), errors)
        output, errors, code = self.run_plex("echo", topic, "--idl", definition, "--key", "number=258")
        self.assertEqual((output, code), ("", 2), errors)
        self.assertIn('--key "number=258": "number" is no member of the key of elsewhere::Reading; write it as '
                      'member=value\n', errors)
        pub.interrupt()

    def test_a_pipe_that_nobody_reads_ends_it(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        echo = self.plex("echo", topic)
        writer.ask("matched 1")
        echo.process.stdout.close()
        self.assertEqual(echo.process.wait(PATIENCE), 0)

    def test_interrupting_it_gives_the_summary_at_once(self):
        writer, echo = self.values(20)
        echo.line()
        _, errors, code, seconds = echo.interrupt()
        self.assertEqual(code, 0)
        self.assertRegex(errors, r"\d+ values? in .* from 1 publisher")
        self.assertLess(seconds, 2)
        self.assertIsNone(writer.process.poll())

    def test_a_full_disk_is_a_failure(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        with open("/dev/full", "w", encoding="utf-8") as full, subprocess.Popen(
                [PLEX, "echo", topic, "-d", str(self.domain)], stdout=full, stderr=subprocess.PIPE, text=True) as echo:
            writer.ask("matched 1")
            writer.ask("publish 50 200")
            _, errors = echo.communicate(timeout=PATIENCE)
        self.assertEqual(echo.returncode, 1)
        self.assertIn("cannot write to the standard output", errors)


class Cyclone(PlexTest):
    """Topics of another DDS, over the loopback interface."""

    domain = 214
    LOOPBACK = """<dds><profiles xmlns="http://www.eprosima.com">
        <transport_descriptors><transport_descriptor><transport_id>loopback</transport_id><type>UDPv4</type>
            <interfaceWhiteList><address>127.0.0.1</address></interfaceWhiteList>
        </transport_descriptor></transport_descriptors>
        <participant profile_name="loopback" is_default_profile="true"><rtps>
            <userTransports><transport_id>loopback</transport_id></userTransports>
            <useBuiltinTransports>false</useBuiltinTransports>
            <builtin><initialPeersList>
                <locator><udpv4><address>127.0.0.1</address></udpv4></locator>
            </initialPeersList></builtin></rtps></participant></profiles></dds>"""
    PEER = {"CYCLONEDDS_URI": "<Domain><General><Interfaces><NetworkInterface address='127.0.0.1' multicast='false'/>"
                              "</Interfaces><AllowMulticast>false</AllowMulticast></General><Discovery>"
                              "<ParticipantIndex>auto</ParticipantIndex>"
                              "<MaxAutoParticipantIndex>30</MaxAutoParticipantIndex>"
                              "<Peers><Peer address='127.0.0.1'/></Peers></Discovery></Domain>"}

    def setUp(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        self.profiles = pathlib.Path(folder) / "loopback.xml"
        self.profiles.write_text(self.LOOPBACK, encoding="utf-8")

    def peer(self, extensibility, verb, topic, *rest):
        program = PROGRAMS / f"interop-peer-{extensibility}"
        return self.enterContext(Process(program, verb, self.domain, topic, "AltAz", *rest, environment=self.PEER,
                                         last=signal.SIGKILL))

    def plex(self, *arguments):
        settings = {name: str(self.profiles)
                    for name in ("FASTDDS_DEFAULT_PROFILES_FILE", "FASTRTPS_DEFAULT_PROFILES_FILE")}
        return self.enterContext(Process(PLEX, *arguments, "-d", self.domain, environment=settings,
                                         last=signal.SIGINT))

    def test_it_is_seen_with_its_process(self):
        topic = self.topic()
        peer = self.peer("final", "subscribe", topic, "xcdr1", 1)
        output, errors, code = self.plex("info", topic, "--json").end()
        self.assertEqual(code, 0, errors)
        reader = json.loads(output)["readers"][0]
        self.assertEqual((reader["process"], reader["type"]), (str(peer.process.pid), TYPE))

    def test_its_values_are_shown_by_a_definition(self):
        for extensibility, representation in (("final", "xcdr1"), ("appendable", "xcdr2")):
            topic = self.topic(representation)
            values = [number for i in range(4000) for number in (struct.pack(">d", i).hex(), "bff0000000000000")]
            self.peer(extensibility, "publish", topic, representation, *values)
            echo = self.plex("echo", topic, "--idl", os.environ["PLEX_MODULE_IDL"], "--json", "-n", 2)
            output, errors, code = echo.end()
            self.assertEqual(code, 0, errors)
            first, second = [json.loads(line)["value"] for line in output.splitlines()]
            self.assertEqual(second, {"alt": first["alt"] + 1, "az": -1.0})

    def test_it_hears_what_is_published(self):
        topic = self.topic()
        peer = self.peer("appendable", "subscribe", topic, "xcdr2", 2)
        _, errors, code = self.plex("pub", topic, TYPE, '{"alt": 45.5, "az": -1}').end()
        self.assertEqual(code, 0, errors)
        self.plex("pub", topic, TYPE, '{"az": 1}').end()  # the peer ends, and acknowledges no more
        self.assertEqual(peer.end()[0], "4046c00000000000 bff0000000000000\n0000000000000000 3ff0000000000000\n")

    def test_its_values_are_recorded_as_they_are_and_replayed_to_it(self):
        topic, other = self.topic("recorded"), self.topic("replayed")
        file = self.profiles.parent / "recording.mcap"
        values = [number for i in range(4000) for number in (struct.pack(">d", i).hex(), "bff0000000000000")]
        self.peer("appendable", "publish", topic, "xcdr2", *values)
        recorder = self.plex("record", topic, "-o", file, "--idl", os.environ["PLEX_MODULE_IDL"], "-n", 2,
                             "--compression", "none")
        _, errors, code = recorder.end()
        self.assertEqual(code, 0, errors)
        payloads = [payload for *_, payload in mcap_file.Recording(file).messages]
        self.assertEqual([payload[:8].hex() for payload in payloads], ["0009000010000000"] * 2)  # delimited CDR2
        first, second = [struct.unpack_from("<dd", payload, 8) for payload in payloads]
        self.assertEqual(second, (first[0] + 1, -1.0))
        listener = self.peer("appendable", "subscribe", other, "xcdr2", 3)  # stays until all is acknowledged
        _, errors, code = self.plex("replay", file, "--rename", f"{topic}={other}").end()
        self.assertEqual(code, 0, errors)
        heard = [listener.line().split() for _ in range(2)]
        self.assertEqual(heard, [[struct.pack(">d", each).hex() for each in value] for value in (first, second)])


class Measuring(PlexTest):
    domain = 219

    def measured(self, command, count, rate):
        """The reports of a command on so many values, and how long it took to publish them."""
        topic = self.topic()
        writer = self.bare("write", topic)
        process = self.plex(command, topic, "--json", "--interval", 0.5)
        writer.ask("matched 1")
        process.line()  # the writer is matched on this side as well
        seconds = float(writer.ask(f"publish {count} {rate}").split()[1])
        while json.loads(process.line())["values"] > 0:
            pass
        output, _, code, _ = process.interrupt()
        self.assertEqual(code, 0)
        total = json.loads(output.splitlines()[-1])
        self.assertTrue(total["total"])
        return total, seconds

    def test_every_value_is_counted(self):
        total, seconds = self.measured("hz", 3000, 1000)
        self.assertEqual(total["values"] + total["lost"], 3000)
        self.assertEqual(total["lost"], 0)
        self.assertAlmostEqual(total["rate"] / (2999 / seconds), 1, delta=0.02)
        self.assertAlmostEqual(total["interval"]["mean"], seconds / 2999, delta=2e-5)

    def test_bytes_are_those_of_the_payloads(self):
        total, _ = self.measured("bw", 100, 1000)
        self.assertEqual(total["size"], {"mean": 20, "min": 20, "max": 20})
        self.assertEqual(total["bytes"], 2000)

    def test_ages_are_plausible(self):
        total, _ = self.measured("delay", 100, 1000)
        age = total["age"]
        self.assertTrue(0 < age["min"] <= age["median"] <= age["p90"] <= age["p99"] <= age["max"] < 5, age)

    def test_people_read_a_histogram(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        process = self.plex("hz", topic, "--duration", 3, "--interval", 0.5)
        writer.ask("matched 1")
        process.line()
        process.line()
        writer.ask("publish 100 100")
        output, _, code = process.end()
        self.assertEqual(code, 0)
        self.assertIn("altogether", output)
        self.assertRegex(output, r"up to 10 ms +\d+ +#+|up to 20 ms +\d+ +#+")


class Pub(PlexTest):
    domain = 215

    def test_a_value_arrives(self):
        topic = self.topic()
        reader = self.bare("read", topic)
        output, errors, code = self.run_plex("pub", topic, "vexstubif::AltAz", '{"alt": 45.5}', "--json")
        self.assertEqual(code, 0, errors)
        self.assertEqual(json.loads(output), {"topic": topic, "type": TYPE, "values": 1, "readers": 1,
                                              "acknowledged": True})
        self.assertEqual(reader.ask("take 1"), "45.5 0")

    def test_lines_of_the_input_arrive_in_order(self):
        topic = self.topic()
        reader = self.bare("read", topic)
        values = "".join(f'{{"alt": {i}, "az": -{i}}}\n' for i in range(20))
        _, errors, code = self.run_plex("pub", topic, TYPE, "-", given=values)
        self.assertEqual(code, 0, errors)
        self.assertIn("published 20 values to 1 reader", errors)
        reader.say("take 20")
        self.assertEqual([reader.line() for _ in range(20)], [f"{i} {-i}" if i else "0 0" for i in range(20)])

    def test_a_rate_is_kept(self):
        topic = self.topic()
        reader = self.bare("read", topic)
        begin = time.monotonic()
        _, errors, code = self.run_plex("pub", topic, TYPE, '{"az": 1}', "--rate", 50, "-n", 51)
        self.assertEqual(code, 0, errors)
        self.assertGreater(time.monotonic() - begin, 1)
        reader.say("take 51")
        self.assertEqual([reader.line() for _ in range(51)], ["0 1"] * 51)

    def test_what_does_not_fit_is_refused_with_its_member(self):
        for value, complaint in (('{"alt": "high"}', "alt"), ('{"alt": 1, "height": 2}', "height"),
                                 ("{", "JSON"), ("[1]", "object")):
            output, errors, code = self.run_plex("pub", self.topic(), TYPE, value)
            self.assertEqual((output, code), ("", 2), value)
            self.assertIn("this is no value of vexstubif::AltAz", errors)
            self.assertIn(complaint, errors)

    def test_unknown_types_are_named(self):
        _, errors, code = self.run_plex("pub", self.topic(), "dome::Nothing", "{}")
        self.assertEqual(code, 3)
        self.assertIn('type "dome::Nothing" is unknown', errors)

    def test_nobody_listens(self):
        _, errors, code = self.run_plex("pub", self.topic(), TYPE, "{}", "--wait", "0.1")
        self.assertEqual(code, 3)
        self.assertIn("nobody listens to topic", errors)

    def test_why_readers_do_not_match_is_said(self):
        topic = self.topic()
        self.bare("read", topic)
        _, errors, code = self.run_plex("pub", topic, TYPE, "{}", "--representation", "xcdr2", "--wait", "1")
        self.assertEqual(code, 3)
        self.assertIn("data representation: xcdr1 asked for, xcdr2 offered", errors)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]])
