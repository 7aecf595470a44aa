// Exchanges captures with @mcap/core, which is an independent library. It reads our captures, and
// we read its captures.
//
//   node interop.mjs FOLDER PROBE...    runs PROBE (qlt_capture_probe) with files in FOLDER
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { createRequire } from "node:module";
import { open, readFile, writeFile } from "node:fs/promises";
import { join, resolve } from "node:path";

const [folder, ...probe] = process.argv.slice(2);
const modules = createRequire(join(resolve(folder), "package.json"));
const { McapIndexedReader, McapStreamReader, McapWriter } = modules("@mcap/core");
const { crc32 } = modules("@foxglove/crc");
const Ajv = modules("ajv/dist/2020");

const run = (...parameters) =>
  execFileSync(probe[0], [...probe.slice(1), ...parameters],
    { cwd: folder, encoding: "utf8", maxBuffer: 1 << 26 });

async function read(name) {
  const bytes = await readFile(join(folder, name));
  const stream = new McapStreamReader({ validateCrcs: true });
  stream.append(bytes);
  const records = [];
  for (let record; (record = stream.nextRecord()) !== undefined; ) records.push(record);
  assert(stream.done());

  const file = await open(join(folder, name));
  const readable = {
    size: async () => BigInt((await file.stat()).size),
    read: async (offset, size) => {
      const buffer = new Uint8Array(Number(size));
      await file.read(buffer, 0, buffer.length, Number(offset));
      return buffer;
    },
  };
  const indexed = await McapIndexedReader.Initialize({ readable });
  const messages = [];
  for await (const message of indexed.readMessages({ validateCrcs: true })) messages.push(message);
  await file.close();
  return { bytes, records, indexed, messages };
}

async function readsWhatWeWrite() {
  run("write", "ours.mcap", "20000", "0");
  const { bytes, records, indexed, messages } = await read("ours.mcap");
  const ours = run("read", "ours.mcap").trim().split(/\r?\n/).map((line) => line.split(" "));
  const of = (type) => records.filter((record) => record.type === type);

  // Both of its readers and our own reader must give the same messages.
  assert.equal(ours.length, 20003);
  assert(of("ChunkIndex").length > 1);
  assert.equal(of("Message").length, ours.length);
  assert.equal(messages.length, ours.length);
  const hex = (data) => Buffer.from(data).toString("hex");
  of("Message").forEach((message, i) => {
    assert.equal(message.logTime, BigInt(ours[i][1]));
    assert.equal(message.publishTime, BigInt(ours[i][2]));
    if (ours[i][0] !== "frame") assert.equal(hex(message.data), ours[i][3]);
  });
  const sorted = (list) => list.map((m) => `${m.channelId} ${m.logTime} ${hex(m.data)}`).sort();
  assert.deepEqual(sorted(messages), sorted(of("Message")));

  // Each JSON message must follow its schema.
  const ajv = new Ajv({ strict: false });
  let checked = 0;
  for (const message of messages) {
    const channel = indexed.channelsById.get(message.channelId);
    const schema = indexed.schemasById.get(channel.schemaId);
    if (channel.messageEncoding !== "json") continue;
    const text = JSON.parse(new TextDecoder().decode(schema.data));
    const value = JSON.parse(new TextDecoder().decode(message.data));
    assert(ajv.validate(text, value), `${schema.name}: ${ajv.errorsText()}`);
    if (channel.topic === "/camera")
      assert.deepEqual([...Buffer.from(value.data, "base64")], [0, 127, 128, 255]);
    if (channel.topic === "/log") assert.equal(value.message, 'half a € and a "quote"');
    ++checked;
  }
  assert.equal(checked, 3);

  // Check the statistics, the indexes and the checksum that the package does not check.
  const statistics = indexed.statistics;
  assert.equal(statistics.messageCount, BigInt(ours.length));
  assert.equal(statistics.chunkCount, of("ChunkIndex").length);
  assert.equal(statistics.schemaCount, 4);
  assert.equal(statistics.channelCount, 4);
  assert.equal(statistics.metadataCount, of("Metadata").length);
  assert.equal(statistics.messageStartTime, BigInt(ours[0][1]));
  assert.deepEqual(indexed.metadataIndexes.map((index) => index.name), ["capture", "capture.end"]);
  const index = indexed.metadataIndexes[0];
  assert.equal(bytes[Number(index.offset)], 0x0c);
  const wall = BigInt(of("Metadata")[0].metadata.get("clock.wallNs"));
  assert(statistics.messageStartTime - wall < 10_000_000_000n);
  const summaryStart = Number(of("Footer")[0].summaryStart);
  assert.equal(of("DataEnd")[0].dataSectionCrc, crc32(bytes.subarray(0, summaryStart - 13)));
}

/// Writes a capture. The `options` of the writer decide whether it has chunks.
async function writesWhatWeRead(options) {
  const parts = [];
  let size = 0n;
  const writable = {
    position: () => size,
    write: async (part) => {
      parts.push(Buffer.from(part));
      size += BigInt(part.length);
    },
  };
  const writer = new McapWriter({ writable, ...options });
  await writer.start({ profile: "", library: "interop" });
  const text = (value) => new TextEncoder().encode(value);
  const schema = (name) =>
    writer.registerSchema({ name, encoding: "jsonschema", data: text('{"type":"object"}') });
  const channel = (topic, messageEncoding, schemaId) =>
    writer.registerChannel({ topic, messageEncoding, schemaId, metadata: new Map([["a", "b"]]) });
  const raw = await channel("/raw", "x-headset-report", 0);
  const events = await channel("/events", "json", await schema("headset.Event"));
  const foreign = await channel("/foreign", "cbor", await schema("of.Somebody"));
  const expected = [];
  const add = async (channelId, kind, data, says) => {
    const logTime = 1700000000000000000n + BigInt(expected.length) * 1000003n;
    const publishTime = logTime - 5n;
    await writer.addMessage({ channelId, sequence: 1, logTime, publishTime, data });
    expected.push(`${kind} ${logTime} ${publishTime} ${Buffer.from(data).toString("hex")} ${says}`);
  };
  await writer.addMetadata({ name: "capture", metadata: new Map([["who", "interop"]]) });
  for (let i = 0; i < 300; ++i) {
    await add(raw, "report", Uint8Array.from({ length: 64 }, (_, j) => i + j), "");
  }
  const escaped =
    ' { "detail" : "\\u20ac \\ud83d\\ude00\\/" , "x": [1, {"event": 2}], "event":"lost" } ';
  await add(events, "event", text(escaped), "lost€ 😀/");
  await add(foreign, "other", text("anything"), "");
  await writer.addAttachment({
    name: "a", mediaType: "text/plain", logTime: 1n, createTime: 1n, data: text("attached"),
  });
  await writer.end();
  await writeFile(join(folder, "theirs.mcap"), Buffer.concat(parts));
  const lines = run("read", "theirs.mcap").split(/\r?\n/).slice(0, -1);
  assert.deepEqual(lines, expected);
}

await readsWhatWeWrite();
await writesWhatWeRead({ chunkSize: 8192 });
await writesWhatWeRead({ useChunks: false });
await assert.rejects(
  writesWhatWeRead({ compressChunk: (data) => ({ compression: "zstd", compressedData: data }) }),
  (error) => /compression 'zstd'/.test(error.stdout),
);
console.log("captures and @mcap/core understand each other");
