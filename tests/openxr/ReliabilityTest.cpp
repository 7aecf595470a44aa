// Tests of many sessions, of several threads, and of the costs of a frame, with real graphics.
#include "GraphicsFixture.h"

#include "fakes/AllocationCounter.h"
#include "fakes/OpenHandles.h"

#include <atomic>
#include <thread>

namespace qltxr
{

namespace
{

// The graphics driver's caches come and go by up to 2 MB, whatever the number of rounds is. In the
// long form of the tests, the limit is 4 kB for each session and 400 bytes for each swapchain.
constexpr double DRIVER_BYTES = 4000000.0;

/// A sanitizer has fewer rounds, and the long form of a test has more rounds.
int Rounds(int usual)
{
    const char* percent = std::getenv("QLT_ROUNDS_PERCENT");
    return percent == nullptr ? usual : usual * std::atoi(percent) / 100;
}

} // namespace

class ReliabilityTest : public GraphicsTest
{
protected:
    ReliabilityTest()
        : GraphicsTest("64x64")
    {
    }

    void OneFrame() const
    {
        XrFrameState state{XR_TYPE_FRAME_STATE};
        EXPECT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
        EXPECT_GE(BeginFrame(session, nullptr), 0);
        EXPECT_EQ(End({}, state.predictedDisplayTime), XR_SUCCESS);
    }
};

TEST_F(ReliabilityTest, LivesOfSessionsLeaveNothingBehind)
{
    const auto live = [this](int rounds)
    {
        for (int i = 0; i < rounds; ++i)
        {
            EXPECT_EQ(DestroySession(session), XR_SUCCESS);
            ASSERT_EQ(CreateGraphical(program.Binding()), XR_SUCCESS);
            Begin();
            MakeSwapchain(8, 8); // the end of the session destroys it
            OneFrame();
        }
    };
    live(3); // the driver allocates memory in its first sessions
    const std::size_t files = CountOpenHandles();
    const std::size_t threads = CountThreads();
    const std::size_t handles = TheRuntime().handles.Size();
    const std::size_t heap = ProgramContext::HeapBytes();
    live(Rounds(20));
    const double growth =
        static_cast<double>(ProgramContext::HeapBytes()) - static_cast<double>(heap);
    RecordProperty("heap_bytes_per_session", std::to_string(growth / Rounds(20)));
    EXPECT_LT(growth, DRIVER_BYTES);
    EXPECT_EQ(CountOpenHandles(), files);
    EXPECT_EQ(CountThreads(), threads);
    EXPECT_EQ(TheRuntime().handles.Size(), handles);
}

TEST_F(ReliabilityTest, LivesOfSwapchainsLeaveNothingBehind)
{
    const std::size_t handles = TheRuntime().handles.Size();
    const std::size_t heap = ProgramContext::HeapBytes();
    GLuint highest = 0;
    for (int i = 0; i < Rounds(200); ++i)
    {
        const ProgramSwapchain one = MakeSwapchain(8, 8);
        highest = std::max(highest, one.textures.back());
        Acquire(one);
        Release(one); // this leaves a fence
        EXPECT_EQ(DestroySwapchain(one.handle), XR_SUCCESS);
    }
    EXPECT_EQ(TheRuntime().handles.Size(), handles);
    // This deletes the remaining objects and needs one texture itself.
    TheCompositor().TakePicture();
    const double growth =
        static_cast<double>(ProgramContext::HeapBytes()) - static_cast<double>(heap);
    RecordProperty("heap_bytes_per_swapchain", std::to_string(growth / Rounds(200)));
    EXPECT_LT(growth, DRIVER_BYTES);
    int alive = 0;
    for (GLuint name = 1; name <= highest; ++name)
    {
        alive += program.gl.IsTexture(name) == GL_TRUE ? 1 : 0;
    }
    EXPECT_LE(alive, 1);
}

// One thread runs frames, one asks questions, and one makes and destroys objects. At the end the
// session is destroyed while they run. The test is for the thread sanitizer.
TEST_F(ReliabilityTest, FramesQuestionsAndDestructionComeFromSeveralThreads)
{
    ASSERT_EQ(Begin(), XR_SUCCESS);
    program.MakeNothingCurrent();
    const XrSpace local = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_LOCAL);
    const XrSpace view = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_VIEW);
    std::atomic<bool> gone{false};
    const auto run = [&](const std::function<XrResult()>& call)
    {
        return std::thread(
            [&gone, call]
            {
                while (!gone)
                {
                    const XrResult result = call();
                    EXPECT_TRUE(result >= 0 || result == XR_ERROR_HANDLE_INVALID ||
                                result == XR_ERROR_CALL_ORDER_INVALID ||
                                result == XR_ERROR_SESSION_LOST)
                        << result;
                }
            });
    };
    std::vector<std::thread> threads;
    threads.push_back(run(
        [this]
        {
            XrFrameState state{XR_TYPE_FRAME_STATE};
            WaitFrame(session, nullptr, &state);
            BeginFrame(session, nullptr);
            return End({});
        }));
    threads.push_back(run(
        [&]
        {
            XrSpaceVelocity velocity{XR_TYPE_SPACE_VELOCITY};
            XrSpaceLocation location{XR_TYPE_SPACE_LOCATION, &velocity};
            XrEventDataBuffer event{XR_TYPE_EVENT_DATA_BUFFER};
            PollEvent(instance, &event);
            return LocateSpace(view, local, Now(), &location);
        }));
    threads.push_back(run(
        [this]
        {
            const XrActionsSyncInfo sync{XR_TYPE_ACTIONS_SYNC_INFO};
            return SyncActions(session, &sync);
        }));
    threads.push_back(run(
        [this]
        {
            XrSwapchainCreateInfo info{XR_TYPE_SWAPCHAIN_CREATE_INFO};
            info.format = GL_RGBA8;
            info.width = info.height = info.sampleCount = info.faceCount = info.arraySize =
                info.mipCount = 1;
            XrSwapchain swapchain = XR_NULL_HANDLE;
            const XrResult result = CreateSwapchain(session, &info, &swapchain);
            return result == XR_SUCCESS ? DestroySwapchain(swapchain) : result;
        }));
    std::this_thread::sleep_for(std::chrono::milliseconds(Rounds(300)));
    EXPECT_EQ(DestroySession(session), XR_SUCCESS);
    gone = true;
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    program.MakeCurrent();
}

