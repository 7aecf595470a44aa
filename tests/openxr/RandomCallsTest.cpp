// Makes calls in a random order. Handles are alive, dead or invalid, and structures are right or
// wrong. Each call must return a result of the registry, and none may end the process.
#include "GraphicsFixture.h"

#include "State/ResultText.h"

#include <functional>
#include <map>
#include <random>

namespace qltxr
{

namespace
{

constexpr int CALLS = 100000;
// The largest number of handles of a kind, including dead ones.
constexpr std::size_t MOST_HANDLES = 40;
constexpr std::size_t LIVELY = 2; // this number of the newest handles is used more often

class RandomProgram : public OpenXr
{
public:
    RandomProgram(unsigned seed, const void* binding)
        : mRandom(seed)
        , mBinding(binding)
    {
    }

    /// Makes one call, and returns its result.
    XrResult Call()
    {
        const auto& calls = Calls();
        mName = Pick(std::size_t{calls.size()});
        return calls[mName](*this);
    }

    std::size_t Name() const { return mName; }

private:
    using Calls_t = std::vector<std::function<XrResult(RandomProgram&)>>;

    std::size_t Pick(std::size_t count)
    {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(mRandom);
    }
    bool Chance(int oneIn) { return Pick(static_cast<std::size_t>(oneIn)) == 0; }

    /// Makes a structure that is usually right. Sometimes its type is wrong, or its chain has
    /// unknown structures.
    template <typename Structure>
    Structure Make(XrStructureType type)
    {
        static XrBaseOutStructure second{static_cast<XrStructureType>(0x7ffffff0), nullptr};
        static XrBaseOutStructure first{static_cast<XrStructureType>(77), &second};
        Structure made{Chance(20) ? static_cast<XrStructureType>(Pick(60)) : type};
        made.next = Chance(3) ? static_cast<void*>(&first) : nullptr;
        return made;
    }

    template <typename Structure>
    Structure* Maybe(Structure& structure)
    {
        return Chance(30) ? nullptr : &structure;
    }

    template <typename Handle>
    Handle One(std::vector<Handle>& handles)
    {
        if (handles.empty() || Chance(15))
        {
            const std::uint64_t junk[] = {0, 0x1234, 0xBAAAAAAAAAAAAAAD, mRandom()};
            return reinterpret_cast<Handle>(junk[Pick(4)]);
        }
        const std::size_t age = Pick(Chance(4) ? handles.size() : std::min(handles.size(), LIVELY));
        return handles[handles.size() - 1 - age];
    }

    template <typename Handle>
    XrResult Keep(XrResult result, const Handle& made, std::vector<Handle>& handles)
    {
        if (result == XR_SUCCESS)
        {
            handles.push_back(made);
            if (handles.size() > MOST_HANDLES)
            {
                handles.erase(handles.begin());
            }
        }
        return result;
    }

    XrPosef Pose()
    {
        XrPosef pose = IDENTITY;
        pose.orientation.w = Chance(10) ? 0.5f : 1.0f;
        return pose;
    }

    XrPath SomePath()
    {
        static const char* const TEXTS[] = {"/user/hand/left",
                                            "/user/head",
                                            "/user/foot",
                                            "/interaction_profiles/khr/simple_controller",
                                            "/user/hand/left/input/select/click",
                                            "bad"};
        XrPath path = Pick(30);
        if (!Chance(6))
        {
            StringToPath(One(mInstances), TEXTS[Pick(6)], &path);
        }
        return path;
    }

    static const Calls_t& Calls();
    static Calls_t LifeCalls();
    static Calls_t FrameCalls();
    static Calls_t ActionCalls();

