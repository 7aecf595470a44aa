using System;
using System.Runtime.InteropServices;

namespace Quelta
{
    // The library reads and writes these structs directly, so they have its layouts. Times that end in
    // Ns are nanoseconds of a clock that never goes back.

    /// <summary>The filter that computes orientations from the reports.</summary>
    public enum Filter
    {
        Kit = 0,
        Core = 1,
    }

    /// <summary>The state of a tracker.</summary>
    public enum PoseState
    {
        NeverSeen = 0,
        Tracking = 1,
        Held = 2,
        Lost = 3,
    }

    /// <summary>The kind of a change in the stream of reports.</summary>
    public enum EventKind
    {
        Connected = 0,
        Lost = 1,
        Back = 2,
        Gap = 3,
    }

    public enum Eye
    {
        Left = 0,
        Right = 1,
    }

    /// <summary>The kind of a message in a capture.</summary>
    public enum CaptureKind
    {
        Report = 0,
        Event = 1,
        Text = 2,
        Frame = 3,
        Other = 4,
    }

    /// <summary>The measures of a user in metres: between the pupils, and from the neck to the eyes,
    /// forward (H) and up (V).</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct Person
    {
        public float IpdM, NeckEyeHM, NeckEyeVM;
    }

    /// <summary>The pose of the head at one moment. AngularVelocity is in radians per second about the
    /// head's own axes. State is that of the tracker at the time of the call, and SinceNs is its
    /// beginning.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct Pose
    {
        public Quaternion Orientation;
        public Vec3 AngularVelocity;
        public PoseState State;
        public long TimeNs, DeviceTimeUs, SinceNs;
        public ulong ReportNumber;
        public uint Sequence;
        private readonly int mClamped;

        /// <summary>True when TimeNs is only the nearest time that the tracker knows.</summary>
        public bool Clamped => mClamped != 0;
    }

    /// <summary>The pose of an eye. The position is in metres from the neck.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct EyePose
    {
        public Vec3 Position;
        public Quaternion Orientation;
    }

    [StructLayout(LayoutKind.Sequential)]
    internal struct ReportBytes
    {
        private readonly ulong m0, m1, m2, m3, m4, m5, m6, m7;

        internal byte[] ToArray()
        {
            var bytes = new byte[64];
            Buffer.BlockCopy(new[] { m0, m1, m2, m3, m4, m5, m6, m7 }, 0, bytes, 0, 64);
            return bytes;
        }
    }

    /// <summary>A report of the headset, and the pose that includes it. The sensors are in radians per
    /// second, g, gauss and degrees Celsius.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct Sample
    {
        public Pose Pose;
        public long ArrivalNs;
        public Vec3 Gyroscope, Accelerometer, Magnetometer;
        public float Temperature;
        private readonly ReportBytes mReport;

        /// <summary>Copies the 64 bytes of the report.</summary>
        public byte[] Report() => mReport.ToArray();
    }

    /// <summary>A change in the stream of reports. Reports is the number of missing reports of a
    /// gap.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct TrackerEvent
    {
        public EventKind Kind;
        public uint Reports;
        public long TimeNs;
        public ulong Number;
    }

    /// <summary>The true values behind the last report of a ScriptedHeadset. W, X, Y and Z are the
    /// orientation if IsKnown.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct Truth
    {
        public double W, X, Y, Z;
        public long SampleNs, ArrivalNs;
        public uint Sequence;
        private readonly int mIsKnown;

        public bool IsKnown => mIsKnown != 0;
    }

    /// <summary>The numbers of items that a writer has accepted, written and dropped so far.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct CaptureStatus
    {
        public ulong Reports, WrittenReports, DroppedReports, DroppedOthers;
    }
}
