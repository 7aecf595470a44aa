using System;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;

namespace Quelta
{
    /// <summary>The reports of a capture or of a file of reports, as arrays with an entry for each
    /// report. The sensors are in radians per second, g, gauss and degrees Celsius.</summary>
    public sealed class Recording : IDisposable
    {
        private readonly RecordingHandle mHandle;

        public Recording(string file)
        {
            RecordingHandle handle = null;
            KitNative.Columns columns = default(KitNative.Columns);
            Kit.Call(() => KitNative.qltkit_Recording_Open(Kit.Text(file), out handle));
            mHandle = handle;
            Kit.Call(() => KitNative.qltkit_Recording_Columns(handle, out columns));
            Count = (int)columns.Count;
            HostTimeNs = columns.HostTimeNs != IntPtr.Zero ? Longs(columns.HostTimeNs) : null;
            DeviceTimeUs = Longs(columns.DeviceTimeUs);
            var sequence = new int[Count];
            Marshal.Copy(columns.Sequence, sequence, 0, Count);
            Sequence = sequence.Select(number => unchecked((uint)number)).ToArray();
            Gyroscope = Vectors(columns.Gyroscope);
            Accelerometer = Vectors(columns.Accelerometer);
            Magnetometer = Vectors(columns.Magnetometer);
            Temperature = Floats(columns.Temperature, Count);
            Reports = Kit.BytesAt(columns.Reports, 64 * Count);
            Problems = ReadProblems();
        }

        public int Count { get; }

        /// <summary>By the clock of the machine that wrote the capture. Null for a file that
        /// contains only reports.</summary>
        public long[] HostTimeNs { get; }

        /// <summary>The headset's clock without its wrap.</summary>
        public long[] DeviceTimeUs { get; }

        public uint[] Sequence { get; }

        public Vec3[] Gyroscope { get; }

        public Vec3[] Accelerometer { get; }

        public Vec3[] Magnetometer { get; }

        public float[] Temperature { get; }

        /// <summary>The bytes of all reports, 64 for each.</summary>
        public byte[] Reports { get; }

        /// <summary>Sentences about damaged or missing parts of the file.</summary>
        public IReadOnlyList<string> Problems { get; }

        /// <summary>Computes the orientation after each report. Filter.Core gives the bits of
        /// "qlt replay --csv".</summary>
        public Quaternion[] Replay(Filter filter = Filter.Core)
        {
            var orientations = new Quaternion[Count];
            Kit.Call(() => KitNative.qltkit_Recording_Replay(mHandle, filter, orientations));
            return orientations;
        }

        public void Dispose() => mHandle.Dispose();

        private long[] Longs(IntPtr place)
        {
            var values = new long[Count];
            Marshal.Copy(place, values, 0, Count);
            return values;
        }

        private static float[] Floats(IntPtr place, int count)
        {
            var values = new float[count];
            Marshal.Copy(place, values, 0, count);
            return values;
        }

        private Vec3[] Vectors(IntPtr place)
        {
            float[] values = Floats(place, 3 * Count);
            return Enumerable.Range(0, Count).Select(
                i => new Vec3 { X = values[3 * i], Y = values[3 * i + 1], Z = values[3 * i + 2] }).ToArray();
        }

        private List<string> ReadProblems()
        {
            var problems = new List<string>();
            IntPtr text;
            while ((text = KitNative.qltkit_Recording_Problem(mHandle, (ulong)problems.Count)) != IntPtr.Zero)
            {
                problems.Add(Kit.TextAt(text));
            }
            return problems;
        }
    }
}
