// Each function forwards to one operation of a class. The lines of the checks are part of the
// interface. A function goes on after a failed check, because only the assertion handler decides
// whether the program ends.
#include <qlt/qlt_c_api.h>

#include <qlt/Sensors/Camera.h>
#include <qlt/Sensors/DistortionMeshBuilder.h>
#include <qlt/Sensors/Hmd.h>
#include <qlt/Sensors/SimulatorTracker.h>

#include "Runtime/Check.h"

#include <new>

#define QLT_SOURCE_FILE L"qlt_c_api"

using namespace qlt;

namespace
{

// A handle is the object's address.
Camera* Object(qlt_Camera* p) { return reinterpret_cast<Camera*>(p); }
DistortionMeshBuilder* Object(qlt_DistortionMeshBuilder* p)
{
    return reinterpret_cast<DistortionMeshBuilder*>(p);
}
Tracker* Object(qlt_Tracker* p) { return reinterpret_cast<Tracker*>(p); }
Quaternion* Object(qlt_Quaternion* p) { return reinterpret_cast<Quaternion*>(p); }
Vec3* Object(qlt_Vec3* p) { return reinterpret_cast<Vec3*>(p); }
Vec2* Object(qlt_Vec2* p) { return reinterpret_cast<Vec2*>(p); }
const Quaternion* Object(const qlt_Quaternion* p) { return reinterpret_cast<const Quaternion*>(p); }
const Vec3* Object(const qlt_Vec3* p) { return reinterpret_cast<const Vec3*>(p); }
const Vec2* Object(const qlt_Vec2* p) { return reinterpret_cast<const Vec2*>(p); }

template <typename Handle, typename Class>
Handle* ToHandle(Class* object)
{
    return reinterpret_cast<Handle*>(object);
}

/// The unsigned index that the class takes. A negative index becomes larger than the index of any
/// object.
std::uint64_t Widen(std::int32_t index)
{
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(index));
}

} // namespace

qlt_Camera* qlt_Camera_New(uint32_t textureId)
{
    return ToHandle<qlt_Camera>(new (std::nothrow) Camera(textureId, Camera::RENDERER_GL));
}

void qlt_Camera_Delete(qlt_Camera* pCamera)
{
    QLT_CHECK_LINE(pCamera != nullptr, 351);
    delete Object(pCamera);
}

void qlt_Camera_Update(qlt_Camera* pCamera) { Object(pCamera)->Update(); }

int32_t qlt_Camera_GetTextureId(qlt_Camera* pCamera) { return Object(pCamera)->GetTextureId(); }

int32_t qlt_Camera_GetWidth(qlt_Camera*) { return Camera::GetWidth(); }

int32_t qlt_Camera_GetHeight(qlt_Camera*) { return Camera::GetHeight(); }

qlt_DistortionMeshBuilder* qlt_DistortionMeshBuilder_New(int32_t resX, int32_t resY,
                                                         qlt_bool leftEye, qlt_bool triangleList)
{
    const Params::Eye eye = leftEye != 0 ? Params::EYE_LEFT : Params::EYE_RIGHT;
    return ToHandle<qlt_DistortionMeshBuilder>(
        new (std::nothrow) DistortionMeshBuilder(resX, resY, eye, triangleList != 0));
}

void qlt_DistortionMeshBuilder_Delete(qlt_DistortionMeshBuilder* pDistortionMeshBuilder)
{
    QLT_CHECK_LINE(pDistortionMeshBuilder != nullptr, 154);
    delete Object(pDistortionMeshBuilder);
}

int32_t qlt_DistortionMeshBuilder_GetNumVertices(qlt_DistortionMeshBuilder* pDistortionMeshBuilder)
{
    QLT_CHECK_LINE(pDistortionMeshBuilder != nullptr, 161);
    return Object(pDistortionMeshBuilder)->GetNumVertices();
}

int32_t qlt_DistortionMeshBuilder_GetNumIndices(qlt_DistortionMeshBuilder* pDistortionMeshBuilder)
{
    QLT_CHECK_LINE(pDistortionMeshBuilder != nullptr, 168);
    return Object(pDistortionMeshBuilder)->GetNumIndices();
}

const qlt_Vec3*
qlt_DistortionMeshBuilder_GetPosition(qlt_DistortionMeshBuilder* pDistortionMeshBuilder)
{
    QLT_CHECK_LINE(pDistortionMeshBuilder != nullptr, 175);
    return ToHandle<const qlt_Vec3>(Object(pDistortionMeshBuilder)->GetPosition());
}

