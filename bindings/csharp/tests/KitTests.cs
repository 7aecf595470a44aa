// Tests of the kit in the package. They drive it with a headset in software, whose values differ in every
// axis.
using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Threading;
using Quelta;

internal static class KitTests
{
    /// A head that turns about all axes. It is unplugged for 0.1 s, and reports are missing.
    private const string SCRIPT = @"{""seed"": 7, ""seconds"": 1.2, ""motion"": {""kind"": ""angles"",
        ""points"": [{""at"": 0}, {""at"": 1.2, ""yaw"": -35, ""pitch"": 25, ""roll"": 10}]},
        ""sensors"": {""accelerometer"": {""bias"": [0.1, 0.2, 0.3]}},
        ""events"": [{""at"": 0.2, ""event"": ""drop"", ""count"": 3}, {""at"": 0.5, ""event"": ""unplug""},
            {""at"": 0.6, ""event"": ""plug""}]}";

    private static readonly Person PERSON = new Person { IpdM = 0.07f, NeckEyeHM = 0.11f, NeckEyeVM = 0.05f };

    private static readonly EventKind[] KINDS = {
        EventKind.Connected, EventKind.Gap, EventKind.Lost, EventKind.Back, EventKind.Lost };

    internal static void Run(Action<bool, string> expect, Action<string, Action> refused, string folder)
    {
        var lines = new List<string>();
        Kit.SetLogHandler((level, line) =>
        {
            lock (lines)
            {
                lines.Add(level + " " + line);
            }
        });
        string capture = Path.Combine(folder, "walk.mcap");
        string plain = Path.Combine(folder, "walk.bin");
        List<Sample> samples = TheScriptGivesPosesEventsEyesAndTheTruth(expect, capture);
        expect(lines.Take(3).SequenceEqual(new[] {
                   "0 USB Connected", "1 Read 0 instead of 64!", "0 USB Disconnected" }),
               "the handler gets the lines of the library");
        File.WriteAllBytes(plain, samples.SelectMany(sample => sample.Report()).ToArray());
        TheColumnsAreThoseOfTheSamples(expect, new Recording(capture), samples);
        TheColumnsAreThoseOfTheSamples(expect, new Recording(plain), samples);
        expect(new Recording(capture).HostTimeNs.SequenceEqual(samples.Select(sample => sample.ArrivalNs)) &&
               new Recording(plain).HostTimeNs == null, "a capture has the times of the host");
        ACaptureKeepsEverything(expect, Path.Combine(folder, "all.mcap"), samples[3], samples[4]);
        ALiveHeadsetGivesEveryReport(expect);
        ErrorsHaveTheSentenceOfTheKit(refused, folder);
        Kit.SetLogHandler(null);
    }

    private static List<Sample> TheScriptGivesPosesEventsEyesAndTheTruth(Action<bool, string> expect, string file)
    {
        using (var writer = new CaptureWriter(file))
        using (ScriptedHeadset head = ScriptedHeadset.Parse(SCRIPT, true))
        using (var tracker = new Headset(head, Filter.Core, PERSON, writer))
        {
            List<Sample> samples = tracker.Samples().ToList();
            Sample last = samples.Last();
            expect(samples.Count > 1000 && tracker.Latest.Equals(last.Pose), "the last sample is the latest pose");
            expect(head.IsOver && head.Truth.IsKnown && head.Truth.Sequence == last.Pose.Sequence &&
                   head.Truth.ArrivalNs == last.ArrivalNs && head.Truth.SampleNs == last.ArrivalNs &&
                   Math.Abs(head.Truth.W * head.Truth.W + head.Truth.X * head.Truth.X + head.Truth.Y * head.Truth.Y +
                            head.Truth.Z * head.Truth.Z - 1) < 1e-9 && head.Truth.Y < -0.2 && head.Truth.X > 0.1,
                   "the truth is that of the last report");
            expect(last.Pose.State == PoseState.Lost && last.Pose.SinceNs == 1200000000 &&
                   last.Pose.AngularVelocity.Equals(last.Gyroscope), "the headset is lost at the end");
            Pose pose = tracker.At(samples[20].Pose.TimeNs + 400000);
            expect(pose.TimeNs == samples[20].Pose.TimeNs + 400000 && !pose.Clamped &&
                   tracker.At(last.Pose.TimeNs + 1000000000).Clamped, "poses are interpolated and clamped");
            Quelta.Quaternion q = last.Pose.Orientation;
            foreach (Eye eye in new[] { Eye.Left, Eye.Right })
            {
                EyePose found = tracker.EyePose(eye, last.Pose);
                float[] from = { eye == Eye.Left ? -0.035f : 0.035f, 0.05f, -0.11f };
                float[] to = Rotated(q, from);
                expect(found.Orientation.Equals(q) && Math.Abs(found.Position.X - to[0]) < 1e-6 &&
                       Math.Abs(found.Position.Y - to[1]) < 1e-6 && Math.Abs(found.Position.Z - to[2]) < 1e-6,
                       "the eye has its place: " + eye);
            }
            TheEventsComeByPollingAndByCallback(expect, tracker);
            expect(tracker.Recentre() &&
                   Math.Abs(Rotated(tracker.Latest.Orientation, new float[] { 0, 0, -1 })[0]) < 1e-6,
                   "the current heading becomes forward");
            tracker.PredictionError(0.05, out double all, out double recent);
            expect(all > 0 && recent > 0 && tracker.NowNs == 1200000000,
                   "the errors of predictions are known");
            return samples;
        }
    }

    private static float[] Rotated(Quelta.Quaternion q, float[] v)
    {
        float[] t = { 2 * (q.Y * v[2] - q.Z * v[1]), 2 * (q.Z * v[0] - q.X * v[2]), 2 * (q.X * v[1] - q.Y * v[0]) };
        return new[] { v[0] + q.W * t[0] + q.Y * t[2] - q.Z * t[1], v[1] + q.W * t[1] + q.Z * t[0] - q.X * t[2],
                       v[2] + q.W * t[2] + q.X * t[1] - q.Y * t[0] };
    }

    private static void TheEventsComeByPollingAndByCallback(Action<bool, string> expect, Headset tracker)
    {
        var polled = new List<TrackerEvent>();
        while (tracker.NextEvent(out TrackerEvent next))
        {
            polled.Add(next);
        }
        expect(polled.Select(e => e.Kind).SequenceEqual(KINDS) && polled[1].Reports == 3 && polled[0].Reports == 0 &&
               polled[2].TimeNs == 500000000 && polled.Last().Number == 5, "the events are polled");
        var called = new List<TrackerEvent>();
        using (var done = new ManualResetEvent(false))
        {
            tracker.SetEventHandler(e =>
            {
                called.Add(e);
                if (called.Count == KINDS.Length)
                {
                    done.Set();
                }
            });
            expect(done.WaitOne(60000), "the handler is called for each event");
            tracker.SetEventHandler(null);
        }
        expect(called.SequenceEqual(polled), "the handler gets the same events");
    }

    private static void TheColumnsAreThoseOfTheSamples(Action<bool, string> expect, Recording columns,
                                                       List<Sample> samples)
    {
        using (columns)
        {
            expect(columns.Count == samples.Count && columns.Problems.Count == 0 &&
                   columns.Gyroscope.SequenceEqual(samples.Select(sample => sample.Gyroscope)) &&
                   columns.Accelerometer.SequenceEqual(samples.Select(sample => sample.Accelerometer)) &&
                   columns.Magnetometer.SequenceEqual(samples.Select(sample => sample.Magnetometer)) &&
                   columns.Temperature.SequenceEqual(samples.Select(sample => sample.Temperature)) &&
                   columns.Sequence.SequenceEqual(samples.Select(sample => sample.Pose.Sequence)) &&
                   columns.Reports.SequenceEqual(samples.SelectMany(sample => sample.Report())) &&
                   columns.DeviceTimeUs.Take(100).SequenceEqual(
                       samples.Take(100).Select(sample => sample.Pose.DeviceTimeUs)),
                   "the columns are those of the samples");
            expect(columns.Replay().Take(400).SequenceEqual(
                       samples.Take(400).Select(sample => sample.Pose.Orientation)) &&
                   !columns.Replay(Filter.Kit)[400].Equals(columns.Replay()[400]),
                   "a replay gives the orientations of the tracker");
        }
    }

    private static void ACaptureKeepsEverything(Action<bool, string> expect, string file, Sample sample,
                                                Sample later)
    {
        var metadata = new Dictionary<string, string> { { "source", "a test" }, { "person", "nobody" } };
        using (var writer = new CaptureWriter(file, metadata))
        {
            writer.AddReport(sample.Report(), 1000);
            writer.AddEvent("resync", "by hand", 2000);
            writer.AddText(3, "a warning \u00e9", 3000);
            byte[] pixels = { 1, 2, 3, 4, 5, 6, 7, 8 };
            writer.AddFrame(new CaptureFrame { Width = 3, Height = 2, Step = 4, Pixels = pixels }, 4000);
            writer.AddReport(later.Report(), 5000000);
            writer.Flush();
            expect(writer.Status.Reports == 2 && writer.Status.WrittenReports == 2 &&
                   writer.Status.DroppedReports == 0 && writer.Status.DroppedOthers == 0, "the status counts reports");
            writer.Close();
        }
        using (var reader = new CaptureReader(file))
        {
            CaptureItem[] items = reader.Items().ToArray();
            expect(items.Select(item => item.Kind).SequenceEqual(new[] { CaptureKind.Report, CaptureKind.Event,
                   CaptureKind.Text, CaptureKind.Frame, CaptureKind.Report }) &&
                   items.Select(item => item.HostTimeNs).SequenceEqual(
                   new long[] { 1000, 2000, 3000, 4000, 5000000 }), "the items have their kinds and times");
            expect(items[0].Report.SequenceEqual(sample.Report()) && items[0].Data.SequenceEqual(sample.Report()) &&
                   items[0].Sequence == sample.Pose.Sequence && items[0].DeviceTimeUs == sample.Pose.DeviceTimeUs &&
                   items[0].Topic == "/raw" && items[4].PublishTimeNs - items[0].PublishTimeNs == 1000000 &&
                   items[3].LogTimeNs - items[0].LogTimeNs == 3000,
                   "the report is the sample's");
            expect(items[1].Name == "resync" && items[1].Text == "by hand" && items[2].Level == 3 &&
                   items[2].Text == "a warning \u00e9" && items[1].Frame == null, "the event and the text are kept");
            CaptureFrame frame = items[3].Frame;
            expect(frame.Width == 3 && frame.Height == 2 && frame.Step == 4 && frame.Encoding == "mono8" &&
                   frame.Pixels.SequenceEqual(new byte[] { 1, 2, 3, 4, 5, 6, 7, 8 }), "the frame is kept");
            expect(reader.Metadata.Contains(Tuple.Create("capture", "source", "a test")) &&
                   reader.Metadata.Contains(Tuple.Create("capture", "person", "nobody")), "the metadata is kept");
            reader.Position(out ulong position, out ulong size);
            expect(reader.Problems.Count == 0 && position == size && size == (ulong)new FileInfo(file).Length,
                   "the whole file is read");
        }
        byte[] bytes = File.ReadAllBytes(file);
        File.WriteAllBytes(file, bytes.Take(bytes.Length - 100).ToArray());
        using (var reader = new CaptureReader(file))
        {
            expect(reader.Items().Count() == 5 && reader.Problems[0].Key > 0 && reader.Problems[0].Value != "" &&
                   new Recording(file).Problems[0] == reader.Problems[0].Value, "a cut is said");
        }
    }

    private static void ALiveHeadsetGivesEveryReport(Action<bool, string> expect)
    {
        using (var headset = new Headset("simulator"))
        {
            Sample[] samples = headset.Samples().Take(50).ToArray();
            expect(samples.Last().Pose.ReportNumber == samples.First().Pose.ReportNumber + 49 &&
                   samples.Last().Pose.DeviceTimeUs == samples.First().Pose.DeviceTimeUs + 49000 &&
                   samples.All(s => s.Pose.TimeNs <= s.ArrivalNs && s.Pose.State == PoseState.Tracking) &&
                   samples.Last().ArrivalNs <= headset.NowNs, "a live headset gives every report with its time");
        }
    }

    private static void ErrorsHaveTheSentenceOfTheKit(Action<string, Action> refused, string folder)
    {
        refused("none.bin", () => new Recording(Path.Combine(folder, "none.bin")));
        refused("none.mcap", () => new CaptureReader(Path.Combine(folder, "none.mcap")));
        refused("nowhere", () => new CaptureWriter(Path.Combine(folder, "nowhere/x.mcap")));
        refused("line 1: motion.kind", () => ScriptedHeadset.Parse("{\"motion\": {\"kind\": \"fly\"}}"));
        refused("none.json", () => ScriptedHeadset.Open("none.json"));
        refused("\"nobody\" is neither", () => new Headset("nobody"));
        refused("the filter is neither", () => new Headset("simulator", (Filter)7));
        refused("64 bytes", () => new CaptureWriter(Path.Combine(folder, "x.mcap")).AddReport(new byte[3]));
    }
}
