using System;
using System.Runtime.InteropServices;

namespace Quelta
{
    // One class per kind of handle. The runtime keeps a handle alive during a call that uses it.

    internal abstract class Handle : SafeHandle
    {
        protected Handle()
            : base(IntPtr.Zero, true)
        {
        }

        public override bool IsInvalid => handle == IntPtr.Zero;

        protected abstract void Delete(IntPtr pointer);

        protected override bool ReleaseHandle()
        {
            Delete(handle);
            return true;
        }
    }

    internal sealed class CameraHandle : Handle
    {
        protected override void Delete(IntPtr pointer) => Native.qlt_Camera_Delete(pointer);
    }

    internal sealed class MeshHandle : Handle
    {
        protected override void Delete(IntPtr pointer) => Native.qlt_DistortionMeshBuilder_Delete(pointer);
    }

    internal sealed class TrackerHandle : Handle
    {
        protected override void Delete(IntPtr pointer) => Native.qlt_Tracker_Delete(pointer);
    }

    /// <summary>The functions of qlt/qlt_c_api.h.</summary>
    internal static class Native
    {
        private const string DLL = "QueltaSDK";
        private const CallingConvention C = CallingConvention.Cdecl;
        private const UnmanagedType BYTE = UnmanagedType.U1;

        [DllImport(DLL, CallingConvention = C)]
        internal static extern CameraHandle qlt_Camera_New(uint textureId);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Camera_Delete(IntPtr camera);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Camera_Update(CameraHandle camera);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qlt_Camera_GetTextureId(CameraHandle camera);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qlt_Camera_GetWidth(IntPtr camera);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qlt_Camera_GetHeight(IntPtr camera);

        [DllImport(DLL, CallingConvention = C)]
        internal static extern MeshHandle qlt_DistortionMeshBuilder_New(
            int resX, int resY, [MarshalAs(BYTE)] bool leftEye, [MarshalAs(BYTE)] bool triangleList);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_DistortionMeshBuilder_Delete(IntPtr mesh);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qlt_DistortionMeshBuilder_GetNumVertices(MeshHandle mesh);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qlt_DistortionMeshBuilder_GetNumIndices(MeshHandle mesh);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qlt_DistortionMeshBuilder_GetPosition(MeshHandle mesh);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qlt_DistortionMeshBuilder_GetTextureR(MeshHandle mesh);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qlt_DistortionMeshBuilder_GetTextureG(MeshHandle mesh);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qlt_DistortionMeshBuilder_GetTextureB(MeshHandle mesh);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qlt_DistortionMeshBuilder_GetIndices(MeshHandle mesh);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_DistortionMeshBuilder_BuildMesh(MeshHandle mesh);

        [DllImport(DLL, CallingConvention = C)]
        internal static extern TrackerHandle qlt_Hmd_New();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern TrackerHandle qlt_SimulationTracker_New();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Tracker_Delete(IntPtr tracker);
        [DllImport(DLL, CallingConvention = C)]
        [return: MarshalAs(BYTE)]
        internal static extern bool qlt_Tracker_IsConnected(TrackerHandle tracker);
        [DllImport(DLL, CallingConvention = C)]
        [return: MarshalAs(BYTE)]
        internal static extern bool qlt_Tracker_IsTracking(TrackerHandle tracker);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Tracker_GetOrientation(TrackerHandle tracker, out Quaternion orientation);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Tracker_GetPredictedOrientation(
            TrackerHandle tracker, out Quaternion orientation, float lookAhead);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Tracker_GetPosition(TrackerHandle tracker, out Vec3 position);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Tracker_GetObjectPosition(
            TrackerHandle tracker, out Vec3 position, int index);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Tracker_GetObjectOrientation(
            TrackerHandle tracker, out Quaternion orientation, int index);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Tracker_ResetYawOrigin(TrackerHandle tracker);
        [DllImport(DLL, CallingConvention = C)]
        [return: MarshalAs(BYTE)]
        internal static extern bool qlt_Tracker_Start(TrackerHandle tracker);
        [DllImport(DLL, CallingConvention = C)]
        [return: MarshalAs(BYTE)]
        internal static extern bool qlt_Tracker_Stop(TrackerHandle tracker);

        // These functions make and read the library's own values. The structs of Values.cs do not need
        // these functions. A program that holds a value of the library needs them.
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qlt_Quaternion_New();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qlt_Quaternion_New4(float w, float x, float y, float z);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Quaternion_Delete(IntPtr quaternion);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Quaternion_w(IntPtr quaternion);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Quaternion_x(IntPtr quaternion);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Quaternion_y(IntPtr quaternion);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Quaternion_z(IntPtr quaternion);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Quaternion_set_w(IntPtr quaternion, float w);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Quaternion_set_x(IntPtr quaternion, float x);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Quaternion_set_y(IntPtr quaternion, float y);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Quaternion_set_z(IntPtr quaternion, float z);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Quaternion_ConvertToUnity(ref Quaternion quaternion);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qlt_Vec2_New();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Vec2_Delete(IntPtr vec2);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Vec2_x(IntPtr vec2);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Vec2_y(IntPtr vec2);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern IntPtr qlt_Vec3_New();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern void qlt_Vec3_Delete(IntPtr vec3);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Vec3_x(IntPtr vec3);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Vec3_y(IntPtr vec3);
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Vec3_z(IntPtr vec3);

        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Params_EYE_FOV_DEG();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern int qlt_Params_EYE_RESOLUTION();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Params_EYE_STRETCH();
        [DllImport(DLL, CallingConvention = C)]
        [return: MarshalAs(BYTE)]
        internal static extern bool qlt_Params_EYE_DISTORT();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Params_USER_IPD_M();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Params_USER_NECK_EYE_H_M();
        [DllImport(DLL, CallingConvention = C)]
        internal static extern float qlt_Params_USER_NECK_EYE_V_M();
    }
}
