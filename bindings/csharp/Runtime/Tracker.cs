using System;

namespace Quelta
{
    /// <summary>A source of head poses: right-handed, y up, -z forward. The units are metres, seconds and
    /// radians. Any thread may call the getters.</summary>
    public sealed class Tracker : IDisposable
    {
        private readonly TrackerHandle mHandle;

        private Tracker(TrackerHandle handle, bool isHeadset)
        {
            mHandle = handle;
            IsHeadset = isHeadset;
        }

        /// <summary>Makes a tracker for the headset, which may be plugged in at any time.</summary>
        public static Tracker Headset() => new Tracker(Library.New(() => Native.qlt_Hmd_New()), true);

        /// <summary>Makes a tracker that moves without hardware.</summary>
        public static Tracker Simulator() =>
            new Tracker(Library.New(() => Native.qlt_SimulationTracker_New()), false);

        public bool IsHeadset { get; }

        public bool IsConnected => Native.qlt_Tracker_IsConnected(mHandle);

        public bool IsTracking => Native.qlt_Tracker_IsTracking(mHandle);

        public bool Start() => Native.qlt_Tracker_Start(mHandle);

        /// <summary>Stops the tracker and waits for its threads.</summary>
        public bool Stop() => Native.qlt_Tracker_Stop(mHandle);

        public Quaternion Orientation
        {
            get
            {
                Native.qlt_Tracker_GetOrientation(mHandle, out Quaternion orientation);
                return orientation;
            }
        }

        /// <summary>Returns the last orientation with the yaw origin applied once more. Both kinds of tracker
        /// ignore lookAhead, which is in seconds.</summary>
        public Quaternion PredictedOrientation(float lookAhead)
        {
            Native.qlt_Tracker_GetPredictedOrientation(mHandle, out Quaternion orientation, lookAhead);
            return orientation;
        }

        public Vec3 Position
        {
            get
            {
                Native.qlt_Tracker_GetPosition(mHandle, out Vec3 position);
                return position;
            }
        }

        /// <summary>Returns the orientation of an object that the host service tracks. A missing object has
        /// the identity.</summary>
        public Quaternion ObjectOrientation(int index)
        {
            Native.qlt_Tracker_GetObjectOrientation(mHandle, out Quaternion orientation, index);
            return orientation;
        }

        /// <summary>Returns the position of an object that the host service tracks, in metres. A missing object
        /// has zero.</summary>
        public Vec3 ObjectPosition(int index)
        {
            Native.qlt_Tracker_GetObjectPosition(mHandle, out Vec3 position, index);
            return position;
        }

        /// <summary>Makes the current heading the direction of yaw 0.</summary>
        public void ResetYawOrigin() => Native.qlt_Tracker_ResetYawOrigin(mHandle);

        /// <summary>Stops the tracker and deletes it. The garbage collection deletes a tracker that nobody
        /// disposes of. If that tracker is still started, the library reports an assertion.</summary>
        public void Dispose()
        {
            if (!mHandle.IsClosed && IsTracking)
            {
                Stop();
            }
            mHandle.Dispose();
        }
    }
}
