using System;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;

namespace Quelta
{
    /// <summary>A picture of the camera: Step bytes from one row to the next, the top row first.</summary>
    public sealed class CaptureFrame
    {
        public uint Width, Height, Step;
        public string Encoding = "mono8";
        public byte[] Pixels;
    }

    /// <summary>A message of a capture. LogTimeNs is Unix time, and HostTimeNs is the same moment by the
    /// writer's steady clock. PublishTimeNs is Unix time at the pace of the headset's clock. Report has
    /// 64 bytes in a report, and Frame is set in a frame.</summary>
    public sealed class CaptureItem
    {
        public CaptureKind Kind;
        public int Level;
        public long HostTimeNs, DeviceTimeUs;
        public ulong LogTimeNs, PublishTimeNs;
        public uint Sequence;
        public string Topic, Name, Text;
        public byte[] Report, Data;
        public CaptureFrame Frame;
    }

    /// <summary>Reads a capture, one item after another. One thread at a time.</summary>
    public sealed class CaptureReader : IDisposable
    {
        private readonly CaptureReaderHandle mHandle;

        public CaptureReader(string file)
        {
            CaptureReaderHandle handle = null;
            Kit.Call(() => KitNative.qltkit_CaptureReader_Open(Kit.Text(file), out handle));
            mHandle = handle;
        }

        /// <summary>Reads all further items.</summary>
        public IEnumerable<CaptureItem> Items()
        {
            for (CaptureItem item = Next(); item != null; item = Next())
            {
                yield return item;
            }
        }

        /// <summary>Reads the next item. Null after the last one.</summary>
        public CaptureItem Next()
        {
            KitNative.Item item = default(KitNative.Item);
            if (Kit.Call(() => KitNative.qltkit_CaptureReader_Next(mHandle, out item)) == KitNative.END)
            {
                return null;
            }
            return new CaptureItem
            {
                Kind = item.Kind,
                Level = item.Level,
                HostTimeNs = item.HostTimeNs,
                LogTimeNs = item.LogTimeNs,
                PublishTimeNs = item.PublishTimeNs,
                DeviceTimeUs = item.DeviceTimeUs,
                Sequence = item.Sequence,
                Topic = Kit.TextAt(item.Topic),
                Name = Kit.TextAt(item.Name),
                Text = Kit.TextAt(item.Text),
                Report = item.Kind == CaptureKind.Report ? item.Report.ToArray() : null,
                Data = Kit.BytesAt(item.Data, (int)item.Size),
                Frame = item.Frame.Pixels == IntPtr.Zero ? null : FrameOf(item.Frame),
            };
        }

        /// <summary>The metadata records that were read so far: record, key, value. The writer
        /// makes the record "capture".</summary>
        public IReadOnlyList<Tuple<string, string, string>> Metadata
        {
            get
            {
                var entries = new List<Tuple<string, string, string>>();
                IntPtr record = IntPtr.Zero, key = IntPtr.Zero, value = IntPtr.Zero;
                while (Kit.Call(() => KitNative.qltkit_CaptureReader_Metadata(
                    mHandle, (ulong)entries.Count, out record, out key, out value)) == KitNative.OK)
                {
                    entries.Add(Tuple.Create(Kit.TextAt(record), Kit.TextAt(key), Kit.TextAt(value)));
                }
                return entries;
            }
        }

        /// <summary>The offsets of damaged or missing parts that were found so far, each with a
        /// sentence.</summary>
        public IReadOnlyList<KeyValuePair<ulong, string>> Problems
        {
            get
            {
                var problems = new List<KeyValuePair<ulong, string>>();
                ulong offset = 0;
                IntPtr text = IntPtr.Zero;
                while (Kit.Call(() => KitNative.qltkit_CaptureReader_Problem(
                    mHandle, (ulong)problems.Count, out offset, out text)) == KitNative.OK)
                {
                    problems.Add(new KeyValuePair<ulong, string>(offset, Kit.TextAt(text)));
                }
                return problems;
            }
        }

        /// <summary>Gives the current position and the size of the file in bytes.</summary>
        public void Position(out ulong position, out ulong size)
        {
            ulong at = 0, end = 0;
            Kit.Call(() => KitNative.qltkit_CaptureReader_Position(mHandle, out at, out end));
            position = at;
            size = end;
        }

        public void Dispose() => mHandle.Dispose();

