# SPDX-License-Identifier: Apache-2.0
"""Reads recordings that are not compressed, by the format's description and apart from the project's own reader."""

import struct
import zlib

MAGIC = b"\x89MCAP0\r\n"


class Recording:
    """A file: its schemas and channels by number, its messages in the order of the file."""

    def __init__(self, path):
        self.bytes = path.read_bytes()
        assert self.bytes[:8] == MAGIC
        self.is_complete = self.bytes.endswith(MAGIC) and len(self.bytes) > 45
        self.schemas = {}
        self.channels = {}
        self.messages = []  # (channel, sequence, log time, publish time, payload)
        self.read(self.bytes, 8, self.records(len(self.bytes) - 8 if self.is_complete else len(self.bytes)))

    def records(self, end):
        """How the records of the file are dealt with, by their kind."""
        def chunk(content):
            (_, _, size, crc), rest = struct.unpack_from("<QQQI", content), content[28:]
            compression, rest = text(rest)
            assert compression == "", compression
            data = rest[8:]
            assert len(data) == size and zlib.crc32(data) == crc
            self.read(data, 0, {3: self.schema, 4: self.channel, 5: self.message, "end": len(data)})

        return {6: chunk, "end": end}

    @staticmethod
    def read(data, offset, handlers):
        while offset + 9 <= handlers["end"]:
            kind, length = struct.unpack_from("<BQ", data, offset)
            if offset + 9 + length > handlers["end"]:
                return  # it was cut off here
            if kind == 15:
                return  # what follows repeats what was there
            if kind in handlers:
                handlers[kind](data[offset + 9:offset + 9 + length])
            offset += 9 + length

    def schema(self, content):
        number, rest = struct.unpack_from("<H", content)[0], content[2:]
        name, rest = text(rest)
        encoding, rest = text(rest)
        self.schemas[number] = (name, encoding, text(rest)[0])

    def channel(self, content):
        (number, schema), rest = struct.unpack_from("<HH", content), content[4:]
        topic, rest = text(rest)
        encoding, rest = text(rest)
        rest, metadata = rest[4:], {}
        while rest:
            key, rest = text(rest)
            metadata[key], rest = text(rest)
        self.channels[number] = {"schema": schema, "topic": topic, "encoding": encoding, "metadata": metadata}

    def message(self, content):
        self.messages.append((*struct.unpack_from("<HIQQ", content), content[22:]))

    def of(self, topic):
        """The messages of a topic."""
        numbers = {number for number, channel in self.channels.items() if channel["topic"] == topic}
        return [message for message in self.messages if message[0] in numbers]


def text(data):
    """A text, and what follows it."""
    size = struct.unpack_from("<I", data)[0]
    return data[4:4 + size].decode(), data[4 + size:]