TEST_F(ReliabilityTest, AFrameAllocatesNothingOnTheProgramsThread)
{
    ASSERT_EQ(Begin(), XR_SUCCESS);
    const XrSpace local = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_LOCAL);
    const ProgramSwapchain swapchain = MakeSwapchain(16, 16);
    Acquire(swapchain);
    Release(swapchain);
    XrCompositionLayerProjectionView views[2];
    const XrCompositionLayerProjection layer{
        XR_TYPE_COMPOSITION_LAYER_PROJECTION, nullptr, 0, local, 2, views};
    const auto* header = reinterpret_cast<const XrCompositionLayerBaseHeader*>(&layer);
    for (XrCompositionLayerProjectionView& view : views)
    {
        view = {XR_TYPE_COMPOSITION_LAYER_PROJECTION_VIEW,
                nullptr,
                IDENTITY,
                {-1, 1, 1, -1},
                Whole(swapchain)};
    }
    const XrFrameEndInfo end{XR_TYPE_FRAME_END_INFO,           nullptr, SOME_TIME,
                             XR_ENVIRONMENT_BLEND_MODE_OPAQUE, 1,       &header};
    const XrViewLocateInfo locate{XR_TYPE_VIEW_LOCATE_INFO, nullptr,
                                  XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO, SOME_TIME, local};
    XrFrameState state{XR_TYPE_FRAME_STATE};
    XrViewState viewState{XR_TYPE_VIEW_STATE};
    XrView located[2] = {{XR_TYPE_VIEW}, {XR_TYPE_VIEW}};
    std::uint32_t count = 0;
    long before = 0;
    for (int i = 0; i < 12; ++i)
    {
        // The events of the states have been sent by then.
        before = i == 2 ? ThreadAllocationCount() : before;
        WaitFrame(session, nullptr, &state);
        BeginFrame(session, nullptr);
        LocateViews(session, &locate, &viewState, 2, &count, located);
        EXPECT_EQ(EndFrame(session, &end), XR_SUCCESS);
    }
    EXPECT_EQ(ThreadAllocationCount(), before);
}

} // namespace qltxr