const qlt_Vec2*
qlt_DistortionMeshBuilder_GetTextureR(qlt_DistortionMeshBuilder* pDistortionMeshBuilder)
{
    QLT_CHECK_LINE(pDistortionMeshBuilder != nullptr, 182);
    return ToHandle<const qlt_Vec2>(Object(pDistortionMeshBuilder)->GetTextureR());
}

const qlt_Vec2*
qlt_DistortionMeshBuilder_GetTextureG(qlt_DistortionMeshBuilder* pDistortionMeshBuilder)
{
    QLT_CHECK_LINE(pDistortionMeshBuilder != nullptr, 189);
    return ToHandle<const qlt_Vec2>(Object(pDistortionMeshBuilder)->GetTextureG());
}

const qlt_Vec2*
qlt_DistortionMeshBuilder_GetTextureB(qlt_DistortionMeshBuilder* pDistortionMeshBuilder)
{
    QLT_CHECK_LINE(pDistortionMeshBuilder != nullptr, 196);
    return ToHandle<const qlt_Vec2>(Object(pDistortionMeshBuilder)->GetTextureB());
}

const int32_t*
qlt_DistortionMeshBuilder_GetIndices(qlt_DistortionMeshBuilder* pDistortionMeshBuilder)
{
    QLT_CHECK_LINE(pDistortionMeshBuilder != nullptr, 203);
    return Object(pDistortionMeshBuilder)->GetIndices();
}

void qlt_DistortionMeshBuilder_BuildMesh(qlt_DistortionMeshBuilder* pDistortionMeshBuilder)
{
    QLT_CHECK_LINE(pDistortionMeshBuilder != nullptr, 210);
    Object(pDistortionMeshBuilder)->BuildMesh();
}

qlt_Tracker* qlt_Hmd_New()
{
    return ToHandle<qlt_Tracker>(static_cast<Tracker*>(new (std::nothrow) Hmd));
}

qlt_Tracker* qlt_SimulationTracker_New()
{
    return ToHandle<qlt_Tracker>(static_cast<Tracker*>(new (std::nothrow) SimulatorTracker));
}

void qlt_Tracker_Delete(qlt_Tracker* pTracker)
{
    QLT_CHECK_LINE(pTracker != nullptr, 264);
    delete Object(pTracker);
}

qlt_bool qlt_Tracker_IsConnected(qlt_Tracker* pTracker)
{
    QLT_CHECK_LINE(pTracker != nullptr, 271);
    return Object(pTracker)->IsConnected() ? 1 : 0;
}

qlt_bool qlt_Tracker_IsTracking(qlt_Tracker* pTracker)
{
    QLT_CHECK_LINE(pTracker != nullptr, 278);
    return Object(pTracker)->IsTracking() ? 1 : 0;
}

void qlt_Tracker_GetOrientation(qlt_Tracker* pTracker, qlt_Quaternion* pOrientation)
{
    QLT_CHECK_LINE(pTracker != nullptr, 285);
    QLT_CHECK_LINE(pOrientation != nullptr, 286);
    *Object(pOrientation) = Object(pTracker)->CopyOrientation();
}

void qlt_Tracker_GetPredictedOrientation(qlt_Tracker* pTracker, qlt_Quaternion* pOrientation,
                                         float lookAhead)
{
    QLT_CHECK_LINE(pTracker != nullptr, 293);
    QLT_CHECK_LINE(pOrientation != nullptr, 294);
    *Object(pOrientation) = Object(pTracker)->GetPredictedOrientation(lookAhead);
}

void qlt_Tracker_GetPosition(qlt_Tracker* pTracker, qlt_Vec3* pPosition)
{
    QLT_CHECK_LINE(pTracker != nullptr, 301);
    QLT_CHECK_LINE(pPosition != nullptr, 302);
    *Object(pPosition) = Object(pTracker)->CopyPosition();
}

void qlt_Tracker_GetObjectPosition(qlt_Tracker* pTracker, qlt_Vec3* pPosition, int32_t index)
{
    QLT_CHECK_LINE(pTracker != nullptr, 309);
    QLT_CHECK_LINE(pPosition != nullptr, 310);
    *Object(pPosition) = Object(pTracker)->GetObjectPosition(Widen(index));
}

void qlt_Tracker_GetObjectOrientation(qlt_Tracker* pTracker, qlt_Quaternion* pOrientation,
                                      int32_t index)
{
    QLT_CHECK_LINE(pTracker != nullptr, 317);
    QLT_CHECK_LINE(pOrientation != nullptr, 318);
    *Object(pOrientation) = Object(pTracker)->GetObjectOrientation(Widen(index));
}

