using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;

namespace Quelta
{
    /// <summary>A headset in software that does what a script or a recording says.</summary>
    public sealed class ScriptedHeadset : IDisposable
    {
        internal readonly ScriptedHeadsetHandle Handle;

        private ScriptedHeadset(ScriptedHeadsetHandle handle)
        {
            Handle = handle;
        }

        /// <summary>Opens a script (.json), a capture (.mcap) or reports (.bin). A fastest headset does not
        /// wait for the time: its clock follows the reads.</summary>
        public static ScriptedHeadset Open(string file, bool fastest = false)
        {
            ScriptedHeadsetHandle handle = null;
            Kit.Call(() => KitNative.qltkit_ScriptedHeadset_Open(Kit.Text(file), fastest ? 1 : 0, out handle));
            return new ScriptedHeadset(handle);
        }

        /// <summary>Makes a headset from the text of a script, which is JSON.</summary>
        public static ScriptedHeadset Parse(string script, bool fastest = false)
        {
            ScriptedHeadsetHandle handle = null;
            Kit.Call(() => KitNative.qltkit_ScriptedHeadset_Parse(Kit.Text(script), fastest ? 1 : 0, out handle));
            return new ScriptedHeadset(handle);
        }

        /// <summary>True when the last report has been read.</summary>
        public bool IsOver => Kit.Call(() => KitNative.qltkit_ScriptedHeadset_State(Handle)) == KitNative.END;

        /// <summary>The true values behind the last report that was read.</summary>
        public Truth Truth
        {
            get
            {
                Truth truth = default(Truth);
                Kit.Call(() => KitNative.qltkit_ScriptedHeadset_Truth(Handle, out truth));
                return truth;
            }
        }

        public void Dispose() => Handle.Dispose();
    }

    /// <summary>A tracker of a headset, which gives poses with a time. Any thread may call everything
    /// but Dispose. Latest and At never wait and allocate nothing.</summary>
    public sealed class Headset : IDisposable
    {
        private static readonly KitNative.EventHandler CALLBACK = OnEvent;

        private readonly HeadTrackerHandle mHandle;
        private readonly object mLock = new object();
        private GCHandle mHandler; // the user pointer of the current event handler

        /// <summary>Tracks "headset", "simulator", or a file in real time: a script (.json), a capture
        /// (.mcap) or reports (.bin). Without a person it is the default one. The capture gets every
        /// report, connection and loss.</summary>
        public Headset(string source = "headset", Filter filter = Filter.Kit, Person? person = null,
                       CaptureWriter capture = null)
        {
            KitNative.Options options = Options(filter, person, capture);
            HeadTrackerHandle handle = null;
            Kit.Call(() => KitNative.qltkit_HeadTracker_Open(Kit.Text(source), ref options, out handle));
            mHandle = handle;
            GC.KeepAlive(capture);
        }

        /// <summary>Tracks a headset in software, once.</summary>
        public Headset(ScriptedHeadset source, Filter filter = Filter.Kit, Person? person = null,
                       CaptureWriter capture = null)
        {
            KitNative.Options options = Options(filter, person, capture);
            HeadTrackerHandle handle = null;
            Kit.Call(() => KitNative.qltkit_HeadTracker_OpenScripted(source.Handle, ref options, out handle));
            mHandle = handle;
            GC.KeepAlive(capture);
        }

        /// <summary>The pose of the last report.</summary>
        public Pose Latest
        {
            get
            {
                Check(KitNative.qltkit_HeadTracker_Latest(mHandle, out Pose pose));
                return pose;
            }
        }

        /// <summary>Returns the pose at a time: in the last two seconds, or predicted up to 100 ms
        /// ahead.</summary>
        public Pose At(long timeNs)
        {
            Check(KitNative.qltkit_HeadTracker_At(mHandle, timeNs, out Pose pose));
            return pose;
        }

