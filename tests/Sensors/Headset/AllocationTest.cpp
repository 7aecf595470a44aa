// This program counts every allocation, so it contains no other tests.
#include <qlt/Sensors/DistortionMeshBuilder.h>

#include "fakes/AllocationCounter.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedHeadset.h"

#include <gtest/gtest.h>

#include <new>
#include <tuple>

TEST(AllocationTest, AReportIsDeliveredWithoutAnAllocation)
{
    ScriptedHeadset headset;
    std::vector<long> counts; // the count so far, for every report
    counts.reserve(10000);
    OrientationListener listener;
    listener.call = [&](const qlt::Quaternion&) { counts.push_back(AllocationCount()); };
    for (std::uint32_t i = 0; i < 10000; ++i)
    {
        headset.host.QueueRead(ReportWriter(i, i * 1000));
    }
    headset.Start(listener);
    headset.host.WaitForIdle();
    headset.End();
    EXPECT_EQ(counts.at(9999) - counts[1], 0);
    EXPECT_GT(counts[0], 0);
}

// An int can count the vertices of the first two meshes but not their indices. For the others it
// can count neither.
TEST(AllocationTest, AMeshThatIsTooLargeAllocatesNothing)
{
    for (const auto& [resX, resY, list] : {std::tuple(18919, 18919, true),
                                           {1 << 29, 2, false},
                                           {INT32_MAX, 1, false},
                                           {INT32_MAX, INT32_MAX, true}})
    {
        qlt::DistortionMeshBuilder mesh(resX, resY, qlt::Params::EYE_LEFT, list);
        bool isRefused = false;
        const long before = AllocationCount();
        try
        {
            mesh.BuildMesh();
        }
        catch (const std::bad_array_new_length&)
        {
            isRefused = true;
        }
        EXPECT_EQ(AllocationCount(), before) << resX;
        EXPECT_TRUE(isRefused) << resX;
        EXPECT_EQ(mesh.GetNumVertices() + mesh.GetNumIndices(), 0);
        EXPECT_EQ(mesh.GetPosition(), nullptr);
    }
}
