#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares what travels with docs/wire-format.md, as tshark decodes it.

    capture.py PROGRAMS    the directory of interop-sender, interop-peer-* and interop-tests

Publishers, some of the project and some of the peer, send to readers of the peer by UDP; then the peer sends back what
it was sent of types with members of each kind. Packets are captured in a network of their own, of which only the
loopback interface is there. Where the system lets nobody make one or capture in it, the exit code is 77: skipped.
"""

import os
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree as ElementTree
from pathlib import Path

SKIPPED = 77
PATIENCE = 30  # seconds
INSIDE = "PLEX_CAPTURE_INSIDE"  # set in the environment of the second run of this script, in the new network
DOMAIN = "1"

PEER_SETTINGS = """<Domain>
  <General>
    <Interfaces><NetworkInterface address='127.0.0.1' multicast='false'/></Interfaces>
    <AllowMulticast>false</AllowMulticast>
  </General>
  <Discovery>
    <ParticipantIndex>auto</ParticipantIndex><MaxAutoParticipantIndex>20</MaxAutoParticipantIndex>
    <Peers><Peer address='127.0.0.1'/></Peers>
  </Discovery>
</Domain>"""

# 45.5, a signalling NaN, -0.0 and the largest finite number, by their bits
NUMBERS = [0x4046C00000000000, 0x7FF0000000000001, 0x8000000000000000, 0x7FEFFFFFFFFFFFFF]
SECONDS = 1700000000.25  # the source timestamp of the first value; each further one is a quarter of a second later
MEMBERS = {"AltAz": 2, "DomeTemperature": 1}
ORDER = "<" if sys.byteorder == "little" else ">"

# publisher, its type and representation; the identifier that its payloads begin with on a little-endian machine,
# whether a delimiter header follows, and the representations that it announces (none means version 1)
XCDR1, XCDR2 = 0, 2
FLOWS = [
    ("sender", "AltAz", "default", 0x0001, False, []),
    ("sender", "AltAz", "xcdr1", 0x0001, False, [XCDR1]),
    ("sender", "AltAz", "xcdr2", 0x0009, True, [XCDR2]),
    ("sender", "DomeTemperature", "default", 0x0001, False, []),
    ("sender", "DomeTemperature", "xcdr1", 0x0001, False, [XCDR1]),
    ("sender", "DomeTemperature", "xcdr2", 0x0009, True, [XCDR2]),
    ("peer-final", "AltAz", "xcdr1", 0x0001, False, []),
    ("peer-final", "AltAz", "xcdr2", 0x0007, False, [XCDR2]),
    ("peer-appendable", "AltAz", "xcdr2", 0x0009, True, [XCDR2]),
]

# types of Kinds.idl and the representation in which they are sent: the identifier of their payloads, and whether the
# peer writes the same bytes (of mutable types it writes other headers, see KindsTest.cpp)
KINDS = {
    ("Plain", "xcdr1"): (0x0001, True),
    ("Plain", "xcdr2"): (0x0007, True),
    ("Frozen", "xcdr2"): (0x0007, True),
    ("Growing", "xcdr2"): (0x0009, True),
    ("Loose", "xcdr2"): (0x000B, False),
}


def topic_of(flow):
    publisher, type_name, representation = flow[:3]
    return "/".join(("capture", publisher.replace("-", "_"), type_name, representation))


def values_of(type_name):
    """The values that are published, each a list of numbers."""
    count = MEMBERS[type_name]
    return [NUMBERS[i : i + count] for i in range(0, len(NUMBERS), count)]


def expected_samples(flow):
    """What each sample of a flow must look like: see docs/wire-format.md, "What is written"."""
    publisher, type_name, _, identifier, delimited, _ = flow
    samples = []
    for i, value in enumerate(values_of(type_name)):
        members = struct.pack(f"{ORDER}{len(value)}Q", *value)
        delimiter = struct.pack(f"{ORDER}I", len(members)) if delimited else b""
        timestamp = SECONDS + 0.25 * i if publisher == "sender" else None
        samples.append((identifier - (ORDER == ">"), 0, (delimiter + members).hex(), timestamp))
    return samples


def publish(programs, flow):
    publisher, type_name, representation = flow[:3]
    numbers = [f"{number:016x}" for number in NUMBERS]
    if publisher == "sender":
        rest = [DOMAIN, topic_of(flow), type_name, representation, str(SECONDS)]
    else:
        rest = ["publish", DOMAIN, topic_of(flow), type_name, representation]
    return subprocess.Popen([f"{programs}/interop-{publisher}", *rest, *numbers], stdin=subprocess.PIPE)


def subscribe(programs, flow):
    """A reader of the peer that is able to read a flow."""
    publisher, type_name, representation = flow[:3]
    extensibility = "appendable" if representation == "xcdr2" and publisher != "peer-final" else "final"
    return subprocess.Popen(
        [f"{programs}/interop-peer-{extensibility}", "subscribe", DOMAIN, topic_of(flow), type_name,
         "xcdr2" if representation == "xcdr2" else "xcdr1", str(len(values_of(type_name)))],
        stdout=subprocess.PIPE, text=True)


def exchange(programs):
    """Lets every flow arrive at its reader."""
    publishers = [publish(programs, flow) for flow in FLOWS]
    subscribers = [subscribe(programs, flow) for flow in FLOWS]
    try:
        for flow, subscriber in zip(FLOWS, subscribers):
            output, _ = subscriber.communicate(timeout=PATIENCE)
            expected = [" ".join(f"{number:016x}" for number in value) for value in values_of(flow[1])]
            check(topic_of(flow) + " at its reader", output.split("\n")[:-1], expected)
        for publisher in publishers:
            publisher.stdin.close()
            check("exit code of a publisher", publisher.wait(timeout=PATIENCE), 0)
    finally:
        for process in publishers + subscribers:
            process.kill()
            process.wait()


def exchange_kinds(programs):
    """Lets the peer send back what a test publishes."""
    if not Path(f"{programs}/interop-echo").exists():
        return False  # built without the generator
    subprocess.run([f"{programs}/interop-tests", "--gtest_filter=KindsTest.*"], check=True, stdout=subprocess.DEVNULL,
                   timeout=2 * PATIENCE)
    return True


class Capture:
    """Packets of the loopback interface, written to a file."""

    def __init__(self, file):
        self.file = Path(file)
        self.dumpcap = subprocess.Popen(
            ["dumpcap", "-q", "-i", "lo", "-w", file], stderr=subprocess.PIPE, text=True)
        said = []
        for line in self.dumpcap.stderr:
            said.append(line.strip())
            if line.startswith("File:"):
                return
        skip("; ".join(said))

    def end(self):
        """Waits until all that was sent is in the file."""
        mark = os.urandom(16)
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
            udp.bind(("127.0.0.1", 0))  # a port of its own receives what is sent to it
            udp.sendto(mark, udp.getsockname())
        end = time.monotonic() + PATIENCE
        while mark not in self.file.read_bytes():
            if time.monotonic() > end:
                sys.exit("the capture does not get on")
            time.sleep(0.05)
        self.dumpcap.send_signal(signal.SIGINT)
        self.dumpcap.communicate(timeout=PATIENCE)


def decode(file):
    """The DATA submessages of the flows as tshark tells them: the fields of each by name, and the time stamp before it."""
    name = "rtps.param.topicName"
    wanted = f'rtps.sm.id == 0x15 and ({name} contains "capture/" or {name} contains "kinds/")'
    # In two passes, as a sample may be sent before its writer's announcement, which says what topic it is of; and by what
    # is in a packet first, as the port that the system gave a participant may be known as that of another protocol.
    text = subprocess.run(
        ["tshark", "-2", "-o", "udp.try_heuristic_first:TRUE", "-r", file, "-Y", wanted, "-T", "pdml"],
        check=True, capture_output=True, timeout=PATIENCE).stdout
    for packet in ElementTree.fromstring(text):
        for message in packet.iter("proto"):
            if message.get("name") != "rtps":
                continue
            timestamp = None
            for submessage in message:
                fields = {}
                for field in submessage.iter("field"):
                    fields.setdefault(field.get("name"), []).append(field)
                if "rtps.info_ts.timestamp" in fields:
                    raw = bytes.fromhex(fields["rtps.info_ts.timestamp"][0].get("value"))
                    seconds, fraction = struct.unpack(f"{ORDER}iI", raw)
                    timestamp = seconds + fraction / 2**32
                if submessage.get("name") == "rtps.sm.id" and "DATA (0x15)" in submessage.get("showname"):
                    yield fields, timestamp


def show(fields, name):
    return fields[name][0].get("show") if name in fields else None


def check(what, found, expected):
    if found != expected:
        sys.exit(f"{what}\n  is        {found}\n  should be {expected}")


def gather(messages):
    """What was announced of each topic, and its samples by their sequence numbers."""
    announced, samples = {}, {}
    for fields, timestamp in messages:
        topic = show(fields, "rtps.param.topicName")
        if "rtps.param.endpoint_guid" in fields:
            if show(fields, "rtps.sm.wrEntityId") == "0x000003c2":  # publications
                announced[topic] = (
                    show(fields, "rtps.param.typeName"),
                    [int(field.get("show")) for field in fields.get("rtps.param.data_representation", [])])
        elif topic is not None and show(fields, "rtps.flag.data_present") == "True":
            # what tshark calls the rest of a payload depends on its encapsulation
            payload = fields.get("rtps.data.serialize_data") or fields["rtps.issueData"]
            samples.setdefault(topic, {})[int(show(fields, "rtps.sm.seqNumber"))] = (
                int(show(fields, "rtps.param.serialize.encap_kind"), 16),
                int(show(fields, "rtps.param.serialize.encap_len") or show(fields, "rtps.padding_bytes"), 16),
                payload[0].get("value"),
                timestamp)
    return announced, samples


def check_flows(announced, samples):
    for flow in FLOWS:
        topic = topic_of(flow)
        check(f"announcement of {topic}", announced.get(topic), (f"generated::dds_::vexstubif::{flow[1]}", flow[5]))
        expected = expected_samples(flow)
        found = samples.get(topic, {})
        check(f"sequence numbers of {topic}", sorted(found), list(range(1, len(expected) + 1)))
        for number, sample in enumerate(expected, 1):
            timed = sample if sample[3] is not None else sample[:3]
            check(f"sample {number} of {topic}", found[number][: len(timed)], timed)


def check_kinds(announced, samples):
    for (type_name, representation), (identifier, same_bytes) in KINDS.items():
        prefix = f"kinds/{type_name}_{representation}/"
        topics = sorted(topic for topic in samples if topic.startswith(prefix))
        check(f"topics {prefix}", [topic.endswith("_back") for topic in topics], [False, True])
        for topic in topics:
            check(f"type of {topic}", announced[topic][0], f"kinds::{type_name}")
            encodings = [sample[0] for sample in samples[topic].values()]
            check(f"encodings of {topic}", encodings, 2 * [identifier - (ORDER == ">")])
        if same_bytes:
            there, back = (sorted(sample[2] for sample in samples[topic].values()) for topic in topics)
            check(f"payloads of {topics[1]}", back, there)


def skip(why):
    print(f"skipped, as nobody may capture packets here: {why}")
    sys.exit(SKIPPED)


def run_inside(programs):
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    os.environ["CYCLONEDDS_URI"] = PEER_SETTINGS
    with tempfile.TemporaryDirectory() as directory:
        capture = Capture(f"{directory}/packets.pcapng")
        exchange(programs)
        has_kinds = exchange_kinds(programs)
        capture.end()
        found = gather(decode(capture.file))
        check_flows(*found)
        if has_kinds:
            check_kinds(*found)


def main():
    programs = sys.argv[1]
    if INSIDE in os.environ:
        run_inside(programs)
        return
    for tool in ("unshare", "ip", "dumpcap", "tshark"):
        if shutil.which(tool) is None:
            skip(f"there is no {tool}")
    network = ["unshare", "--map-root-user", "--net"]
    probe = subprocess.run([*network, "ip", "link", "set", "lo", "up"], capture_output=True, text=True)
    if probe.returncode != 0:
        skip(probe.stderr.strip())
    os.execvpe(network[0], [*network, sys.executable, __file__, programs], {**os.environ, INSIDE: "yes"})


main()
