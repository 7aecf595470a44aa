using System;
using System.Runtime.InteropServices;

namespace Quelta
{
    internal sealed class ScriptedHeadsetHandle : Handle
    {
        protected override void Delete(IntPtr pointer) => KitNative.qltkit_ScriptedHeadset_Delete(pointer);
    }

    internal sealed class HeadTrackerHandle : Handle
    {
        protected override void Delete(IntPtr pointer) => KitNative.qltkit_HeadTracker_Delete(pointer);
    }

    internal sealed class RecordingHandle : Handle
    {
        protected override void Delete(IntPtr pointer) => KitNative.qltkit_Recording_Delete(pointer);
    }

    internal sealed class CaptureReaderHandle : Handle
    {
        protected override void Delete(IntPtr pointer) => KitNative.qltkit_CaptureReader_Delete(pointer);
    }

    internal sealed class CaptureWriterHandle : Handle
    {
        protected override void Delete(IntPtr pointer) => KitNative.qltkit_CaptureWriter_Delete(pointer);
    }

    /// <summary>The compiler of Unity's IL2CPP looks for this attribute by its name.</summary>
    [AttributeUsage(AttributeTargets.Method)]
    internal sealed class MonoPInvokeCallbackAttribute : Attribute
    {
        public MonoPInvokeCallbackAttribute(Type type)
        {
        }
    }

    /// <summary>The functions of qltkit/qltkit_c_api.h. Text is UTF-8 with a zero at the end.</summary>
    internal static class KitNative
    {
        internal const int OK = 0, NONE = 1, END = 2;
        internal const long NOW = long.MinValue;

        private const string DLL = "QueltaKit";
        private const CallingConvention C = CallingConvention.Cdecl;

        [StructLayout(LayoutKind.Sequential)]
        internal struct Options
        {
            internal Filter Filter;
            internal Person Person;
            internal IntPtr Capture;
        }

        [StructLayout(LayoutKind.Sequential)]
        internal struct Columns
        {
            internal ulong Count;
            internal IntPtr HostTimeNs, DeviceTimeUs, Sequence, Gyroscope, Accelerometer, Magnetometer,
                Temperature, Reports;
        }

        [StructLayout(LayoutKind.Sequential)]
        internal struct Frame
        {
            internal uint Width, Height, Step, Size;
            internal IntPtr Encoding, Pixels;
        }

        [StructLayout(LayoutKind.Sequential)]
        internal struct Item
        {
            internal CaptureKind Kind;
            internal int Level;
            internal long HostTimeNs;
            internal ulong LogTimeNs, PublishTimeNs;
            internal long DeviceTimeUs;
            internal uint Sequence, Size;
            internal ReportBytes Report;
            internal IntPtr Topic, Name, Text, Data;
            internal Frame Frame;
        }

        [UnmanagedFunctionPointer(C)]
        internal delegate void LogHandler(int level, IntPtr line, IntPtr user);

        [UnmanagedFunctionPointer(C)]
        internal delegate void EventHandler(ref TrackerEvent trackerEvent, IntPtr user);

        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qltkit_version();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qltkit_last_error();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_set_log_handler(LogHandler handler, IntPtr user);

        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_ScriptedHeadset_Open(byte[] file, int pace, out ScriptedHeadsetHandle headset);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_ScriptedHeadset_Parse(
            byte[] script, int pace, out ScriptedHeadsetHandle headset);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_ScriptedHeadset_State(ScriptedHeadsetHandle headset);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_ScriptedHeadset_Truth(ScriptedHeadsetHandle headset, out Truth truth);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qltkit_ScriptedHeadset_Delete(IntPtr headset);

        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTrackerOptions_Init(out Options options);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_Open(
            byte[] source, ref Options options, out HeadTrackerHandle tracker);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_OpenScripted(
            ScriptedHeadsetHandle headset, ref Options options, out HeadTrackerHandle tracker);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qltkit_HeadTracker_Delete(IntPtr tracker);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_Latest(HeadTrackerHandle tracker, out Pose pose);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_At(HeadTrackerHandle tracker, long timeNs, out Pose pose);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_EyePose(
            HeadTrackerHandle tracker, ref Pose pose, Eye eye, out EyePose eyePose);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_NextSample(
            HeadTrackerHandle tracker, int timeoutMs, out Sample sample);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_NextEvent(
            HeadTrackerHandle tracker, out TrackerEvent trackerEvent);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_SetEventHandler(
            HeadTrackerHandle tracker, EventHandler handler, IntPtr user);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_Recentre(HeadTrackerHandle tracker);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_Now(HeadTrackerHandle tracker, out long timeNs);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_HeadTracker_PredictionError(
            HeadTrackerHandle tracker, double seconds, out double all, out double recent);

        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_Recording_Open(byte[] file, out RecordingHandle recording);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_Recording_Columns(RecordingHandle recording, out Columns columns);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qltkit_Recording_Problem(RecordingHandle recording, ulong index);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_Recording_Replay(
            RecordingHandle recording, Filter filter, [Out] Quaternion[] orientations);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qltkit_Recording_Delete(IntPtr recording);

        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureReader_Open(byte[] file, out CaptureReaderHandle reader);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureReader_Next(CaptureReaderHandle reader, out Item item);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureReader_Metadata(
            CaptureReaderHandle reader, ulong index, out IntPtr record, out IntPtr key, out IntPtr value);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureReader_Problem(
            CaptureReaderHandle reader, ulong index, out ulong offset, out IntPtr text);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureReader_Position(
            CaptureReaderHandle reader, out ulong position, out ulong size);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qltkit_CaptureReader_Delete(IntPtr reader);

        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureWriter_Open(
            byte[] file, IntPtr[] metadata, out CaptureWriterHandle writer);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureWriter_AddReport(
            CaptureWriterHandle writer, byte[] report, long hostTimeNs);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureWriter_AddEvent(
            CaptureWriterHandle writer, byte[] name, byte[] detail, long hostTimeNs);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureWriter_AddText(
            CaptureWriterHandle writer, int level, byte[] text, long hostTimeNs);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureWriter_AddFrame(
            CaptureWriterHandle writer, ref Frame frame, long hostTimeNs);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureWriter_Status(CaptureWriterHandle writer, out CaptureStatus status);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureWriter_Flush(CaptureWriterHandle writer);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qltkit_CaptureWriter_Close(CaptureWriterHandle writer);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qltkit_CaptureWriter_Delete(IntPtr writer);
    }
}
