using System;

namespace Quelta
{
    /// <summary>Poses of the head: right-handed, y up, -z forward; metres, seconds, radians. The getters
    /// may be called from any thread.</summary>
    public sealed class Tracker : IDisposable
    {
        private readonly TrackerHandle mHandle;

        private Tracker(TrackerHandle handle, bool isHeadset)
        {
            mHandle = handle;
            IsHeadset = isHeadset;
        }

        /// <summary>The headset, which may be plugged in at any time.</summary>
        public static Tracker Headset() => new Tracker(Library.New(() => Native.qlt_Hmd_New()), true);

        /// <summary>Motion without hardware.</summary>
        public static Tracker Simulator() =>
            new Tracker(Library.New(() => Native.qlt_SimulationTracker_New()), false);

        public bool IsHeadset { get; }

        public bool IsConnected => Native.qlt_Tracker_IsConnected(mHandle);

        public bool IsTracking => Native.qlt_Tracker_IsTracking(mHandle);

        public bool Start() => Native.qlt_Tracker_Start(mHandle);

        /// <summary>Waits for the tracker's threads.</summary>
        public bool Stop() => Native.qlt_Tracker_Stop(mHandle);

        public Quaternion Orientation
        {
            get
            {
                Native.qlt_Tracker_GetOrientation(mHandle, out Quaternion orientation);
                return orientation;
            }
        }

        /// <summary>The last orientation with the yaw origin applied once more: both kinds of tracker ignore
        /// lookAhead, in seconds.</summary>
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

        /// <summary>Of an object that the host service tracks; the identity for one that is not there.</summary>
        public Quaternion ObjectOrientation(int index)
        {
            Native.qlt_Tracker_GetObjectOrientation(mHandle, out Quaternion orientation, index);
            return orientation;
        }

        /// <summary>As ObjectOrientation; zero for one that is not there.</summary>
        public Vec3 ObjectPosition(int index)
        {
            Native.qlt_Tracker_GetObjectPosition(mHandle, out Vec3 position, index);
            return position;
        }

        /// <summary>Makes the direction of now the one of yaw 0.</summary>
        public void ResetYawOrigin() => Native.qlt_Tracker_ResetYawOrigin(mHandle);

        /// <summary>Stops it, too. A tracker that nobody disposes of is deleted by the garbage collection,
        /// and reported by the library if it was still started.</summary>
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
