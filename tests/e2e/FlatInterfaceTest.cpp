// These tests cover the checks that the flat interface adds. The tests of the classes cover its
// operations.
#include <qlt/Runtime/VRException.h>
#include <qlt/qlt_c_api.h>

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <functional>
#include <tuple>

TEST(FlatInterfaceTest, DeletingANullHandleIsReportedAndDoesNothing)
{
    AssertionRecorder assertions;
    qlt_Camera_Delete(nullptr);
    qlt_DistortionMeshBuilder_Delete(nullptr);
    qlt_Tracker_Delete(nullptr);
    qlt_Quaternion_Delete(nullptr);
    qlt_Vec2_Delete(nullptr);
    qlt_Vec3_Delete(nullptr);
    const std::vector<std::string> reports = {
        "pCamera != nullptr|qlt_c_api|351",  "pDistortionMeshBuilder != nullptr|qlt_c_api|154",
        "pTracker != nullptr|qlt_c_api|264", "pQuaternion != nullptr|qlt_c_api|76",
        "pVec2 != nullptr|qlt_c_api|20",     "pVec3 != nullptr|qlt_c_api|42"};
    EXPECT_EQ(assertions.Take(), reports);
}

TEST(FlatInterfaceTest, EachCheckHasItsTextAndItsLineAndLetsExceptionsPass)
{
    qlt_Tracker* tracker = qlt_SimulationTracker_New();
    const std::string t = "pTracker", q = "pQuaternion", m = "pDistortionMeshBuilder";
    const std::string o = "pOrientation", p = "pPosition", v = "pVec3";
    const std::tuple<std::string, unsigned, std::function<void()>> rows[] = {
        {m, 161, [] { qlt_DistortionMeshBuilder_GetNumVertices(nullptr); }},
        {m, 168, [] { qlt_DistortionMeshBuilder_GetNumIndices(nullptr); }},
        {m, 175, [] { qlt_DistortionMeshBuilder_GetPosition(nullptr); }},
        {m, 182, [] { qlt_DistortionMeshBuilder_GetTextureR(nullptr); }},
        {m, 189, [] { qlt_DistortionMeshBuilder_GetTextureG(nullptr); }},
        {m, 196, [] { qlt_DistortionMeshBuilder_GetTextureB(nullptr); }},
        {m, 203, [] { qlt_DistortionMeshBuilder_GetIndices(nullptr); }},
        {m, 210, [] { qlt_DistortionMeshBuilder_BuildMesh(nullptr); }},
        {t, 271, [] { qlt_Tracker_IsConnected(nullptr); }},
        {t, 278, [] { qlt_Tracker_IsTracking(nullptr); }},
        {t, 285, [] { qlt_Tracker_GetOrientation(nullptr, nullptr); }},
        {o, 286, [=] { qlt_Tracker_GetOrientation(tracker, nullptr); }},
        {t, 293, [] { qlt_Tracker_GetPredictedOrientation(nullptr, nullptr, 0); }},
        {o, 294, [=] { qlt_Tracker_GetPredictedOrientation(tracker, nullptr, 0); }},
        {t, 301, [] { qlt_Tracker_GetPosition(nullptr, nullptr); }},
        {p, 302, [=] { qlt_Tracker_GetPosition(tracker, nullptr); }},
        {t, 309, [] { qlt_Tracker_GetObjectPosition(nullptr, nullptr, 0); }},
        {p, 310, [=] { qlt_Tracker_GetObjectPosition(tracker, nullptr, 0); }},
        {t, 317, [] { qlt_Tracker_GetObjectOrientation(nullptr, nullptr, 0); }},
        {o, 318, [=] { qlt_Tracker_GetObjectOrientation(tracker, nullptr, 0); }},
        {t, 325, [] { qlt_Tracker_ResetYawOrigin(nullptr); }},
        {t, 332, [] { qlt_Tracker_Start(nullptr); }},
        {t, 339, [] { qlt_Tracker_Stop(nullptr); }},
        {q, 83, [] { qlt_Quaternion_w(nullptr); }},
        {q, 90, [] { qlt_Quaternion_x(nullptr); }},
        {q, 97, [] { qlt_Quaternion_y(nullptr); }},
        {q, 105, [] { qlt_Quaternion_z(nullptr); }},
        {q, 112, [] { qlt_Quaternion_set_w(nullptr, 0); }},
        {q, 119, [] { qlt_Quaternion_set_x(nullptr, 0); }},
        {q, 126, [] { qlt_Quaternion_set_y(nullptr, 0); }},
        {q, 133, [] { qlt_Quaternion_set_z(nullptr, 0); }},
        {q, 140, [] { qlt_Quaternion_ConvertToUnity(nullptr); }},
        {v, 49, [] { qlt_Vec3_x(nullptr); }},
        {v, 54, [] { qlt_Vec3_y(nullptr); }},
        {v, 60, [] { qlt_Vec3_z(nullptr); }},
    };
    for (const auto& [name, line, call] : rows)
    {
        AssertionRecorder assertions;
        static qlt::AssertionHandler record = nullptr;
        record = qlt::SetAssertionHandler(
            [](const wchar_t* condition, const wchar_t* file, unsigned where)
            {
                record(condition, file, where);
                throw VRException(VR_STATUS_ERROR_ASSERTION, L"passes.");
            });
        EXPECT_THROW(call(), VRException) << name << line;
        EXPECT_EQ(assertions.Take().at(0), name + " != nullptr|qlt_c_api|" + std::to_string(line));
    }
    qlt_Tracker_Delete(tracker);
}
