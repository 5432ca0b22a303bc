// SPDX-License-Identifier: Apache-2.0
// The format's own reader and writer, for test_recording.py.
//
//     mcap-core.mjs MODULES read stream|index FILE                prints what is in the file as JSON
//     mcap-core.mjs MODULES write none|lz4 FILE TOPIC TYPE        writes 100 values of type vexstubif::AltAz
//
// MODULES is a folder with the packages @mcap/core, fzstd and lz4js.
import { createRequire } from "node:module";
import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";

const [modules, verb, way, file, topic, type] = process.argv.slice(2);
const require = createRequire(join(modules, "here.js"));
const mcap = require("@mcap/core");
const lz4 = require("lz4js");
const decompressHandlers = {
    lz4: (bytes) => lz4.decompress(bytes),
    zstd: (bytes, size) => require("fzstd").decompress(bytes, new Uint8Array(Number(size))),
};

function inText(message) {
    return { sequence: message.sequence, data: Buffer.from(message.data).toString("hex") };
}

function named(schema) {
    return { name: schema.name, data: Buffer.from(schema.data).toString() };
}

function readStream(bytes) {
    const reader = new mcap.McapStreamReader({ validateCrcs: true, decompressHandlers });
    reader.append(bytes);
    const found = { schemas: new Map(), channels: new Map(), messages: [] };
    for (let record; (record = reader.nextRecord());) {
        if (record.type === "Schema") found.schemas.set(record.id, named(record));
        if (record.type === "Channel") found.channels.set(record.id, record.topic);
        if (record.type === "Message") found.messages.push(inText(record));
    }
    if (!reader.done()) throw new Error("the file does not end");
    return found;
}

async function readIndexed(bytes) {
    const readable = {
        size: async () => BigInt(bytes.length),
        read: async (offset, size) => bytes.subarray(Number(offset), Number(offset + size)),
    };
    const reader = await mcap.McapIndexedReader.Initialize({ readable, decompressHandlers });
    if (reader.chunkIndexes.length === 0 || !reader.statistics) throw new Error("the file has no index");
    const messages = [];
    for await (const message of reader.readMessages({ validateCrcs: true })) messages.push(inText(message));
    if (BigInt(messages.length) !== reader.statistics.messageCount) throw new Error("the statistics are wrong");
    return {
        schemas: new Map([...reader.schemasById].map(([id, schema]) => [id, named(schema)])),
        channels: new Map([...reader.channelsById].map(([id, channel]) => [id, channel.topic])),
        messages,
    };
}

async function write() {
    const pieces = [];
    let size = 0n;
    const writable = {
        position: () => size,
        write: async (bytes) => {
            pieces.push(Uint8Array.from(bytes));
            size += BigInt(bytes.length);
        },
    };
    const compressChunk = (bytes) => ({ compression: "lz4", compressedData: lz4.compress(bytes) });
    const writer = new mcap.McapWriter({ writable, chunkSize: 1000, ...(way === "lz4" && { compressChunk }) });
    await writer.start({ profile: "", library: "" });
    const channelId = await writer.registerChannel({
        schemaId: 0, topic, messageEncoding: "cdr",
        metadata: new Map([["dds.type", type], ["dds.keyed", "false"]]),
    });
    for (let i = 0; i < 100; ++i) {
        const data = Buffer.alloc(20);
        data[1] = 1;
        data.writeDoubleLE(i, 4);
        data.writeDoubleLE(0.25, 12);
        await writer.addMessage({ channelId, sequence: i, logTime: BigInt(i), publishTime: BigInt(i), data });
    }
    await writer.end();
    writeFileSync(file, Buffer.concat(pieces));
}

if (verb === "write") {
    await write();
} else {
    const bytes = new Uint8Array(readFileSync(file));
    const found = way === "stream" ? readStream(bytes) : await readIndexed(bytes);
    console.log(JSON.stringify({ ...found, schemas: [...found.schemas.values()],
                                 channels: [...found.channels.values()].map((name) => ({ topic: name })) }));
}
