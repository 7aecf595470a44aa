/** @file
 * The flat interface for bindings of engines: C functions over handles.
 *
 * Ownership: the result of a ..._New function belongs to the caller, who gives it back once with
 * the matching ..._Delete. The arrays of a mesh belong to its builder. A ..._New returns null when
 * there is no memory.
 *
 * Null handles: a function whose comment says "Checked." reports a null handle to the assertion
 * handler, which prints a line on standard error by default. After the report a ..._Delete does
 * nothing. Every other function uses the null handle, which ends the program if the handler has not
 * ended it.
 *
 * Threads: the rules of the classes behind the handles apply. Any thread may call the getters of a
 * tracker while it lives. A Quaternion, Vec2 or Vec3 belongs to one thread at a time.
 *
 * Errors: C++ exceptions (VRException) pass through the functions whose comments name them. A
 * caller in another language must not cause them. A C++ caller that catches them with MSVC must be
 * compiled with /EHs. With /EHsc the compiler assumes that no extern "C" function throws and may
 * leave the handlers out. C code between the library and the handler needs -fexceptions with GCC
 * and Clang.
 *
 * Units: metres and radians, unless a comment says otherwise; x right, y up, -z forward. */
#ifndef QLT_C_API_H
#define QLT_C_API_H

#include <qlt/Export.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C"
{
#endif

    /** One byte: 0 is false, everything else is true. Results are 0 or 1. */
    typedef uint8_t qlt_bool;

    /** The headset's passthrough camera. */
    typedef struct qlt_Camera qlt_Camera;
    /** The lens mesh of one eye. */
    typedef struct qlt_DistortionMeshBuilder qlt_DistortionMeshBuilder;
    /** A source of head poses. */
    typedef struct qlt_Tracker qlt_Tracker;
    /** A rotation as four floats in memory: w, x, y, z. */
    typedef struct qlt_Quaternion qlt_Quaternion;
    /** A texture coordinate as two floats in memory: x, y. */
    typedef struct qlt_Vec2 qlt_Vec2;
    /** A vector as three floats in memory: x, y, z. */
    typedef struct qlt_Vec3 qlt_Vec3;

    /* ---- Camera: the headset's passthrough image as an OpenGL texture. Call all of these
     * functions on the thread whose OpenGL context is current. */

    /** Opens the camera. A texture id of 0 makes it create a texture name. Without a headset the
     * process ends, so look for a headset first. Throws VRException when the system refuses. */
    QLT_API qlt_Camera* qlt_Camera_New(uint32_t textureId);
    /** Stops the camera and leaves the texture as it is. Checked. */
    QLT_API void qlt_Camera_Delete(qlt_Camera* pCamera);
    /** Waits for the next frame without a time limit and uploads it. Not checked. */
    QLT_API void qlt_Camera_Update(qlt_Camera* pCamera);
    /** The name of the OpenGL texture. Not checked. */
    QLT_API int32_t qlt_Camera_GetTextureId(qlt_Camera* pCamera);
    /** The width of the image in pixels, 2560. The handle is not read and may be null. */
    QLT_API int32_t qlt_Camera_GetWidth(qlt_Camera* pCamera);
    /** The height of the image in pixels, 1440. The handle is not read and may be null. */
    QLT_API int32_t qlt_Camera_GetHeight(qlt_Camera* pCamera);

    /* ---- Lens mesh of one eye: a grid that an engine draws over the eye's viewport without
     * back-face culling. */

    /** A grid of resX by resY cells, at least 1 by 1, as a triangle list or as one strip. */
    QLT_API qlt_DistortionMeshBuilder* qlt_DistortionMeshBuilder_New(int32_t resX, int32_t resY,
                                                                     qlt_bool leftEye,
                                                                     qlt_bool triangleList);
    /** Deletes the builder and all of its arrays. Checked. */
    QLT_API void
    qlt_DistortionMeshBuilder_Delete(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /** The number of vertices of the last BuildMesh; 0 before the first one. Checked. */
    QLT_API int32_t
    qlt_DistortionMeshBuilder_GetNumVertices(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /** The number of indices of the last BuildMesh; 0 before the first one. Checked. */
    QLT_API int32_t
    qlt_DistortionMeshBuilder_GetNumIndices(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /** The first vertex: x and y in the viewport, each in [-1, 1], and the depth, which is 0 inside
     * the lens and -1.1 outside. The array belongs to the builder and stays valid until the builder
     * is deleted. Null before the first BuildMesh. Checked. */
    QLT_API const qlt_Vec3*
    qlt_DistortionMeshBuilder_GetPosition(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /** The first texture coordinate of the red channel, u and v in [0, 1]. The array belongs to
     * the builder as the vertices do. Checked. */
    QLT_API const qlt_Vec2*
    qlt_DistortionMeshBuilder_GetTextureR(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /** The first texture coordinate of the green channel. Checked. */
    QLT_API const qlt_Vec2*
    qlt_DistortionMeshBuilder_GetTextureG(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /** The first texture coordinate of the blue channel. Checked. */
    QLT_API const qlt_Vec2*
    qlt_DistortionMeshBuilder_GetTextureB(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /** The first index. The array belongs to the builder as the vertices do. Checked. */
    QLT_API const int32_t*
    qlt_DistortionMeshBuilder_GetIndices(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /** Builds the mesh in fresh arrays. The arrays of earlier calls stay valid until the builder is
     * deleted. Throws std::bad_array_new_length when an int32_t cannot count the indices, and
     * std::bad_alloc without memory. Checked. */
    QLT_API void
    qlt_DistortionMeshBuilder_BuildMesh(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);

    /* ---- Trackers: head orientation and object poses. */

    /** The tracker of the headset, which may be plugged in at any time. */
    QLT_API qlt_Tracker* qlt_Hmd_New(void);
    /** A tracker without hardware, which makes a fixed motion. */
    QLT_API qlt_Tracker* qlt_SimulationTracker_New(void);
    /** Deletes a tracker of either kind. Stop it first. Checked. */
    QLT_API void qlt_Tracker_Delete(qlt_Tracker* pTracker);
    /** True when the device is connected. The call waits while a report is being read. Checked. */
    QLT_API qlt_bool qlt_Tracker_IsConnected(qlt_Tracker* pTracker);
    /** True when the tracker is started. Checked. */
    QLT_API qlt_bool qlt_Tracker_IsTracking(qlt_Tracker* pTracker);
    /** Writes the head's orientation into pOrientation. Both handles are checked. */
    QLT_API void qlt_Tracker_GetOrientation(qlt_Tracker* pTracker, qlt_Quaternion* pOrientation);
    /** Writes the predicted orientation into pOrientation. deliberate: both kinds of tracker ignore
     * lookAhead, which is in seconds, and predict the last orientation with the yaw origin applied
     * once more. Both handles are checked. */
    QLT_API void qlt_Tracker_GetPredictedOrientation(qlt_Tracker* pTracker,
                                                     qlt_Quaternion* pOrientation, float lookAhead);
    /** Writes the head's position into pPosition. Both handles are checked. */
    QLT_API void qlt_Tracker_GetPosition(qlt_Tracker* pTracker, qlt_Vec3* pPosition);
    /** Writes the position in metres of an object that the host service tracks. A missing object
     * has the zero position, and so has every negative index. Both handles are checked. Throws
     * VRException when the service fails. */
    QLT_API void qlt_Tracker_GetObjectPosition(qlt_Tracker* pTracker, qlt_Vec3* pPosition,
                                               int32_t index);
    /** Writes the orientation of an object that the host service tracks. A missing object has the
     * identity, and so has every negative index. Both handles are checked. Throws VRException when
     * the service fails. */
    QLT_API void qlt_Tracker_GetObjectOrientation(qlt_Tracker* pTracker,
                                                  qlt_Quaternion* pOrientation, int32_t index);
    /** Makes the current heading the forward direction. Checked. */
    QLT_API void qlt_Tracker_ResetYawOrigin(qlt_Tracker* pTracker);
    /** Starts the tracker and returns true. A failure of the host service is not reported; there
     * are no object poses then. Checked. */
    QLT_API qlt_bool qlt_Tracker_Start(qlt_Tracker* pTracker);
    /** Stops the tracker and returns true. It waits for the tracker's threads. Checked. Throws
     * VRException when the host service refuses to disconnect. */
    QLT_API qlt_bool qlt_Tracker_Stop(qlt_Tracker* pTracker);

    /* ---- Values. */

    /** Returns a quaternion of four zeros, which is no rotation. */
    QLT_API qlt_Quaternion* qlt_Quaternion_New(void);
    /** Returns a quaternion of these components. The scalar part w comes first. */
    QLT_API qlt_Quaternion* qlt_Quaternion_New4(float w, float x, float y, float z);
    /** Deletes the quaternion. Checked. */
    QLT_API void qlt_Quaternion_Delete(qlt_Quaternion* pQuaternion);
    /** The scalar part, which is the cosine of half the angle. Checked. */
    QLT_API float qlt_Quaternion_w(const qlt_Quaternion* pQuaternion);
    /** The first component of the vector part. Checked. */
    QLT_API float qlt_Quaternion_x(const qlt_Quaternion* pQuaternion);
    /** The second component of the vector part. Checked. */
    QLT_API float qlt_Quaternion_y(const qlt_Quaternion* pQuaternion);
    /** The third component of the vector part. Checked. */
    QLT_API float qlt_Quaternion_z(const qlt_Quaternion* pQuaternion);
    /** Sets w and leaves the other components. Checked. */
    QLT_API void qlt_Quaternion_set_w(qlt_Quaternion* pQuaternion, float w);
    /** Sets x and leaves the other components. Checked. */
    QLT_API void qlt_Quaternion_set_x(qlt_Quaternion* pQuaternion, float x);
    /** Sets y and leaves the other components. Checked. */
    QLT_API void qlt_Quaternion_set_y(qlt_Quaternion* pQuaternion, float y);
    /** Sets z and leaves the other components. Checked. */
    QLT_API void qlt_Quaternion_set_z(qlt_Quaternion* pQuaternion, float z);
    /** Converts in place to the axes of Unity: (-w, x, y, -z). Checked. */
    QLT_API void qlt_Quaternion_ConvertToUnity(qlt_Quaternion* pQuaternion);

    /** Returns a zero vector. */
    QLT_API qlt_Vec2* qlt_Vec2_New(void);
    /** Deletes the vector. Checked. */
    QLT_API void qlt_Vec2_Delete(qlt_Vec2* pVec2);
    /** The component to the right. Not checked. */
    QLT_API float qlt_Vec2_x(const qlt_Vec2* pVec2);
    /** The upward component. Not checked. */
    QLT_API float qlt_Vec2_y(const qlt_Vec2* pVec2);

    /** Returns a zero vector. */
    QLT_API qlt_Vec3* qlt_Vec3_New(void);
    /** Deletes the vector. Checked. */
    QLT_API void qlt_Vec3_Delete(qlt_Vec3* pVec3);
    /** The component to the right. Checked. */
    QLT_API float qlt_Vec3_x(const qlt_Vec3* pVec3);
    /** The upward component. Checked. */
    QLT_API float qlt_Vec3_y(const qlt_Vec3* pVec3);
    /** The backward component. Checked. */
    QLT_API float qlt_Vec3_z(const qlt_Vec3* pVec3);

    /* ---- Constants of the headset and of a default user. */

    /** The horizontal field of view of one eye in degrees. */
    QLT_API float qlt_Params_EYE_FOV_DEG(void);
    /** The width of an eye's image in pixels. */
    QLT_API int32_t qlt_Params_EYE_RESOLUTION(void);
    /** The stretch of the eye image over the viewport. */
    QLT_API float qlt_Params_EYE_STRETCH(void);
    /** True when engines have to apply the lens mesh. */
    QLT_API qlt_bool qlt_Params_EYE_DISTORT(void);
    /** The distance between the eyes in metres. */
    QLT_API float qlt_Params_USER_IPD_M(void);
    /** The forward distance from the neck to the eyes in metres. */
    QLT_API float qlt_Params_USER_NECK_EYE_H_M(void);
    /** The upward distance from the neck to the eyes in metres. */
    QLT_API float qlt_Params_USER_NECK_EYE_V_M(void);

#ifdef __cplusplus
}
#endif

#endif
