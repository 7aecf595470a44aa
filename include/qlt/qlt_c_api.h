/* The flat interface, for bindings of engines: C functions over handles.
 *
 * Ownership: what a ..._New function returns belongs to the caller, who gives it back with the
 * matching ..._Delete, once. Arrays of a mesh belong to its builder. A ..._New returns null when
 * there is no memory.
 *
 * Null handles: where a function says "checked", a null handle is reported to the assertion handler
 * (by default as a line on standard error). After the report a ..._Delete does nothing; every other
 * function goes on as if the handle were good, which ends the program unless the handler does.
 *
 * Threads: as the classes behind the handles. The getters of a tracker may be called from any
 * thread while it lives; a Quaternion, Vec2 or Vec3 belongs to one thread at a time.
 *
 * Errors: C++ exceptions (VRException) pass through; a caller in another language must not cause
 * them: they stand at the functions. A C++ caller that catches them with MSVC must be compiled with
 * /EHs. With /EHsc the compiler assumes that no extern "C" function throws and may leave the
 * handlers out. C code between the library and the handler needs -fexceptions with GCC and Clang.
 *
 * Units: metres, radians where nothing else is said, y up, x right, -z forward. */
#ifndef QLT_C_API_H
#define QLT_C_API_H

#include <qlt/Export.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C"
{
#endif

    /* One byte: 0 is false, anything else true; results are 0 or 1. */
    typedef uint8_t qlt_bool;

    typedef struct qlt_Camera qlt_Camera;
    typedef struct qlt_DistortionMeshBuilder qlt_DistortionMeshBuilder;
    typedef struct qlt_Tracker qlt_Tracker;
    typedef struct qlt_Quaternion qlt_Quaternion; /* four floats: w, x, y, z */
    typedef struct qlt_Vec2 qlt_Vec2;             /* two floats: x, y */
    typedef struct qlt_Vec3 qlt_Vec3;             /* three floats: x, y, z */

    /* ---- Camera: the headset's passthrough image as an OpenGL texture. All of it on the thread
     * whose OpenGL context is current. */

    /* Opens the camera; a texture id of 0 makes a texture name. Without a headset the process ends,
     * so ask for one first. VRException when the system refuses. */
    QLT_API qlt_Camera* qlt_Camera_New(uint32_t textureId);
    /* Stops the camera; the texture stays. Checked. */
    QLT_API void qlt_Camera_Delete(qlt_Camera* pCamera);
    /* Waits for the next frame, for ever if none comes, and uploads it. Not checked. */
    QLT_API void qlt_Camera_Update(qlt_Camera* pCamera);
    /* The name of the OpenGL texture. Not checked. */
    QLT_API int32_t qlt_Camera_GetTextureId(qlt_Camera* pCamera);
    /* Size of the image in pixels, 2560 x 1440; the handle is not read and may be null. */
    QLT_API int32_t qlt_Camera_GetWidth(qlt_Camera* pCamera);
    QLT_API int32_t qlt_Camera_GetHeight(qlt_Camera* pCamera);

    /* ---- Lens mesh of one eye: a grid to draw over the eye's viewport, without back-face culling.
     */

    /* A grid of resX x resY cells, at least 1 x 1; indices of a triangle list, or of one strip. */
    QLT_API qlt_DistortionMeshBuilder* qlt_DistortionMeshBuilder_New(int32_t resX, int32_t resY,
                                                                     qlt_bool leftEye,
                                                                     qlt_bool triangleList);
    /* With its arrays. Checked. */
    QLT_API void
    qlt_DistortionMeshBuilder_Delete(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /* How many vertices and indices the last BuildMesh made: 0 until the first. Checked. */
    QLT_API int32_t
    qlt_DistortionMeshBuilder_GetNumVertices(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    QLT_API int32_t
    qlt_DistortionMeshBuilder_GetNumIndices(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /* The first vertex: x and y in the viewport, -1 .. 1, and the depth, 0 inside the lens and -1.1
     * outside. The builder's own, until it is deleted; null until BuildMesh. Checked. */
    QLT_API const qlt_Vec3*
    qlt_DistortionMeshBuilder_GetPosition(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /* The first texture coordinate of a colour channel, 0 .. 1; as the vertices. Checked. */
    QLT_API const qlt_Vec2*
    qlt_DistortionMeshBuilder_GetTextureR(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    QLT_API const qlt_Vec2*
    qlt_DistortionMeshBuilder_GetTextureG(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    QLT_API const qlt_Vec2*
    qlt_DistortionMeshBuilder_GetTextureB(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /* The first index; as the vertices. Checked. */
    QLT_API const int32_t*
    qlt_DistortionMeshBuilder_GetIndices(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);
    /* Computes the mesh into fresh arrays; those of earlier calls stay until the builder is
     * deleted. std::bad_array_new_length when an int32_t cannot count its indices, std::bad_alloc
     * without memory. Checked. */
    QLT_API void
    qlt_DistortionMeshBuilder_BuildMesh(qlt_DistortionMeshBuilder* pDistortionMeshBuilder);

    /* ---- Trackers: head orientation and object poses. */

    /* The headset, which may be plugged in at any time. */
    QLT_API qlt_Tracker* qlt_Hmd_New(void);
    /* Motion without hardware. */
    QLT_API qlt_Tracker* qlt_SimulationTracker_New(void);
    /* Either kind; stop it first. Checked. */
    QLT_API void qlt_Tracker_Delete(qlt_Tracker* pTracker);
    /* Whether the device is there; waits while a report is being read. Checked. */
    QLT_API qlt_bool qlt_Tracker_IsConnected(qlt_Tracker* pTracker);
    /* Whether it has been started. Checked. */
    QLT_API qlt_bool qlt_Tracker_IsTracking(qlt_Tracker* pTracker);
    /* The head's orientation, written into pOrientation. Both handles are checked. */
    QLT_API void qlt_Tracker_GetOrientation(qlt_Tracker* pTracker, qlt_Quaternion* pOrientation);
    /* deliberate: both kinds of tracker ignore lookAhead, in seconds, and predict the last
     * orientation with the yaw origin applied once more. Both handles are checked. */
    QLT_API void qlt_Tracker_GetPredictedOrientation(qlt_Tracker* pTracker,
                                                     qlt_Quaternion* pOrientation, float lookAhead);
    /* The head's position, written into pPosition. Both handles are checked. */
    QLT_API void qlt_Tracker_GetPosition(qlt_Tracker* pTracker, qlt_Vec3* pPosition);
    /* The pose of an object that the host service tracks; zero and the identity for one that is not
     * there, as for every negative index. Both handles are checked. VRException when the service
     * fails. */
    QLT_API void qlt_Tracker_GetObjectPosition(qlt_Tracker* pTracker, qlt_Vec3* pPosition,
                                               int32_t index);
    QLT_API void qlt_Tracker_GetObjectOrientation(qlt_Tracker* pTracker,
                                                  qlt_Quaternion* pOrientation, int32_t index);
    /* Makes the direction of now the one of yaw 0. Checked. */
    QLT_API void qlt_Tracker_ResetYawOrigin(qlt_Tracker* pTracker);
    /* Starts and stops; true when it did. Stop waits for the tracker's threads. Checked.
     * VRException when the host service fails. */
    QLT_API qlt_bool qlt_Tracker_Start(qlt_Tracker* pTracker);
    QLT_API qlt_bool qlt_Tracker_Stop(qlt_Tracker* pTracker);

    /* ---- Values. */

    /* All zero, which is no rotation; and w, the scalar part, first. */
    QLT_API qlt_Quaternion* qlt_Quaternion_New(void);
    QLT_API qlt_Quaternion* qlt_Quaternion_New4(float w, float x, float y, float z);
    /* All of these are checked. */
    QLT_API void qlt_Quaternion_Delete(qlt_Quaternion* pQuaternion);
    QLT_API float qlt_Quaternion_w(const qlt_Quaternion* pQuaternion);
    QLT_API float qlt_Quaternion_x(const qlt_Quaternion* pQuaternion);
    QLT_API float qlt_Quaternion_y(const qlt_Quaternion* pQuaternion);
    QLT_API float qlt_Quaternion_z(const qlt_Quaternion* pQuaternion);
    QLT_API void qlt_Quaternion_set_w(qlt_Quaternion* pQuaternion, float w);
    QLT_API void qlt_Quaternion_set_x(qlt_Quaternion* pQuaternion, float x);
    QLT_API void qlt_Quaternion_set_y(qlt_Quaternion* pQuaternion, float y);
    QLT_API void qlt_Quaternion_set_z(qlt_Quaternion* pQuaternion, float z);
    /* In place, into the axes of Unity. */
    QLT_API void qlt_Quaternion_ConvertToUnity(qlt_Quaternion* pQuaternion);

    /* Zero. */
    QLT_API qlt_Vec2* qlt_Vec2_New(void);
    /* Checked; the components are not. */
    QLT_API void qlt_Vec2_Delete(qlt_Vec2* pVec2);
    QLT_API float qlt_Vec2_x(const qlt_Vec2* pVec2);
    QLT_API float qlt_Vec2_y(const qlt_Vec2* pVec2);

    /* Zero. */
    QLT_API qlt_Vec3* qlt_Vec3_New(void);
    /* All of these are checked. */
    QLT_API void qlt_Vec3_Delete(qlt_Vec3* pVec3);
    QLT_API float qlt_Vec3_x(const qlt_Vec3* pVec3);
    QLT_API float qlt_Vec3_y(const qlt_Vec3* pVec3);
    QLT_API float qlt_Vec3_z(const qlt_Vec3* pVec3);

    /* ---- Constants of the headset and of a default user. */

    QLT_API float qlt_Params_EYE_FOV_DEG(void);       /* horizontal, of one eye, degrees */
    QLT_API int32_t qlt_Params_EYE_RESOLUTION(void);  /* of an eye's image, pixels */
    QLT_API float qlt_Params_EYE_STRETCH(void);       /* of the image over the viewport */
    QLT_API qlt_bool qlt_Params_EYE_DISTORT(void);    /* whether the lens needs its mesh */
    QLT_API float qlt_Params_USER_IPD_M(void);        /* between the eyes, metres */
    QLT_API float qlt_Params_USER_NECK_EYE_H_M(void); /* from neck to eyes, forward, metres */
    QLT_API float qlt_Params_USER_NECK_EYE_V_M(void); /* and upward */

#ifdef __cplusplus
}
#endif

#endif