        /// <summary>The current time of the tracker's clock.</summary>
        public long NowNs
        {
            get
            {
                Check(KitNative.qltkit_HeadTracker_Now(mHandle, out long now));
                return now;
            }
        }

        /// <summary>Returns the pose of an eye for a pose of the head.</summary>
        public EyePose EyePose(Eye eye, Pose head)
        {
            Check(KitNative.qltkit_HeadTracker_EyePose(mHandle, ref head, eye, out EyePose pose));
            return pose;
        }

        /// <summary>Makes the current heading the forward direction. False before the first
        /// report.</summary>
        public bool Recentre() => Check(KitNative.qltkit_HeadTracker_Recentre(mHandle)) == KitNative.OK;

        /// <summary>Gives the RMS error of predictions for 0 to 0.1 s ahead in radians: over all reports,
        /// and over about the last five seconds.</summary>
        public void PredictionError(double seconds, out double all, out double recent)
        {
            Check(KitNative.qltkit_HeadTracker_PredictionError(mHandle, seconds, out all, out recent));
        }

        /// <summary>Waits up to timeoutMs milliseconds for the next sample. False when none has come, and
        /// when a file or a script has ended.</summary>
        public bool NextSample(int timeoutMs, out Sample sample)
        {
            return Check(KitNative.qltkit_HeadTracker_NextSample(mHandle, timeoutMs, out sample)) == KitNative.OK;
        }

        /// <summary>Gives every sample as it comes. It ends when a file or a script ends.</summary>
        public IEnumerable<Sample> Samples()
        {
            int result;
            while ((result = Check(KitNative.qltkit_HeadTracker_NextSample(mHandle, 100, out Sample sample))) !=
                   KitNative.END)
            {
                if (result == KitNative.OK)
                {
                    yield return sample;
                }
            }
        }

        /// <summary>Takes the oldest event that this operation has not given yet. False when there is
        /// none.</summary>
        public bool NextEvent(out TrackerEvent trackerEvent)
        {
            return Check(KitNative.qltkit_HeadTracker_NextEvent(mHandle, out trackerEvent)) == KitNative.OK;
        }

        /// <summary>Sets the function that a thread of the tracker calls for each event; null removes it.
        /// The previous function does not run any more when this returns. An exception of the function
        /// is printed and has no other effect. The function must not set another one.</summary>
        public void SetEventHandler(Action<TrackerEvent> handler)
        {
            lock (mLock)
            {
                GCHandle old = mHandler;
                mHandler = handler != null ? GCHandle.Alloc(handler) : default(GCHandle);
                Check(KitNative.qltkit_HeadTracker_SetEventHandler(
                    mHandle, handler != null ? CALLBACK : null,
                    handler != null ? GCHandle.ToIntPtr(mHandler) : IntPtr.Zero));
                if (old.IsAllocated)
                {
                    old.Free();
                }
            }
        }

        /// <summary>Stops the tracking.</summary>
        public void Dispose()
        {
            if (!mHandle.IsClosed)
            {
                SetEventHandler(null);
            }
            mHandle.Dispose();
        }

        private static KitNative.Options Options(Filter filter, Person? person, CaptureWriter capture)
        {
            KitNative.Options options = default(KitNative.Options);
            Kit.Call(() => KitNative.qltkit_HeadTrackerOptions_Init(out options));
            options.Filter = filter;
            options.Person = person ?? options.Person;
            options.Capture = capture != null ? capture.Handle.DangerousGetHandle() : IntPtr.Zero;
            return options;
        }

        private static int Check(int result) => result >= 0 ? result : Kit.Call(() => result);

        [MonoPInvokeCallback(typeof(KitNative.EventHandler))]
        private static void OnEvent(ref TrackerEvent trackerEvent, IntPtr user)
        {
            TrackerEvent copy = trackerEvent;
            Kit.Run(() => ((Action<TrackerEvent>)GCHandle.FromIntPtr(user).Target)(copy));
        }
    }
}