        private static CaptureFrame FrameOf(KitNative.Frame frame) => new CaptureFrame
        {
            Width = frame.Width,
            Height = frame.Height,
            Step = frame.Step,
            Encoding = Kit.TextAt(frame.Encoding),
            Pixels = Kit.BytesAt(frame.Pixels, (int)frame.Size),
        };
    }

    /// <summary>Writes a capture. The file has a temporary name until Close. Adding never waits; an
    /// item without room is dropped, and Status counts it. Without a host time the writer takes the
    /// current time. Any thread may add.</summary>
    public sealed class CaptureWriter : IDisposable
    {
        internal readonly CaptureWriterHandle Handle;

        public CaptureWriter(string file, IEnumerable<KeyValuePair<string, string>> metadata = null)
        {
            var texts = new List<GCHandle>();
            CaptureWriterHandle handle = null;
            try
            {
                foreach (KeyValuePair<string, string> entry in metadata ?? new KeyValuePair<string, string>[0])
                {
                    texts.Add(GCHandle.Alloc(Kit.Text(entry.Key), GCHandleType.Pinned));
                    texts.Add(GCHandle.Alloc(Kit.Text(entry.Value), GCHandleType.Pinned));
                }
                IntPtr[] pointers = texts.Select(text => text.AddrOfPinnedObject()).Concat(new[] { IntPtr.Zero })
                    .ToArray();
                Kit.Call(() => KitNative.qltkit_CaptureWriter_Open(Kit.Text(file), pointers, out handle));
            }
            finally
            {
                texts.ForEach(text => text.Free());
            }
            Handle = handle;
        }

        /// <summary>Adds a report of 64 bytes.</summary>
        public void AddReport(byte[] report, long? hostTimeNs = null)
        {
            if (report.Length != 64)
            {
                throw new QueltaException($"A report has 64 bytes, and this one has {report.Length}.");
            }
            Kit.Call(() => KitNative.qltkit_CaptureWriter_AddReport(Handle, report, hostTimeNs ?? KitNative.NOW));
        }

        /// <summary>Adds an event, for example "connected".</summary>
        public void AddEvent(string name, string detail = "", long? hostTimeNs = null)
        {
            Kit.Call(() => KitNative.qltkit_CaptureWriter_AddEvent(
                Handle, Kit.Text(name), Kit.Text(detail), hostTimeNs ?? KitNative.NOW));
        }

        /// <summary>Adds a text. The level is 1 debug, 2 information, 3 warning, 4 error, 5 fatal or
        /// 0.</summary>
        public void AddText(int level, string text, long? hostTimeNs = null)
        {
            Kit.Call(() => KitNative.qltkit_CaptureWriter_AddText(
                Handle, level, Kit.Text(text), hostTimeNs ?? KitNative.NOW));
        }

        /// <summary>Adds a picture of the camera, whose pixels are Step * Height bytes.</summary>
        public void AddFrame(CaptureFrame frame, long? hostTimeNs = null)
        {
            GCHandle pixels = GCHandle.Alloc(frame.Pixels, GCHandleType.Pinned);
            GCHandle encoding = GCHandle.Alloc(Kit.Text(frame.Encoding), GCHandleType.Pinned);
            try
            {
                var native = new KitNative.Frame
                {
                    Width = frame.Width,
                    Height = frame.Height,
                    Step = frame.Step,
                    Size = (uint)frame.Pixels.Length,
                    Encoding = encoding.AddrOfPinnedObject(),
                    Pixels = pixels.AddrOfPinnedObject(),
                };
                Kit.Call(() => KitNative.qltkit_CaptureWriter_AddFrame(
                    Handle, ref native, hostTimeNs ?? KitNative.NOW));
            }
            finally
            {
                pixels.Free();
                encoding.Free();
            }
        }

        public CaptureStatus Status
        {
            get
            {
                CaptureStatus status = default(CaptureStatus);
                Kit.Call(() => KitNative.qltkit_CaptureWriter_Status(Handle, out status));
                return status;
            }
        }

        /// <summary>Gives everything to the system, and waits for the disk.</summary>
        public void Flush() => Kit.Call(() => KitNative.qltkit_CaptureWriter_Flush(Handle));

        /// <summary>Completes the capture. QueltaException says where the file is when something is
        /// missing.</summary>
        public void Close() => Kit.Call(() => KitNative.qltkit_CaptureWriter_Close(Handle));

        /// <summary>Completes the capture when it is open, and forgets an error.</summary>
        public void Dispose() => Handle.Dispose();
    }
}
