#include "OpenXr.h"

#include <thread>

namespace qltxr
{

namespace
{

using States = std::vector<XrSessionState>;

const States TO_FOCUSED = {XR_SESSION_STATE_SYNCHRONIZED, XR_SESSION_STATE_VISIBLE,
                           XR_SESSION_STATE_FOCUSED};
const States TO_STOPPING = {XR_SESSION_STATE_VISIBLE, XR_SESSION_STATE_SYNCHRONIZED,
                            XR_SESSION_STATE_STOPPING};

} // namespace

class SessionTest : public OpenXrTest
{
};

TEST_F(SessionTest, CreationChecksInOrder)
{
    XrSessionCreateInfo info{XR_TYPE_SESSION_CREATE_INFO, nullptr, 0, 0};
    EXPECT_EQ(CreateSession(instance, nullptr, &session), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(CreateSession(instance, &info, &session), XR_ERROR_SYSTEM_INVALID);
    info.systemId = SYSTEM_ID;
    info.createFlags = 1;
    EXPECT_EQ(CreateSession(instance, &info, &session), XR_ERROR_VALIDATION_FAILURE);
    info.createFlags = 0;
    const XrBaseInStructure unknown{static_cast<XrStructureType>(12345), nullptr};
    info.next = &unknown;
    EXPECT_EQ(CreateSession(instance, &info, &session), XR_SUCCESS);
    EXPECT_EQ(CreateSession(instance, &info, &session), XR_ERROR_LIMIT_REACHED);

    DestroyInstance(instance);
    ASSERT_EQ(MakeInstance({"XR_KHR_opengl_enable"}), XR_SUCCESS);
    EXPECT_EQ(CreateSession(instance, &info, &session),
              XR_ERROR_GRAPHICS_REQUIREMENTS_CALL_MISSING);
    XrGraphicsRequirementsOpenGLKHR requirements{XR_TYPE_GRAPHICS_REQUIREMENTS_OPENGL_KHR};
    ASSERT_EQ(GetOpenGLGraphicsRequirementsKHR(instance, SYSTEM_ID, &requirements), XR_SUCCESS);
    EXPECT_LE(requirements.minApiVersionSupported, requirements.maxApiVersionSupported);
    EXPECT_EQ(CreateSession(instance, &info, &session), XR_ERROR_GRAPHICS_DEVICE_INVALID);
}

TEST_F(SessionTest, AHeadlessSessionIsFocusedWithoutFrames)
{
    ASSERT_EQ(CreateHeadless(), XR_SUCCESS);
    EXPECT_EQ(States(), ::qltxr::States({XR_SESSION_STATE_IDLE, XR_SESSION_STATE_READY}));
    EXPECT_EQ(EndSession(session), XR_ERROR_SESSION_NOT_RUNNING);
    EXPECT_EQ(RequestExitSession(session), XR_ERROR_SESSION_NOT_RUNNING);
    EXPECT_EQ(Begin(), XR_SUCCESS);
    EXPECT_EQ(States(), TO_FOCUSED);
    EXPECT_EQ(Begin(), XR_ERROR_SESSION_RUNNING);
    EXPECT_EQ(EndSession(session), XR_ERROR_SESSION_NOT_STOPPING);
    EXPECT_EQ(RequestExitSession(session), XR_SUCCESS);
    EXPECT_EQ(States(), TO_STOPPING);
    EXPECT_EQ(RequestExitSession(session), XR_SUCCESS);
    EXPECT_EQ(EndSession(session), XR_SUCCESS);
    EXPECT_EQ(States(), ::qltxr::States({XR_SESSION_STATE_IDLE, XR_SESSION_STATE_EXITING}));
    EXPECT_EQ(Begin(), XR_ERROR_SESSION_NOT_READY);
    std::uint32_t formats = 1;
    EXPECT_EQ(EnumerateSwapchainFormats(session, 0, &formats, nullptr), XR_SUCCESS);
    EXPECT_EQ(formats, 0u);
}

TEST(SessionStateTest, ASessionWithGraphicsFollowsItsFrames)
{
    EventQueue events;
    SessionState state(events, XR_NULL_HANDLE, false);
    const auto drain = [&events]
    {
        States states;
        XrEventDataBuffer event{};
        while (events.Poll(event))
        {
            states.push_back(reinterpret_cast<XrEventDataSessionStateChanged&>(event).state);
        }
        return states;
    };
    state.Create(1);
    state.Begin(2);
    EXPECT_EQ(drain(), States({XR_SESSION_STATE_IDLE, XR_SESSION_STATE_READY}));
    EXPECT_FALSE(state.IsVisible());
    state.FrameEnded(3);
    EXPECT_EQ(drain(), TO_FOCUSED);
    state.FrameEnded(4);
    EXPECT_EQ(drain(), States());
    state.RequestExit(5);
    EXPECT_EQ(drain(), TO_STOPPING);
    EXPECT_FALSE(state.IsVisible());
    state.End(6);
    EXPECT_EQ(drain(), States({XR_SESSION_STATE_IDLE, XR_SESSION_STATE_EXITING}));
}

TEST(SessionStateTest, AnExitBeforeTheFirstFrameGoesTheShortWay)
{
    EventQueue events;
    SessionState state(events, XR_NULL_HANDLE, false);
    state.Create(1);
    state.Begin(2);
    XrEventDataBuffer event{};
    while (events.Poll(event))
    {
    }
    state.RequestExit(3);
    ASSERT_TRUE(events.Poll(event));
    EXPECT_EQ(reinterpret_cast<XrEventDataSessionStateChanged&>(event).state,
              XR_SESSION_STATE_SYNCHRONIZED);
    ASSERT_TRUE(events.Poll(event));
    EXPECT_EQ(reinterpret_cast<XrEventDataSessionStateChanged&>(event).state,
              XR_SESSION_STATE_STOPPING);
    EXPECT_FALSE(events.Poll(event));
}

TEST(EventQueueTest, EventsBeyondTheCapacityAreCountedAsLost)
{
    EventQueue events;
    for (std::size_t i = 0; i < EventQueue::CAPACITY + 7; ++i)
    {
        events.SessionState(XR_NULL_HANDLE, XR_SESSION_STATE_IDLE, 1);
    }
    XrEventDataBuffer event{};
    ASSERT_TRUE(events.Poll(event));
    ASSERT_EQ(event.type, XR_TYPE_EVENT_DATA_EVENTS_LOST);
    EXPECT_EQ(reinterpret_cast<XrEventDataEventsLost&>(event).lostEventCount, 7u);
    ASSERT_TRUE(events.Poll(event));
    EXPECT_EQ(event.type, XR_TYPE_EVENT_DATA_SESSION_STATE_CHANGED);
    events.Forget(XR_NULL_HANDLE);
    EXPECT_FALSE(events.Poll(event));
}

TEST_F(HeadlessTest, DestructionTakesTheChildrenAlong)
{
    const XrSpace space = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_LOCAL);
    EXPECT_EQ(DestroySession(session), XR_SUCCESS);
    XrSpaceLocation location{XR_TYPE_SPACE_LOCATION};
    EXPECT_EQ(LocateSpace(space, space, SOME_TIME, &location), XR_ERROR_HANDLE_INVALID);
    EXPECT_EQ(DestroySession(session), XR_ERROR_HANDLE_INVALID);
    EXPECT_EQ(States(), ::qltxr::States()) << "events of a session go with it";
    for (int round = 0; round < 20; ++round)
    {
        EXPECT_EQ(CreateHeadless(), XR_SUCCESS);
        EXPECT_EQ(DestroySession(session), XR_SUCCESS);
    }
}

TEST_F(HeadlessTest, TheFrameLoopHasAnOrder)
{
    XrFrameState state{XR_TYPE_FRAME_STATE};
    EXPECT_EQ(BeginFrame(session, nullptr), XR_ERROR_CALL_ORDER_INVALID);
    EXPECT_EQ(End({}), XR_ERROR_CALL_ORDER_INVALID);
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    ASSERT_EQ(BeginFrame(session, nullptr), XR_SUCCESS);
    EXPECT_EQ(BeginFrame(session, nullptr), XR_ERROR_CALL_ORDER_INVALID);

    // The program may wait for a second frame when it has begun the first one. The second frame
    // then discards the first.
    const XrTime first = state.predictedDisplayTime;
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    EXPECT_GT(state.predictedDisplayTime, first);
    EXPECT_EQ(End({}, first), XR_SUCCESS);
    EXPECT_EQ(BeginFrame(session, nullptr), XR_SUCCESS);
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    EXPECT_EQ(BeginFrame(session, nullptr), XR_FRAME_DISCARDED);

    // After an error the frame is still begun.
    EXPECT_EQ(End({}, 0), XR_ERROR_TIME_INVALID);
    EXPECT_EQ(End({nullptr}), XR_ERROR_LAYER_INVALID);
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    EXPECT_EQ(BeginFrame(session, nullptr), XR_FRAME_DISCARDED);
    EXPECT_EQ(End({}), XR_SUCCESS);
    EXPECT_EQ(End({}), XR_ERROR_CALL_ORDER_INVALID);
}

TEST_F(HeadlessTest, EndFrameRefusesWhatItCannotShow)
{
    XrFrameState state{XR_TYPE_FRAME_STATE};
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    ASSERT_EQ(BeginFrame(session, nullptr), XR_SUCCESS);
    const XrCompositionLayerBaseHeader unknown{XR_TYPE_VIEW, nullptr, 0, nullptr};
    const XrCompositionLayerQuad quad{XR_TYPE_COMPOSITION_LAYER_QUAD};
    XrCompositionLayerProjection projection{XR_TYPE_COMPOSITION_LAYER_PROJECTION};
    const auto header = [](const auto& layer)
    { return reinterpret_cast<const XrCompositionLayerBaseHeader*>(&layer); };
    EXPECT_EQ(End({&unknown}), XR_ERROR_LAYER_INVALID);
    EXPECT_EQ(End({header(quad)}), XR_ERROR_HANDLE_INVALID) << "it has no space";
    projection.space = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_LOCAL);
    EXPECT_EQ(End({header(projection)}), XR_ERROR_VALIDATION_FAILURE) << "it has no views";
    EXPECT_EQ(End(std::vector<const XrCompositionLayerBaseHeader*>(MAX_LAYERS + 1, &unknown)),
              XR_ERROR_LAYER_LIMIT_EXCEEDED);
    const std::pair<int, XrResult> modes[] = {
        {XR_ENVIRONMENT_BLEND_MODE_ADDITIVE, XR_ERROR_ENVIRONMENT_BLEND_MODE_UNSUPPORTED},
        {1234, XR_ERROR_VALIDATION_FAILURE}};
    for (const auto& [mode, expected] : modes)
    {
        const XrFrameEndInfo info{XR_TYPE_FRAME_END_INFO, nullptr, SOME_TIME,
                                  static_cast<XrEnvironmentBlendMode>(mode)};
        EXPECT_EQ(EndFrame(session, &info), expected);
    }
    EXPECT_EQ(End({}), XR_SUCCESS);
}

TEST_F(HeadlessTest, AWaiterWakesWhenTheSessionEnds)
{
    XrFrameState state{XR_TYPE_FRAME_STATE};
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    std::thread waiter( // this waits without an end, because the frame is not begun
        [this]
        {
            XrFrameState other{XR_TYPE_FRAME_STATE};
            EXPECT_EQ(WaitFrame(session, nullptr, &other), XR_ERROR_HANDLE_INVALID);
        });
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // by then the thread probably waits
    EXPECT_EQ(DestroySession(session), XR_SUCCESS);
    waiter.join();
}

} // namespace qltxr
