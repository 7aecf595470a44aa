// What the flat interface adds to the classes: its checks, and what passes through it.
#include <qlt/Runtime/VRException.h>
#include <qlt/qlt_c_api.h>

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

namespace
{

using Reports = std::vector<std::string>;

} // namespace

TEST(FlatInterfaceTest, DeletingNothingIsReportedAndDoesNothing)
{
    AssertionRecorder assertions;
    qlt_Camera_Delete(nullptr);
    qlt_DistortionMeshBuilder_Delete(nullptr);
    qlt_Tracker_Delete(nullptr);
    qlt_Quaternion_Delete(nullptr);
    qlt_Vec2_Delete(nullptr);
    qlt_Vec3_Delete(nullptr);
    EXPECT_EQ(assertions.Take(),
              (Reports{"pCamera != nullptr|qlt_c_api|351",
                       "pDistortionMeshBuilder != nullptr|qlt_c_api|154",
                       "pTracker != nullptr|qlt_c_api|264", "pQuaternion != nullptr|qlt_c_api|76",
                       "pVec2 != nullptr|qlt_c_api|20", "pVec3 != nullptr|qlt_c_api|42"}));
}

TEST(FlatInterfaceTest, EachCheckHasItsTextAndItsLineAndLetsExceptionsPass)
{
    qlt_Tracker* tracker = qlt_SimulationTracker_New();
    const std::string t = "pTracker != nullptr|";
    const std::string q = "pQuaternion != nullptr|";
    const std::string m = "pDistortionMeshBuilder != nullptr|";
    const std::string o = "pOrientation != nullptr|";
    const std::string p = "pPosition != nullptr|";
    const std::string v = "pVec3 != nullptr|";
    const struct
    {
        std::string report;
        std::function<void()> call;
    } rows[] = {
        {m + "161", [] { qlt_DistortionMeshBuilder_GetNumVertices(nullptr); }},
        {m + "168", [] { qlt_DistortionMeshBuilder_GetNumIndices(nullptr); }},
        {m + "175", [] { qlt_DistortionMeshBuilder_GetPosition(nullptr); }},
        {m + "182", [] { qlt_DistortionMeshBuilder_GetTextureR(nullptr); }},
        {m + "189", [] { qlt_DistortionMeshBuilder_GetTextureG(nullptr); }},
        {m + "196", [] { qlt_DistortionMeshBuilder_GetTextureB(nullptr); }},
        {m + "203", [] { qlt_DistortionMeshBuilder_GetIndices(nullptr); }},
        {m + "210", [] { qlt_DistortionMeshBuilder_BuildMesh(nullptr); }},
        {t + "271", [] { qlt_Tracker_IsConnected(nullptr); }},
        {t + "278", [] { qlt_Tracker_IsTracking(nullptr); }},
        {t + "285", [] { qlt_Tracker_GetOrientation(nullptr, nullptr); }},
        {o + "286", [=] { qlt_Tracker_GetOrientation(tracker, nullptr); }},
        {t + "293", [] { qlt_Tracker_GetPredictedOrientation(nullptr, nullptr, 0); }},
        {o + "294", [=] { qlt_Tracker_GetPredictedOrientation(tracker, nullptr, 0); }},
        {t + "301", [] { qlt_Tracker_GetPosition(nullptr, nullptr); }},
        {p + "302", [=] { qlt_Tracker_GetPosition(tracker, nullptr); }},
        {t + "309", [] { qlt_Tracker_GetObjectPosition(nullptr, nullptr, 0); }},
        {p + "310", [=] { qlt_Tracker_GetObjectPosition(tracker, nullptr, 0); }},
        {t + "317", [] { qlt_Tracker_GetObjectOrientation(nullptr, nullptr, 0); }},
        {o + "318", [=] { qlt_Tracker_GetObjectOrientation(tracker, nullptr, 0); }},
        {t + "325", [] { qlt_Tracker_ResetYawOrigin(nullptr); }},
        {t + "332", [] { qlt_Tracker_Start(nullptr); }},
        {t + "339", [] { qlt_Tracker_Stop(nullptr); }},
        {q + "83", [] { qlt_Quaternion_w(nullptr); }},
        {q + "90", [] { qlt_Quaternion_x(nullptr); }},
        {q + "97", [] { qlt_Quaternion_y(nullptr); }},
        {q + "105", [] { qlt_Quaternion_z(nullptr); }},
        {q + "112", [] { qlt_Quaternion_set_w(nullptr, 0); }},
        {q + "119", [] { qlt_Quaternion_set_x(nullptr, 0); }},
        {q + "126", [] { qlt_Quaternion_set_y(nullptr, 0); }},
        {q + "133", [] { qlt_Quaternion_set_z(nullptr, 0); }},
        {q + "140", [] { qlt_Quaternion_ConvertToUnity(nullptr); }},
        {v + "49", [] { qlt_Vec3_x(nullptr); }},
        {v + "54", [] { qlt_Vec3_y(nullptr); }},
        {v + "60", [] { qlt_Vec3_z(nullptr); }},
    };
    for (const auto& row : rows)
    {
        static std::string report;
        report.clear();
        qlt::SetAssertionHandler(
            [](const wchar_t* condition, const wchar_t* file, unsigned line)
            {
                const std::wstring text(condition);
                report = std::string(text.begin(), text.end()) + "|" + std::to_string(line);
                EXPECT_STREQ(file, L"qlt_c_api");
                throw VRException(VR_STATUS_ERROR_ASSERTION, L"passes.");
            });
        EXPECT_THROW(row.call(), VRException) << row.report;
        EXPECT_EQ(report, row.report);
    }
    qlt::SetAssertionHandler(nullptr);
    qlt_Tracker_Delete(tracker);
}