    std::mt19937_64 mRandom;
    const void* const mBinding; // the binding of OpenGL for a session
    std::size_t mName = 0;
    std::vector<XrInstance> mInstances;
    std::vector<XrSession> mSessions;
    std::vector<XrSpace> mSpaces;
    std::vector<XrSwapchain> mSwapchains;
    std::vector<XrActionSet> mSets;
    std::vector<XrAction> mActions;
};

RandomProgram::Calls_t RandomProgram::LifeCalls()
{
    using P = RandomProgram;
    return {
        [](P& p)
        {
            XrInstanceCreateInfo info = InstanceInfo();
            info.type = p.Make<XrInstanceCreateInfo>(info.type).type;
            const char* extensions[] = {"XR_KHR_opengl_enable", "XR_MND_headless"};
            info.enabledExtensionCount = p.Chance(5) ? 0 : 2;
            info.enabledExtensionNames = extensions;
            XrInstance made = XR_NULL_HANDLE;
            return p.Keep(p.CreateInstance(p.Maybe(info), p.Maybe(made)), made, p.mInstances);
        },
        [](P& p) { return p.Chance(100) ? p.DestroyInstance(p.One(p.mInstances)) : XR_SUCCESS; },
        [](P& p)
        {
            auto info = p.Make<XrSessionCreateInfo>(XR_TYPE_SESSION_CREATE_INFO);
            info.systemId = p.Chance(5) ? 7 : SYSTEM_ID;
            info.next = p.Chance(3) ? info.next : p.mBinding;
            XrSession made = XR_NULL_HANDLE;
            return p.Keep(p.CreateSession(p.One(p.mInstances), p.Maybe(info), p.Maybe(made)), made,
                          p.mSessions);
        },
        [](P& p)
        {
            auto requirements =
                p.Make<XrGraphicsRequirementsOpenGLKHR>(XR_TYPE_GRAPHICS_REQUIREMENTS_OPENGL_KHR);
            return p.GetOpenGLGraphicsRequirementsKHR(p.One(p.mInstances), SYSTEM_ID,
                                                      p.Maybe(requirements));
        },
        [](P& p) { return p.Chance(30) ? p.DestroySession(p.One(p.mSessions)) : XR_SUCCESS; },
        [](P& p)
        {
            auto info = p.Make<XrSessionBeginInfo>(XR_TYPE_SESSION_BEGIN_INFO);
            info.primaryViewConfigurationType = static_cast<XrViewConfigurationType>(p.Pick(4));
            return p.BeginSession(p.One(p.mSessions), p.Maybe(info));
        },
        [](P& p) { return p.EndSession(p.One(p.mSessions)); },
        [](P& p) { return p.Chance(10) ? p.RequestExitSession(p.One(p.mSessions)) : XR_SUCCESS; },
        [](P& p)
        {
            auto event = p.Make<XrEventDataBuffer>(XR_TYPE_EVENT_DATA_BUFFER);
            return p.PollEvent(p.One(p.mInstances), p.Maybe(event));
        },
        [](P& p)
        {
            auto info = p.Make<XrReferenceSpaceCreateInfo>(XR_TYPE_REFERENCE_SPACE_CREATE_INFO);
            info.referenceSpaceType = static_cast<XrReferenceSpaceType>(p.Pick(5));
            info.poseInReferenceSpace = p.Pose();
            XrSpace made = XR_NULL_HANDLE;
            return p.Keep(p.CreateReferenceSpace(p.One(p.mSessions), p.Maybe(info), p.Maybe(made)),
                          made, p.mSpaces);
        },
        [](P& p) { return p.Chance(5) ? p.DestroySpace(p.One(p.mSpaces)) : XR_SUCCESS; },
        [](P& p)
        {
            auto location = p.Make<XrSpaceLocation>(XR_TYPE_SPACE_LOCATION);
            return p.LocateSpace(p.One(p.mSpaces), p.One(p.mSpaces), static_cast<XrTime>(p.Pick(9)),
                                 &location);
        },
        [](P& p)
        {
            auto info = p.Make<XrSwapchainCreateInfo>(XR_TYPE_SWAPCHAIN_CREATE_INFO);
            info.format = p.Chance(9) ? 1 : p.Chance(9) ? GL_DEPTH24_STENCIL8 : GL_RGBA8;
            info.width = info.height = info.arraySize = static_cast<std::uint32_t>(1 + p.Pick(3));
            info.sampleCount = info.mipCount = info.faceCount = p.Chance(9) ? 2 : 1;
            info.createFlags = p.Pick(9);
            XrSwapchain made = XR_NULL_HANDLE;
            return p.Keep(p.CreateSwapchain(p.One(p.mSessions), p.Maybe(info), p.Maybe(made)), made,
                          p.mSwapchains);
        },
        [](P& p) { return p.Chance(5) ? p.DestroySwapchain(p.One(p.mSwapchains)) : XR_SUCCESS; }};
}

RandomProgram::Calls_t RandomProgram::FrameCalls()
{
    using P = RandomProgram;
    return {[](P& p)
            {
                const Instance* instance = TheRuntime().instance.get();
                const Session* one = instance == nullptr ? nullptr : instance->session.get();
                if (one != nullptr && !one->order.MayWait())
                {
                    return XR_SUCCESS; // it would wait for another thread
                }
                auto state = p.Make<XrFrameState>(XR_TYPE_FRAME_STATE);
                return p.WaitFrame(p.One(p.mSessions), nullptr, p.Maybe(state));
            },
            [](P& p)
            {
                const auto info = p.Make<XrFrameBeginInfo>(XR_TYPE_FRAME_BEGIN_INFO);
                return p.BeginFrame(p.One(p.mSessions), p.Chance(2) ? nullptr : &info);
            },
            [](P& p)
            {
                const auto subImage = [&p] {
                    return XrSwapchainSubImage{p.One(p.mSwapchains), {{0, 0}, {1, 1}}};
                };
                auto quad = p.Make<XrCompositionLayerQuad>(XR_TYPE_COMPOSITION_LAYER_QUAD);
                quad.layerFlags = p.Pick(9);
                quad.space = p.One(p.mSpaces);
                quad.pose = p.Pose();
                quad.subImage = subImage();
                XrCompositionLayerProjectionView views[2];
                for (XrCompositionLayerProjectionView& view : views)
                {
                    view = p.Make<XrCompositionLayerProjectionView>(
                        XR_TYPE_COMPOSITION_LAYER_PROJECTION_VIEW);
                    view.pose = p.Pose();
                    view.subImage = subImage();
                }
                auto projection =
                    p.Make<XrCompositionLayerProjection>(XR_TYPE_COMPOSITION_LAYER_PROJECTION);
                projection.space = p.One(p.mSpaces);
                projection.viewCount = p.Chance(9) ? 1 : 2;
                projection.views = p.Chance(9) ? nullptr : views;
                const auto* header = p.Chance(2) ? Header(quad) : Header(projection);
                auto info = p.Make<XrFrameEndInfo>(XR_TYPE_FRAME_END_INFO);
                info.displayTime = static_cast<XrTime>(p.Pick(4));
                info.environmentBlendMode = static_cast<XrEnvironmentBlendMode>(p.Pick(5));
                info.layerCount = static_cast<std::uint32_t>(p.Pick(2));
                info.layers = p.Chance(5) ? nullptr : &header;
                return p.EndFrame(p.One(p.mSessions), p.Maybe(info));
            },
            [](P& p)
            {
                auto info = p.Make<XrViewLocateInfo>(XR_TYPE_VIEW_LOCATE_INFO);
                info.viewConfigurationType = static_cast<XrViewConfigurationType>(p.Pick(4));
                info.displayTime = static_cast<XrTime>(p.Pick(4));
                info.space = p.One(p.mSpaces);
                auto state = p.Make<XrViewState>(XR_TYPE_VIEW_STATE);
                XrView views[2] = {p.Make<XrView>(XR_TYPE_VIEW), p.Make<XrView>(XR_TYPE_VIEW)};
                std::uint32_t count = 0;
                return p.LocateViews(p.One(p.mSessions), p.Maybe(info), p.Maybe(state),
                                     static_cast<std::uint32_t>(p.Pick(3)), p.Maybe(count), views);
            },
            [](P& p)
            {
                std::uint32_t index = 0;
                return p.AcquireSwapchainImage(p.One(p.mSwapchains), nullptr, p.Maybe(index));
            },
            [](P& p)
            {
                const auto info =
                    p.Make<XrSwapchainImageWaitInfo>(XR_TYPE_SWAPCHAIN_IMAGE_WAIT_INFO);
                return p.WaitSwapchainImage(p.One(p.mSwapchains), p.Maybe(info));
            },
            [](P& p) { return p.ReleaseSwapchainImage(p.One(p.mSwapchains), nullptr); }};
}

RandomProgram::Calls_t RandomProgram::ActionCalls()
{
    using P = RandomProgram;
    return {[](P& p)
            {
                auto info = p.Make<XrActionSetCreateInfo>(XR_TYPE_ACTION_SET_CREATE_INFO);
                info.actionSetName[0] = static_cast<char>('a' + p.Pick(30));
                info.localizedActionSetName[0] = static_cast<char>(p.Pick(30));
                XrActionSet made = XR_NULL_HANDLE;
                return p.Keep(p.CreateActionSet(p.One(p.mInstances), p.Maybe(info), p.Maybe(made)),
                              made, p.mSets);
            },
            [](P& p) { return p.Chance(5) ? p.DestroyActionSet(p.One(p.mSets)) : XR_SUCCESS; },
            [](P& p)
            {
                auto info = p.Make<XrActionCreateInfo>(XR_TYPE_ACTION_CREATE_INFO);
                info.actionName[0] = static_cast<char>('a' + p.Pick(30));
                info.localizedActionName[0] = info.actionName[0];
                info.actionType = static_cast<XrActionType>(p.Pick(6));
                const XrPath paths[2] = {p.SomePath(), p.SomePath()};
                info.countSubactionPaths = static_cast<std::uint32_t>(p.Pick(3));
                info.subactionPaths = p.Chance(9) ? nullptr : paths;
                XrAction made = XR_NULL_HANDLE;
                return p.Keep(p.CreateAction(p.One(p.mSets), p.Maybe(info), p.Maybe(made)), made,
                              p.mActions);
            },
            [](P& p) { return p.Chance(5) ? p.DestroyAction(p.One(p.mActions)) : XR_SUCCESS; },
            [](P& p)
            {
                auto info = p.Make<XrInteractionProfileSuggestedBinding>(
                    XR_TYPE_INTERACTION_PROFILE_SUGGESTED_BINDING);
                const XrActionSuggestedBinding binding{p.One(p.mActions), p.SomePath()};
                info.interactionProfile = p.SomePath();
                info.countSuggestedBindings = static_cast<std::uint32_t>(p.Pick(2));
                info.suggestedBindings = &binding;
                return p.SuggestInteractionProfileBindings(p.One(p.mInstances), p.Maybe(info));
            },
            [](P& p)
            {
                auto info =
                    p.Make<XrSessionActionSetsAttachInfo>(XR_TYPE_SESSION_ACTION_SETS_ATTACH_INFO);
                const XrActionSet set = p.One(p.mSets);
                info.countActionSets = static_cast<std::uint32_t>(p.Pick(2));
                info.actionSets = &set;
                return p.AttachSessionActionSets(p.One(p.mSessions), p.Maybe(info));
            },
            [](P& p)
            {
                auto info = p.Make<XrActionsSyncInfo>(XR_TYPE_ACTIONS_SYNC_INFO);
                const XrActiveActionSet active{p.One(p.mSets), p.SomePath()};
                info.countActiveActionSets = static_cast<std::uint32_t>(p.Pick(2));
                info.activeActionSets = &active;
                return p.SyncActions(p.One(p.mSessions), p.Maybe(info));
            },
            [](P& p)
            {
                auto info = p.Make<XrActionStateGetInfo>(XR_TYPE_ACTION_STATE_GET_INFO);
                info.action = p.One(p.mActions);
                info.subactionPath = p.SomePath();
                auto state = p.Make<XrActionStateFloat>(XR_TYPE_ACTION_STATE_FLOAT);
                return p.GetActionStateFloat(p.One(p.mSessions), p.Maybe(info), p.Maybe(state));
            },
            [](P& p)
            {
                auto info = p.Make<XrActionSpaceCreateInfo>(XR_TYPE_ACTION_SPACE_CREATE_INFO);
                info.action = p.One(p.mActions);
                info.poseInActionSpace = p.Pose();
                XrSpace made = XR_NULL_HANDLE;
                return p.Keep(p.CreateActionSpace(p.One(p.mSessions), p.Maybe(info), p.Maybe(made)),
                              made, p.mSpaces);
            },
            [](P& p)
            {
                char text[4];
                std::uint32_t count = 0;
                return p.PathToString(p.One(p.mInstances), p.SomePath(),
                                      static_cast<std::uint32_t>(p.Pick(5)), p.Maybe(count), text);
            }};
}

const RandomProgram::Calls_t& RandomProgram::Calls()
{
    static const Calls_t ALL = []
    {
        Calls_t all = LifeCalls();
        for (const Calls_t& more : {FrameCalls(), ActionCalls()})
        {
            all.insert(all.end(), more.begin(), more.end());
        }
        return all;
    }();
    return ALL;
}

/// True for a result that is not a bug of the runtime.
bool IsExpected(XrResult result)
{
    char text[XR_MAX_RESULT_STRING_SIZE];
    WriteResultText(result, text);
    return std::string(text).find("UNKNOWN") == std::string::npos &&
           result != XR_ERROR_RUNTIME_FAILURE && result != XR_ERROR_OUT_OF_MEMORY;
}

} // namespace

TEST(RandomCallsTest, EveryCallHasAResultOfTheRegistry)
{
    setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
    setenv("QUELTA_OPENXR_RATE", "1000", 1); // this makes the frames short
    setenv("QUELTA_OPENXR_MIRROR", "64x64", 1);
    TheRuntime().openPoseSource = [](const SourceSettings&, std::string&)
    { return std::make_unique<StillSource>(); };
    const char* chosen = std::getenv("QLT_SEED");
    const unsigned seed = chosen != nullptr ? static_cast<unsigned>(std::atoi(chosen)) : 20260721u;
    RecordProperty("seed", static_cast<int>(seed));
    const ProgramContext context;
    RandomProgram program(seed, context.Binding());
    std::map<XrResult, int> results;
    for (int i = 0; i < CALLS; ++i)
    {
        const XrResult result = program.Call();
        ++results[result];
        ASSERT_TRUE(IsExpected(result))
            << result << " of call " << program.Name() << ", number " << i << ", seed " << seed;
    }
    for (const auto& [result, count] : results)
    {
        RecordProperty("result_" + std::to_string(result), count);
    }
    EXPECT_GT(results.size(), 30u) << "the calls reach too little";
    EXPECT_GT(results[XR_SUCCESS], CALLS / 10);
    if (TheRuntime().instance != nullptr)
    {
        program.DestroyInstance(TheRuntime().instance->handle.Get());
    }
    EXPECT_EQ(TheRuntime().handles.Size(), 0u);
    TheRuntime().openPoseSource = OpenPoseSource;
}

} // namespace qltxr
