#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""`plex record` and `plex replay` as people use them: in processes of their own.

    test_recording.py CASE   with the environment of test_plex.py

PLEX_RECORDING_SECONDS and PLEX_RECORDING_RATE make the case Exact longer and faster than it is by default.
"""

import json
import os
import pathlib
import pty
import resource
import select
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

import mcap_file
import test_plex
from test_plex import PATIENCE, PLEX, TYPE, Process, run


class RecordingTest(test_plex.PlexTest):
    """Verbs for the cases."""

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.file = self.folder / "recording.mcap"

    def record(self, *arguments, file=None, environment=None, last=signal.SIGINT):
        """A recorder, which may not be there yet."""
        return self.enterContext(Process(PLEX, "record", *arguments, "-o", file or self.file, "-d", self.domain,
                                         environment=environment, last=last))

    def recorded(self, count, *arguments, compression="none", rate=2000):
        """Records values of a bare writer. Returns their topic, and what the recorder says of it."""
        topic = self.topic()
        writer = self.bare("write", topic)
        recorder = self.record(topic, "--compression", compression, "--json", "-n", count, *arguments)
        writer.ask("matched 1")
        while recorder.process.poll() is None:
            writer.ask(f"publish {count} {rate}")
        output, errors, code = recorder.end()
        self.assertEqual(code, 0, errors)
        writer.process.stdin.close()
        writer.process.wait(PATIENCE)
        return topic, json.loads(output)

    def wait_for(self, condition):
        end = time.monotonic() + PATIENCE
        while not condition():
            self.assertLess(time.monotonic(), end, "it takes too long")
            select.select([], [], [], 0.01)


def numbers(messages):
    """Of values of type AltAz: the first member."""
    return [struct.unpack_from("<d", payload, 4)[0] for *_, payload in messages]


class Record(RecordingTest):
    domain = 97

    def test_both_commands_have_help_and_refuse_what_makes_no_sense(self):
        for command in ("record", "replay"):
            self.assertIn(command, run("--help")[0])
            output, errors, code = run(command, "--help")
            self.assertEqual((errors, code), ("", 0))
            self.assertIn("--domain", output)
            self.assertIn("--json", output)
        for arguments in (["record"], ["record", "-o", "f", "--compression", "zip"], ["record", "-o", "f", "-n", "0"],
                          ["record", "-o", "f", "--duration", "-1"], ["replay"], ["replay", "f", "--speed", "-1"]):
            _, errors, code = run(*arguments)
            self.assertEqual(code, 2, arguments)
            self.assertNotEqual(errors, "")

    def test_values_come_with_times_numbers_and_what_they_are(self):
        before = time.time_ns()
        topic, said = self.recorded(200)
        recording = mcap_file.Recording(self.file)
        self.assertTrue(recording.is_complete)
        self.assertEqual(said["values"], 200)
        self.assertEqual([each["topic"] for each in said["topics"]], [topic])
        self.assertEqual(len(recording.messages), 200)
        (channel,) = recording.channels.values()
        self.assertEqual((channel["topic"], channel["encoding"]), (topic, "cdr"))
        metadata = channel["metadata"]
        self.assertEqual(metadata["dds.type"], TYPE)
        self.assertEqual(metadata["dds.keyed"], "false")
        self.assertEqual(metadata["dds.qos.reliability"], "reliable")
        self.assertEqual(metadata["dds.qos.data representation"], "xcdr1")
        name, encoding, definition = recording.schemas[channel["schema"]]
        self.assertEqual((name, encoding), ("vexstubif::AltAz", "omgidl"))
        self.assertRegex(definition, r"module vexstubif\s*\{[^#]*struct AltAz\s*\{[^}]*double alt;")
        first = recording.messages[0]
        for i, (_, sequence, log_time, publish_time, payload) in enumerate(recording.messages):
            self.assertEqual(len(payload), 20)
            self.assertEqual(struct.unpack_from("<d", payload, 12)[0], -0.5)
            self.assertEqual(sequence - first[1], i)
            self.assertTrue(before < publish_time <= log_time < time.time_ns())

    def test_a_file_that_is_there_is_kept_unless_forced(self):
        self.file.write_text("precious", encoding="utf-8")
        _, errors, code = self.run_plex("record", "-o", self.file)
        self.assertEqual(code, 2)
        self.assertIn("is there already; --force replaces it", errors)
        self.assertEqual(self.file.read_text(encoding="utf-8"), "precious")
        self.recorded(5, "--force")
        self.assertEqual(len(mcap_file.Recording(self.file).messages), 5)

    def test_a_file_that_can_not_be_made_is_a_failure(self):
        topic = self.topic()
        self.bare("write", topic)
        _, errors, code = self.run_plex("record", topic, "-o", self.folder / "missing" / "file")
        self.assertEqual(code, 1)
        self.assertIn("No such file or directory", errors)

    def test_topics_that_appear_later_are_recorded_as_well(self):
        early = self.topic("early")
        writers = {early: self.bare("write", early)}
        recorder = self.record("--compression", "none", "--json")
        writers[early].ask("matched 1")
        for name in ("late", "later"):
            writers[self.topic(name)] = self.bare("write", self.topic(name))
        for writer in writers.values():
            writer.ask("matched 1")
        # A best-effort reader may hear of a writer a little later than that of it.
        sizes = {topic: 0 for topic in writers}
        while not all(sizes.values()):
            for writer in writers.values():
                writer.ask("publish 100 1000")
            recording = mcap_file.Recording(self.file)
            sizes = {topic: len(recording.of(topic)) for topic in writers}
        output, errors, code, _ = recorder.interrupt()
        self.assertEqual(code, 0, errors)
        said = {each["topic"]: each["values"] for each in json.loads(output)["topics"]}
        recording = mcap_file.Recording(self.file)
        for topic in writers:
            self.assertEqual(said[topic], len(recording.of(topic)))

    def test_two_writers_have_a_channel_each(self):
        topic = self.topic()
        writers = [self.bare("write", topic), self.bare("write", topic, "best-effort", "north")]
        recorder = self.record(topic, "--compression", "none")
        recording = None
        while recording is None or len(recording.channels) < 2:
            for writer in writers:
                writer.ask("matched 1")
                writer.ask("publish 100 1000")
            if self.file.exists() and self.file.stat().st_size > 0:
                recording = mcap_file.Recording(self.file)
        recorder.interrupt()
        found = {(channel["metadata"]["dds.partitions"], channel["metadata"]["dds.qos.reliability"])
                 for channel in recording.channels.values()}
        self.assertEqual(found, {("[]", "reliable"), ('["north"]', "best-effort")})

    def test_unknown_types_are_recorded_without_a_definition(self):
        topic = self.topic()
        definition = pathlib.Path(os.environ["PLEX_TEST_IDL"]) / "unknown.idl"
        self.plex("pub", topic, "elsewhere::Reading", '{"channel": "a", "number": 258}', "--idl", definition,
                  "--rate", 100, "--wait", 0)
        _, errors, code = self.run_plex("record", topic, "-o", self.file, "-n", 3, "--compression", "none")
        self.assertEqual(code, 0, errors)
        self.assertIn('type "generated::dds_::elsewhere::Reading" of topic', errors)
        (channel,) = mcap_file.Recording(self.file).channels.values()
        self.assertEqual(channel["schema"], 0)
        self.assertEqual(channel["metadata"]["dds.type"], "generated::dds_::elsewhere::Reading")
        self.assertEqual(channel["metadata"]["dds.keyed"], "true")
        _, errors, code = self.run_plex("replay", self.file)
        self.assertEqual(code, 2)
        self.assertIn("has a key and is unknown: name its definition with --idl", errors)

    def test_interrupting_it_gives_the_summary_at_once(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        recorder = self.record(topic)
        writer.ask("matched 1")
        writer.ask("publish 500 1000")
        self.wait_for(lambda: self.file.stat().st_size > 500)
        output, errors, code, seconds = recorder.interrupt()
        self.assertEqual(code, 0)
        self.assertRegex(output, rf"TOPIC +VALUES +BYTES +LOST\n{topic} +\d+ +[\d.]+ k?B +0\n")
        self.assertRegex(errors, r"plex: recorded \d+ values of 1 topic in .*, as a file .*, 0 lost\n")
        self.assertLess(seconds, 2)

    def test_a_duration_ends_it(self):
        topic = self.topic()
        self.bare("write", topic)
        begin = time.monotonic()
        output, errors, code = self.run_plex("record", topic, "-o", self.file, "--duration", 1, "--json")
        self.assertEqual(code, 0, errors)
        self.assertGreater(time.monotonic() - begin, 1)
        self.assertEqual(json.loads(output)["values"], 0)
        self.assertTrue(mcap_file.Recording(self.file).is_complete)

    def test_the_nearest_topic_is_named(self):
        self.bare("write", self.topic("shutters"))
        _, errors, code = self.run_plex("record", self.topic("shuters"), "-o", self.file)
        self.assertEqual(code, 3)
        self.assertIn(f'did you mean "{self.topic("shutters")}"?', errors)
        self.assertFalse(self.file.exists())

    def test_a_terminal_shows_progress(self):
        topic = self.topic()
        self.bare("write", topic)
        ours, theirs = pty.openpty()
        with subprocess.Popen([PLEX, "record", topic, "-o", self.file, "-d", str(self.domain), "--duration", "1"],
                              stdout=subprocess.DEVNULL, stderr=theirs) as process:
            os.close(theirs)
            shown = b""
            while b"\n" not in shown:
                shown += os.read(ours, 4096)
            self.assertEqual(process.wait(PATIENCE), 0)
        os.close(ours)
        self.assertIn(b"\rrecording: ".replace(b"\r", b"\r\033[K"), shown)
        self.assertIn(b"\r\033[Kplex: recorded 0 values of 1 topic", shown)


class Lost(RecordingTest):
    """Recorders that come to a bad end."""

    domain = 98

    def test_a_kill_leaves_all_but_the_last_moment(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        profiles = self.folder / "loopback.xml"  # with shared memory, a kill would leave files there
        profiles.write_text(test_plex.Cyclone.LOOPBACK, encoding="utf-8")
        recorder = self.record(topic, "--compression", "none", last=signal.SIGKILL, environment={
            name: str(profiles) for name in ("FASTDDS_DEFAULT_PROFILES_FILE", "FASTRTPS_DEFAULT_PROFILES_FILE")})
        writer.ask("matched 1")
        published = 0
        while not self.file.exists() or not mcap_file.Recording(self.file).messages:
            writer.ask("publish 100 1000")
            published += 100
        known = len(mcap_file.Recording(self.file).messages)
        writer.ask("publish 2000 1000")
        published += 2000
        recorder.process.kill()
        recorder.process.wait(PATIENCE)
        recording = mcap_file.Recording(self.file)
        self.assertFalse(recording.is_complete)
        sequences = [message[1] for message in recording.messages]
        self.assertGreater(len(sequences), known)
        self.assertGreater(sequences[-1], published - 1500)  # so many are sent in 1.5 s
        for value, sequence in zip(numbers(recording.messages), sequences):
            self.assertEqual(value, (sequence - 1 - (published - 2000) if sequence > published - 2000
                                     else (sequence - 1) % 100))
        _, errors, code = self.run_plex("replay", self.file, "--speed", 0, "--wait", 0)
        self.assertEqual(code, 0, errors)
        self.assertIn(f'it was cut off at byte {self.file.stat().st_size}; what it has up to there is '
                      f'{len(sequences)} values', errors)
        self.assertIn(f"published {len(sequences)} values", errors)

    def test_a_full_disk_is_a_failure_and_leaves_a_readable_file(self):
        topic = self.topic()
        writer = self.bare("write", topic)
        with subprocess.Popen(
                [PLEX, "record", topic, "-o", self.file, "-d", str(self.domain), "--compression", "none"],
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))) as recorder:
            writer.ask("matched 1")
            while recorder.poll() is None:
                writer.ask("publish 200 1000")
            _, errors = recorder.communicate(timeout=PATIENCE)
        self.assertEqual(recorder.returncode, 1)
        self.assertIn(f'cannot write "{self.file}": File too large; what was written before can be replayed', errors)
        recording = mcap_file.Recording(self.file)
        self.assertGreater(len(recording.messages), 100)
        _, errors, code = self.run_plex("replay", self.file, "--speed", 0, "--wait", 0)
        self.assertEqual(code, 0, errors)
        self.assertIn(f"published {len(recording.messages)} values", errors)


class Replay(RecordingTest):
    domain = 99

    def test_values_arrive_as_they_were(self):
        topic, _ = self.recorded(100)
        expected = numbers(mcap_file.Recording(self.file).messages)
        reader = self.bare("read", topic)
        output, errors, code = self.run_plex("replay", self.file, "--json")
        self.assertEqual(code, 0, errors)
        said = json.loads(output)
        self.assertEqual((said["values"], said["topics"], said["acknowledged"]), (100, [topic], True))
        reader.say("take 100")
        self.assertEqual([reader.line() for _ in range(100)], [f"{value:g} -0.5" for value in expected])

    def test_the_spacing_is_kept_and_changed_by_a_speed(self):
        self.recorded(101, rate=50)
        messages = mcap_file.Recording(self.file).messages
        span = (messages[-1][2] - messages[0][2]) * 1e-9
        for speed, expected in ((1, span), (4, span / 4)):
            output, errors, code = self.run_plex("replay", self.file, "--json", "--speed", speed, "--wait", 0)
            self.assertEqual(code, 0, errors)
            seconds = json.loads(output)["seconds"]
            self.assertGreaterEqual(seconds, expected)
            self.assertLess(seconds, expected + 1)
        output, _, _ = self.run_plex("replay", self.file, "--json", "--speed", 0, "--wait", 0)
        self.assertLess(json.loads(output)["seconds"], span / 2)

    def test_topics_are_chosen_and_renamed(self):
        topics = [self.topic("a"), self.topic("b")]
        writers = [self.bare("write", topic) for topic in topics]
        recorder = self.record(*topics, "--compression", "none")
        recording = None
        while recording is None or not all(recording.of(topic) for topic in topics):
            for writer in writers:
                writer.ask("publish 50 1000")
            if self.file.exists() and self.file.stat().st_size > 0:
                recording = mcap_file.Recording(self.file)
        recorder.interrupt()
        new = self.topic("new")
        reader = self.bare("read", new)
        output, errors, code = self.run_plex("replay", self.file, "--json", "--speed", 0, "--topics", topics[1],
                                             "--rename", f"{topics[1]}={new}")
        self.assertEqual(code, 0, errors)
        count = len(mcap_file.Recording(self.file).of(topics[1]))
        self.assertEqual((json.loads(output)["topics"], json.loads(output)["values"]), ([new], count))
        reader.say(f"take {count}")
        self.assertEqual(reader.line(), f"{numbers(mcap_file.Recording(self.file).of(topics[1]))[0]:g} -0.5")
        for arguments, exit_code, complaint in (
                (("--topics", self.topic("aa")), 3, f'it has no topic "{self.topic("aa")}"'),
                (("--rename", f"{self.topic('c')}=d"), 3, f'it has no topic "{self.topic("c")}"'),
                (("--rename", "c"), 2, "is not OLD=NEW")):
            _, errors, code = self.run_plex("replay", self.file, *arguments)
            self.assertEqual(code, exit_code)
            self.assertIn(complaint, errors)

    def test_a_loop_goes_on_until_it_is_interrupted(self):
        topic, _ = self.recorded(20)
        reader = self.bare("read", topic)
        replay = self.plex("replay", self.file, "--loop")
        reader.say("take 100")
        first = [reader.line() for _ in range(20)]
        for _ in range(4):
            self.assertEqual([reader.line() for _ in range(20)], first)
        _, errors, code, seconds = replay.interrupt()
        self.assertEqual(code, 0)
        self.assertIn("plex: published", errors)
        self.assertLess(seconds, 3)

    def test_nobody_listens(self):
        topic, _ = self.recorded(5)
        _, errors, code = self.run_plex("replay", self.file, "--wait", "0.1")
        self.assertEqual(code, 0)
        self.assertIn(f'nobody listens to topic "{topic}"', errors)
        self.assertIn("published 5 values of 1 topic", errors)

    def test_values_with_keys_belong_to_their_instances(self):
        topic = self.topic()
        definition = pathlib.Path(os.environ["PLEX_TEST_IDL"]) / "unknown.idl"
        types = ("--idl", definition)
        for number, channel in enumerate("ab"):
            self.plex("pub", topic, "elsewhere::Reading", f'{{"channel": "{channel}", "number": {number}}}', *types,
                      "--rate", 50, "--wait", 0)
        recorder = self.record("--compression", "none", *types)
        self.wait_for(lambda: self.file.exists() and self.file.stat().st_size > 0 and
                      len({message[0] for message in mcap_file.Recording(self.file).of(topic)}) == 2)
        recorder.interrupt()
        replayed = self.topic("replayed")
        replay = self.plex("replay", self.file, "--topics", topic, "--rename", f"{topic}={replayed}", "--loop",
                           "--wait", PATIENCE)
        echo = ("echo", replayed, *types, "--key", "b", "--format", "{key} {.number}", "-n", 1)
        self.wait_for(lambda: self.run_plex(*echo)[0] == "channel=b 1\n")  # once its topic is seen
        replay.interrupt()

    def test_what_can_not_be_replayed_is_refused(self):
        for content, complaint in (
                (b"", "this is no MCAP file of version 0: it begins otherwise, at byte 0"),
                (b"#ROSBAG V2.0\n", "this is no MCAP file of version 0"),
                (mcap_file.MAGIC, "there is nothing to replay")):
            self.file.write_bytes(content)
            _, errors, code = self.run_plex("replay", self.file)
            self.assertEqual(code, 2, errors)
            self.assertIn(f'"{self.file}": ', errors)
            self.assertIn(complaint, errors)
        _, errors, code = self.run_plex("replay", self.folder / "missing")
        self.assertEqual(code, 1)
        self.assertIn("No such file or directory", errors)

    def test_a_damaged_file_is_refused(self):
        self.recorded(50)
        whole = bytearray(self.file.read_bytes())
        whole[len(mcap_file.MAGIC) + 200] ^= 1  # in the first chunk
        self.file.write_bytes(whole)
        _, errors, code = self.run_plex("replay", self.file, "--wait", 0)
        self.assertEqual(code, 2, errors)
        self.assertRegex(errors, r"a chunk has a wrong checksum, at byte \d+\n")

    def test_other_encodings_are_named(self):
        def text(value):
            return struct.pack("<I", len(value)) + value.encode()

        def record(kind, content):
            return struct.pack("<BQ", kind, len(content)) + content

        def channel(number, topic, encoding):
            return record(4, struct.pack("<HH", number, 0) + text(topic) + text(encoding) + text(""))

        self.file.write_bytes(mcap_file.MAGIC + record(1, text("") + text("")) + channel(1, "web", "json") +
                              channel(2, "robot", "cdr") + record(15, bytes(4)) + record(2, bytes(20)) +
                              mcap_file.MAGIC)
        _, errors, code = self.run_plex("replay", self.file)
        self.assertEqual(code, 2)
        self.assertIn('topic "web" can not be replayed: its values are encoded as "json", not as "cdr"', errors)
        self.assertIn('topic "robot" can not be replayed: nothing says what its type is called in DDS', errors)


class OtherReader(RecordingTest):
    """The format's own programs for Node.js, which are no part of the project.

    PLEX_NODE_MODULES names a folder with the packages @mcap/core, fzstd and lz4js.
    """

    domain = 101
    MODULES = os.environ.get("PLEX_NODE_MODULES")

    def setUp(self):
        super().setUp()
        if not shutil.which("node") or not self.MODULES:
            self.skipTest("there is no node, or PLEX_NODE_MODULES names no packages for it")

    def ask(self, *arguments):
        script = pathlib.Path(__file__).with_name("mcap-core.mjs")
        done = subprocess.run(["node", script, self.MODULES, *arguments], capture_output=True, text=True,
                              timeout=PATIENCE, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        return json.loads(done.stdout) if done.stdout else None

    def test_it_reads_what_was_recorded(self):
        for compression in ("zstd", "lz4", "none"):
            topic, said = self.recorded(500, "--force", compression=compression)
            for way in ("stream", "index"):
                found = self.ask("read", way, self.file)
                self.assertEqual([channel["topic"] for channel in found["channels"]], [topic])
                self.assertEqual([schema["name"] for schema in found["schemas"]], ["vexstubif::AltAz"])
                self.assertIn("struct AltAz", found["schemas"][0]["data"])
                values = [struct.unpack_from("<d", bytes.fromhex(each["data"]), 4)[0] for each in found["messages"]]
                self.assertEqual(len(values), said["values"])
                self.assertEqual(values, list(range(int(values[0]), int(values[0]) + 500)))
                sequences = [each["sequence"] for each in found["messages"]]
                self.assertEqual(sequences, list(range(sequences[0], sequences[0] + 500)))

    def test_what_it_writes_is_replayed(self):
        topic = self.topic()
        for compression in ("none", "lz4"):
            self.ask("write", compression, self.file, topic, TYPE)
            reader = self.bare("read", topic)
            _, errors, code = self.run_plex("replay", self.file)
            self.assertEqual(code, 0, errors)
            reader.say("take 100")
            self.assertEqual([reader.line() for _ in range(100)], [f"{i} 0.25" for i in range(100)])


class Exact(RecordingTest):
    """A recording that is replayed and recorded again, value by value."""

    domain = 100
    SECONDS = float(os.environ.get("PLEX_RECORDING_SECONDS", "2"))
    RATE = float(os.environ.get("PLEX_RECORDING_RATE", "1000"))

    def test_two_topics_come_back_value_by_value(self):
        topics = [self.topic("a"), self.topic("b")]
        count = int(self.SECONDS * self.RATE)
        first, second = self.folder / "first.mcap", self.folder / "second.mcap"
        writers = [self.bare("write", topic) for topic in topics]
        recorder = self.record(*topics, "--compression", "none", "--json", file=first)
        for writer in writers:
            writer.ask("matched 1")
        for writer in writers:
            writer.say(f"publish {count} {self.RATE}")
        for writer in writers:
            self.patiently(writer)
        output, errors, code, _ = recorder.interrupt()
        self.assertEqual(code, 0, errors)
        self.report("recorded", output)
        original = mcap_file.Recording(first)
        for topic in topics:
            for message, value in zip(original.of(topic), numbers(original.of(topic))):
                self.assertEqual(value, message[1] - 1)

        for writer in writers:
            writer.process.stdin.close()
            writer.process.wait(PATIENCE)
        again = self.record("--compression", "none", "--json", file=second)
        replay = self.plex("replay", first, "--wait", PATIENCE, "--json")
        output, errors = replay.process.communicate(timeout=PATIENCE + 2 * self.SECONDS)
        self.assertEqual(replay.process.returncode, 0, errors)
        self.report("replayed", output)
        self.settle(second)
        output, errors, code, _ = again.interrupt()
        self.assertEqual(code, 0, errors)
        self.report("recorded again", output)
        copy = mcap_file.Recording(second)
        for topic in topics:
            sent, received = original.of(topic), copy.of(topic)
            self.assertGreater(len(received), 0.99 * len(sent))
            for _, sequence, _, _, payload in received:
                self.assertEqual(payload, sent[sequence - 1][4])
            if len(received) < len(sent):  # best-effort, on a machine that was busy
                print(f"{topic}: {len(sent) - len(received)} of {len(sent)} lost on the second way")

    def patiently(self, writer):
        """Waits for the answer of a writer that takes its time."""
        ready, _, _ = select.select([writer.process.stdout], [], [], PATIENCE + self.SECONDS)
        self.assertTrue(ready)
        return writer.line()

    def settle(self, file):
        """Waits until a file does not grow for a second."""
        size, since = -1, time.monotonic()
        while time.monotonic() - since < 1:
            select.select([], [], [], 0.05)
            if file.stat().st_size != size:
                size, since = file.stat().st_size, time.monotonic()

    @staticmethod
    def report(what, output):
        print(f"{what}: {output.strip()}", flush=True)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]])