void qlt_Tracker_ResetYawOrigin(qlt_Tracker* pTracker)
{
    QLT_CHECK_LINE(pTracker != nullptr, 325);
    Object(pTracker)->ResetYawOrigin();
}

qlt_bool qlt_Tracker_Start(qlt_Tracker* pTracker)
{
    QLT_CHECK_LINE(pTracker != nullptr, 332);
    return Object(pTracker)->Start() ? 1 : 0;
}

qlt_bool qlt_Tracker_Stop(qlt_Tracker* pTracker)
{
    QLT_CHECK_LINE(pTracker != nullptr, 339);
    return Object(pTracker)->Stop() ? 1 : 0;
}

qlt_Quaternion* qlt_Quaternion_New()
{
    return ToHandle<qlt_Quaternion>(new (std::nothrow) Quaternion);
}

qlt_Quaternion* qlt_Quaternion_New4(float w, float x, float y, float z)
{
    return ToHandle<qlt_Quaternion>(new (std::nothrow) Quaternion(w, x, y, z));
}

void qlt_Quaternion_Delete(qlt_Quaternion* pQuaternion)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 76);
    delete Object(pQuaternion);
}

float qlt_Quaternion_w(const qlt_Quaternion* pQuaternion)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 83);
    return Object(pQuaternion)->w();
}

float qlt_Quaternion_x(const qlt_Quaternion* pQuaternion)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 90);
    return Object(pQuaternion)->x();
}

float qlt_Quaternion_y(const qlt_Quaternion* pQuaternion)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 97);
    return Object(pQuaternion)->y();
}

float qlt_Quaternion_z(const qlt_Quaternion* pQuaternion)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 105);
    return Object(pQuaternion)->z();
}

void qlt_Quaternion_set_w(qlt_Quaternion* pQuaternion, float w)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 112);
    Object(pQuaternion)->w() = w;
}

void qlt_Quaternion_set_x(qlt_Quaternion* pQuaternion, float x)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 119);
    Object(pQuaternion)->x() = x;
}

void qlt_Quaternion_set_y(qlt_Quaternion* pQuaternion, float y)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 126);
    Object(pQuaternion)->y() = y;
}

void qlt_Quaternion_set_z(qlt_Quaternion* pQuaternion, float z)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 133);
    Object(pQuaternion)->z() = z;
}

void qlt_Quaternion_ConvertToUnity(qlt_Quaternion* pQuaternion)
{
    QLT_CHECK_LINE(pQuaternion != nullptr, 140);
    *Object(pQuaternion) = Quaternion::ConvertToUnity(*Object(pQuaternion));
}

qlt_Vec2* qlt_Vec2_New() { return ToHandle<qlt_Vec2>(new (std::nothrow) Vec2); }

void qlt_Vec2_Delete(qlt_Vec2* pVec2)
{
    QLT_CHECK_LINE(pVec2 != nullptr, 20);
    delete Object(pVec2);
}

float qlt_Vec2_x(const qlt_Vec2* pVec2) { return Object(pVec2)->x(); }

float qlt_Vec2_y(const qlt_Vec2* pVec2) { return Object(pVec2)->y(); }

qlt_Vec3* qlt_Vec3_New() { return ToHandle<qlt_Vec3>(new (std::nothrow) Vec3); }

void qlt_Vec3_Delete(qlt_Vec3* pVec3)
{
    QLT_CHECK_LINE(pVec3 != nullptr, 42);
    delete Object(pVec3);
}

float qlt_Vec3_x(const qlt_Vec3* pVec3)
{
    QLT_CHECK_LINE(pVec3 != nullptr, 49);
    return Object(pVec3)->x();
}

float qlt_Vec3_y(const qlt_Vec3* pVec3)
{
    QLT_CHECK_LINE(pVec3 != nullptr, 54);
    return Object(pVec3)->y();
}

float qlt_Vec3_z(const qlt_Vec3* pVec3)
{
    QLT_CHECK_LINE(pVec3 != nullptr, 60);
    return Object(pVec3)->z();
}

float qlt_Params_EYE_FOV_DEG() { return Params::EYE_FOV_DEG; }

int32_t qlt_Params_EYE_RESOLUTION() { return Params::EYE_RESOLUTION; }

float qlt_Params_EYE_STRETCH() { return Params::EYE_STRETCH; }

qlt_bool qlt_Params_EYE_DISTORT() { return Params::EYE_DISTORT ? 1 : 0; }

float qlt_Params_USER_IPD_M() { return Params::USER_IPD_M; }

float qlt_Params_USER_NECK_EYE_H_M() { return Params::USER_NECK_EYE_H_M; }

float qlt_Params_USER_NECK_EYE_V_M() { return Params::USER_NECK_EYE_V_M; }
