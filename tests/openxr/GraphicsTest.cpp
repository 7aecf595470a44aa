// Tests of the rules of sessions, swapchains and layers that need a graphics API. They also test
// that the program's own OpenGL state stays unchanged.
#include "GraphicsFixture.h"

#include <thread>

namespace qltxr
{

using GlSessionTest = GraphicsTest;

TEST_F(GlSessionTest, ABrokenBindingIsRefusedAndTheInstanceGoesOn)
{
    EXPECT_EQ(DestroySession(session), XR_SUCCESS);
    EXPECT_EQ(CreateGraphical(program.Binding(true)), XR_ERROR_GRAPHICS_DEVICE_INVALID);
    for (int round = 0; round < 5; ++round)
    {
        EXPECT_EQ(CreateGraphical(program.Binding()), XR_SUCCESS);
        EXPECT_TRUE(program.IsCurrent());
        EXPECT_EQ(DestroySession(session), XR_SUCCESS);
        EXPECT_TRUE(program.IsCurrent());
    }
}

TEST_F(GlSessionTest, StatesFollowTheFirstFrame)
{
    EXPECT_EQ(States().size(), 2u);
    const XrSessionBeginInfo mono{XR_TYPE_SESSION_BEGIN_INFO, nullptr,
                                  XR_VIEW_CONFIGURATION_TYPE_PRIMARY_MONO};
    EXPECT_EQ(BeginSession(session, &mono), XR_ERROR_VIEW_CONFIGURATION_TYPE_UNSUPPORTED);
    ASSERT_EQ(Begin(), XR_SUCCESS);
    XrFrameState state{XR_TYPE_FRAME_STATE};
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    EXPECT_FALSE(state.shouldRender);
    EXPECT_TRUE(States().empty());
    BeginFrame(session, nullptr);
    End({});
    EXPECT_EQ(States().back(), XR_SESSION_STATE_FOCUSED);
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    EXPECT_TRUE(state.shouldRender);
}

TEST_F(GlSessionTest, EveryListedFormatIsMadeInEveryMix)
{
    std::uint32_t count = 0;
    ASSERT_EQ(EnumerateSwapchainFormats(session, 0, &count, nullptr), XR_SUCCESS);
    std::vector<std::int64_t> formats(count);
    ASSERT_EQ(EnumerateSwapchainFormats(session, count, &count, formats.data()), XR_SUCCESS);
    XrSwapchainCreateInfo info{XR_TYPE_SWAPCHAIN_CREATE_INFO};
    info.sampleCount = info.faceCount = 1;
    info.width = info.height = 8;
    for (unsigned mix = 0; mix < formats.size() * 64; ++mix)
    {
        constexpr XrSwapchainUsageFlags USAGES[] = {0, 1, 0x21, 0x7f};
        info.format = formats[mix / 64];
        info.usageFlags = USAGES[mix % 4];
        info.arraySize = 1 + mix / 4 % 2;
        info.mipCount = 1 + mix / 8 % 2;
        info.createFlags = mix / 16 % 4; // protected content, static image
        XrSwapchain swapchain = XR_NULL_HANDLE;
        const bool made = (info.createFlags & XR_SWAPCHAIN_CREATE_PROTECTED_CONTENT_BIT) == 0;
        EXPECT_EQ(CreateSwapchain(session, &info, &swapchain),
                  made ? XR_SUCCESS : XR_ERROR_FEATURE_UNSUPPORTED)
            << mix;
        EXPECT_EQ(DestroySwapchain(swapchain), made ? XR_SUCCESS : XR_ERROR_HANDLE_INVALID);
    }
}

// Compares bindings, state and the current context after each call that uses graphics.
TEST_F(GlSessionTest, TheProgramsOwnOpenGlIsLeftAsItWas)
{
    ASSERT_EQ(Begin(), XR_SUCCESS);
    const GlFunctions& gl = program.gl;
    GLuint own = 0;
    gl.GenTextures(1, &own);
    gl.BindTexture(GL_TEXTURE_2D, own);
    gl.Viewport(1, 2, 3, 4);
    const auto expectUntouched = [&](const char* after)
    {
        const auto get = [&gl](GLenum name)
        {
            GLint values[4] = {-1, -1, -1, -1};
            gl.GetIntegerv(name, values);
            return std::array<GLint, 4>{values[0], values[1], values[2], values[3]};
        };
        EXPECT_TRUE(program.IsCurrent()) << after;
        EXPECT_EQ(get(GL_TEXTURE_BINDING_2D)[0], static_cast<GLint>(own)) << after;
        EXPECT_EQ(get(GL_VIEWPORT)[3], 4) << after;
        EXPECT_EQ(get(GL_DRAW_FRAMEBUFFER_BINDING)[0], 0) << after;
        EXPECT_EQ(get(GL_CURRENT_PROGRAM)[0], 0) << after;
        EXPECT_EQ(gl.GetError(), 0u) << after;
    };
    const ProgramSwapchain swapchain = MakeSwapchain(32, 32);
    expectUntouched("a swapchain is made");
    Acquire(swapchain);
    expectUntouched("an image is acquired");
    Release(swapchain);
    expectUntouched("an image is released");
    XrFrameState state{XR_TYPE_FRAME_STATE};
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    BeginFrame(session, nullptr);
    EXPECT_EQ(End({}), XR_SUCCESS);
    expectUntouched("a frame is ended");

    // A thread without a current context can use the images, too.
    program.MakeNothingCurrent();
    Acquire(swapchain);
    Release(swapchain);
    EXPECT_FALSE(program.IsCurrent());
    EXPECT_EQ(DestroySwapchain(swapchain.handle), XR_SUCCESS);
    program.MakeCurrent();
    expectUntouched("calls without a context");
    gl.DeleteTextures(1, &own);
}

// The display in memory has a monitor. The test gives it the identification data of the panel.
TEST_F(GlSessionTest, ThePictureFillsTheMonitorThatIsTheHeadsets)
{
    EXPECT_EQ(TheCompositor().DescribeOutput(), "a window on the desktop");
    EXPECT_EQ(DestroySession(session), XR_SUCCESS);
    unsigned width = 0;
    unsigned height = 0;
    ASSERT_TRUE(program.SetHeadsetMonitor(true, width, height)) << "the display has no monitors";
    EXPECT_EQ(CreateGraphical(program.Binding()), XR_SUCCESS);
    EXPECT_EQ(TheCompositor().DescribeOutput().find("the headset's display "), 0u);
    const Picture picture = TheCompositor().TakePicture();
    EXPECT_EQ(picture.width, width);
    EXPECT_EQ(picture.height, height);
    program.SetHeadsetMonitor(false, width, height);
}

TEST_F(GlSessionTest, AProgramMayCycleImagesForEverOnAnyThread)
{
    const ProgramSwapchain swapchain = MakeSwapchain(16, 16);
    program.MakeNothingCurrent();
    std::thread worker(
        [&]
        {
            for (int i = 0; i < 100; ++i)
            {
                Acquire(swapchain);
                Release(swapchain);
            }
        });
    worker.join();
    program.MakeCurrent();
}

TEST_F(GlSessionTest, LayersAreCheckedBeforeAnyIsUsed)
{
    ASSERT_EQ(Begin(), XR_SUCCESS);
    XrFrameState state{XR_TYPE_FRAME_STATE};
    ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
    BeginFrame(session, nullptr);
    const ProgramSwapchain swapchain = MakeSwapchain(32, 32);
    using View = XrCompositionLayerProjectionView;
    View views[2];
    const XrCompositionLayerProjection layer{
        XR_TYPE_COMPOSITION_LAYER_PROJECTION,          nullptr, 7,
        ReferenceSpace(XR_REFERENCE_SPACE_TYPE_STAGE), 2,       views};
    const auto* header = reinterpret_cast<const XrCompositionLayerBaseHeader*>(&layer);
    XrCompositionLayerDepthInfoKHR depth{
        XR_TYPE_COMPOSITION_LAYER_DEPTH_INFO_KHR, nullptr, Whole(swapchain), 0, 1, INFINITY, 0.1f};
    const auto end = [&](const std::function<void(View&)>& change)
    {
        for (View& view : views)
        {
            view = {XR_TYPE_COMPOSITION_LAYER_PROJECTION_VIEW,
                    nullptr,
                    IDENTITY,
                    {-1, 1, 1, -1},
                    Whole(swapchain)};
        }
        change(views[1]);
        return End({header, header});
    };
    EXPECT_EQ(end([](View&) {}), XR_ERROR_LAYER_INVALID) << "no image was ever released";
    Acquire(swapchain);
    Release(swapchain);
    const std::pair<std::function<void(View&)>, XrResult> cases[] = {
        {[](View& v) { v.type = XR_TYPE_VIEW; }, XR_ERROR_VALIDATION_FAILURE},
        {[](View& v) { v.pose.orientation.w = 0.5f; }, XR_ERROR_POSE_INVALID},
        {[](View& v) { v.subImage.swapchain = XR_NULL_HANDLE; }, XR_ERROR_HANDLE_INVALID},
        {[](View& v) { v.subImage.imageRect.offset.x = -1; }, XR_ERROR_SWAPCHAIN_RECT_INVALID},
        {[](View& v) { v.subImage.imageRect.offset.y = 1; }, XR_ERROR_SWAPCHAIN_RECT_INVALID},
        {[](View& v) { v.subImage.imageRect.extent.width = 0; }, XR_ERROR_SWAPCHAIN_RECT_INVALID},
        {[](View& v) { v.subImage.imageRect.extent.width = INT32_MAX; },
         XR_ERROR_SWAPCHAIN_RECT_INVALID},
        {[](View& v) { v.subImage.imageArrayIndex = 1; }, XR_ERROR_VALIDATION_FAILURE},
        {[&](View& v)
         {
             depth.subImage.swapchain = XR_NULL_HANDLE;
             v.next = &depth;
         },
         XR_ERROR_HANDLE_INVALID},
        {[&](View& v)
         {
             depth.subImage = Whole(swapchain);
             depth.maxDepth = 1.5f;
             v.next = &depth;
         },
         XR_ERROR_VALIDATION_FAILURE},
        {[&](View& v)
         {
             depth.maxDepth = 1.0f;
             v.next = &depth;
         },
         XR_SUCCESS}};
    for (const auto& [change, expected] : cases)
    {
        EXPECT_EQ(end(change), expected) << &change;
    }
    EXPECT_EQ(DestroySwapchain(swapchain.handle), XR_SUCCESS) << "while it is shown";
    TheCompositor().TakePicture();
}

} // namespace qltxr