TEST(FlatInterfaceTest, EightThreadsReadAndRecentreARunningTracker)
{
    AssertionRecorder assertions;
    qlt_Tracker* tracker = qlt_SimulationTracker_New();
    ASSERT_EQ(qlt_Tracker_Start(tracker), 1);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
    {
        threads.emplace_back(
            [tracker, i]
            {
                qlt_Quaternion* q = qlt_Quaternion_New();
                qlt_Vec3* p = qlt_Vec3_New();
                for (int call = 0; call < 10000; ++call)
                {
                    switch ((call + i) % 8)
                    {
                    case 0:
                        qlt_Tracker_GetOrientation(tracker, q);
                        break;
                    case 1:
                        qlt_Tracker_GetPredictedOrientation(tracker, q, 0.01f);
                        break;
                    case 2:
                        qlt_Tracker_GetPosition(tracker, p);
                        break;
                    case 3:
                        qlt_Tracker_GetObjectPosition(tracker, p, call);
                        break;
                    case 4:
                        qlt_Tracker_GetObjectOrientation(tracker, q, -call);
                        break;
                    case 5:
                        EXPECT_EQ(qlt_Tracker_IsTracking(tracker), 1);
                        break;
                    case 6:
                        EXPECT_EQ(qlt_Tracker_IsConnected(tracker), 1);
                        break;
                    default:
                        qlt_Tracker_ResetYawOrigin(tracker);
                        break;
                    }
                }
                const float norm = qlt_Quaternion_w(q) * qlt_Quaternion_w(q) +
                                   qlt_Quaternion_x(q) * qlt_Quaternion_x(q) +
                                   qlt_Quaternion_y(q) * qlt_Quaternion_y(q) +
                                   qlt_Quaternion_z(q) * qlt_Quaternion_z(q);
                EXPECT_NEAR(norm, 1.0f, 1e-4f); // never half of one and half of another
                qlt_Quaternion_Delete(q);
                qlt_Vec3_Delete(p);
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(qlt_Tracker_Stop(tracker), 1);
    qlt_Tracker_Delete(tracker);
    // The simulator turns about x: now and then there is no yaw to take away, and nothing else.
    for (const std::string& text : assertions.TakeTexts())
    {
        EXPECT_TRUE(text.find("|Math/") != std::string::npos) << text;
    }
}
