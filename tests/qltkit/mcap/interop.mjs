// Exchanges captures with @mcap/core, which is an independent library. It reads our captures, and
// we read its captures.
//
//   node interop.mjs FOLDER PROBE...    runs PROBE (qlt_capture_probe) with files in FOLDER
//
// The variable QLT names the qlt command, whose exported files are read, too.
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

const runProgram = (program, ...parameters) =>
  execFileSync(program[0], [...program.slice(1), ...parameters],
    { cwd: folder, encoding: "utf8", maxBuffer: 1 << 26 });
const run = (...parameters) => runProgram(probe, ...parameters);

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

/// The values of the JSON messages by topic. Each value must follow its schema.
function valuesOf(indexed, messages) {
  const ajv = new Ajv({ strict: false });
  const checks = new Map();
  const values = {};
  for (const { channelId, data } of messages) {
    const { topic, schemaId, messageEncoding } = indexed.channelsById.get(channelId);
    if (messageEncoding !== "json") continue;
    const schema = indexed.schemasById.get(schemaId);
    if (!checks.has(schemaId))
      checks.set(schemaId, ajv.compile(JSON.parse(new TextDecoder().decode(schema.data))));
    const value = JSON.parse(new TextDecoder().decode(data));
    assert(checks.get(schemaId)(value), `${schema.name}: ${ajv.errorsText(checks.get(schemaId).errors)}`);
    (values[topic] ??= []).push(value);
  }
  return values;
}

/// The exported capture has a turn of the head for each report, and the tables say the same.
async function readsWhatWeExport() {
  runProgram([...probe.slice(0, -1), process.env.QLT],
    "export", "ours.mcap", "--mcap", "json.mcap", "--csv", "tables");
  const { indexed, messages } = await read("json.mcap");
  const { "/tf": [world, ...turns], "/imu": imu, ...others } = valuesOf(indexed, messages);
  assert.deepEqual([others["/events"].length, others["/log"].length, others["/camera"].length], [1, 1, 1]);
  assert.deepEqual([...indexed.schemasById.values()].map(({ name }) => name).sort(), [
    "foxglove.FrameTransform", "foxglove.Log", "foxglove.RawImage", "headset.Event", "headset.Imu"]);
  assert.deepEqual([world.parent_frame_id, world.child_frame_id, world.rotation.x], ["world", "tracking", 0.70710677]);
  const rows = (await readFile(join(folder, "tables/raw.csv"), "utf8")).trim().split(/\r?\n/);
  assert.equal(rows.length, 20001);
  assert.deepEqual([turns.length, imu.length], [20000, 20000]);
  const number = ({ x, y, z }) => [x, y, z];
  rows.slice(1).forEach((row, i) => {
    const cells = row.split(",").map(Number);
    const { timestamp, sequence, device_time_us, gyroscope, accelerometer, magnetometer, temperature } = imu[i];
    const { w, ...v } = turns[i].rotation;
    assert.equal(row.split(",")[0], `${timestamp.sec}${String(timestamp.nsec).padStart(9, "0")}`);
    assert.deepEqual(cells.slice(1), [device_time_us, sequence, ...number(gyroscope), ...number(accelerometer),
      ...number(magnetometer), temperature, w, ...number(v)]);
  });
  assert(turns.some(({ rotation }) => Math.abs(rotation.y) > 0.1));
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

  const { "/camera": [camera], "/log": [log], "/events": [event] } = valuesOf(indexed, messages);
  assert.deepEqual([...Buffer.from(camera.data, "base64")], [0, 127, 128, 255]);
  assert.equal(log.message, 'half a € and a "quote"');
  assert.equal(event.event, "connected");

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
if (process.env.QLT) await readsWhatWeExport();
await writesWhatWeRead({ chunkSize: 8192 });
await writesWhatWeRead({ useChunks: false });
await assert.rejects(
  writesWhatWeRead({ compressChunk: (data) => ({ compression: "zstd", compressedData: data }) }),
  (error) => /compression 'zstd'/.test(error.stdout),
);
console.log("captures and @mcap/core understand each other");
