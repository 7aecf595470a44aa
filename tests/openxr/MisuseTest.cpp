// Calls every function with numbers that are no handles, without pointers, and with structures
// without a type.
#include "OpenXr.h"

#include <map>
#include <tuple>

namespace qltxr
{

namespace
{

using Handles = std::tuple<XrInstance, XrSession, XrSpace, XrActionSet, XrAction, XrSwapchain>;

enum class Mode
{
    NoPointers,
    NoTypes, // every structure is zero
};

template <typename Type, typename = void>
constexpr bool HAS_TYPE = false;
template <typename Type>
constexpr bool HAS_TYPE<Type*, std::void_t<decltype(std::declval<Type&>().type)>> = true;

template <typename Type>
constexpr bool IS_HANDLE = std::is_same_v<Type, XrInstance> || std::is_same_v<Type, XrSession> ||
                           std::is_same_v<Type, XrSpace> || std::is_same_v<Type, XrActionSet> ||
                           std::is_same_v<Type, XrAction> || std::is_same_v<Type, XrSwapchain>;

template <typename Type>
Type ArgumentFor(const Handles& handles, Mode mode)
{
    static std::uint64_t zeros[1024];
    if constexpr (IS_HANDLE<Type>)
    {
        return std::get<Type>(handles);
    }
    else if constexpr (std::is_pointer_v<Type>)
    {
        std::memset(zeros, 0, sizeof(zeros));
        return mode == Mode::NoPointers ? nullptr : reinterpret_cast<Type>(zeros);
    }
    else
    {
        return Type{};
    }
}

} // namespace

class MisuseTest : public HeadlessTest
{
protected:
    MisuseTest()
    {
        XrActionSetCreateInfo setInfo{XR_TYPE_ACTION_SET_CREATE_INFO, nullptr, "set", "Set"};
        EXPECT_EQ(CreateActionSet(instance, &setInfo, &std::get<XrActionSet>(mAlive)), XR_SUCCESS);
        XrActionCreateInfo info{XR_TYPE_ACTION_CREATE_INFO, nullptr, "act",
                                XR_ACTION_TYPE_POSE_INPUT};
        info.localizedActionName[0] = 'A';
        EXPECT_EQ(CreateAction(std::get<XrActionSet>(mAlive), &info, &std::get<XrAction>(mAlive)),
                  XR_SUCCESS);
        std::get<XrInstance>(mAlive) = instance;
        std::get<XrSession>(mAlive) = session;
        std::get<XrSpace>(mAlive) = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_LOCAL);
    }

    template <typename First, typename... Rest>
    void ExpectHandleInvalid(const char* name, XrResult (*function)(First, Rest...),
                             std::uint64_t number)
    {
        if constexpr (IS_HANDLE<First>)
        {
            EXPECT_EQ(function(reinterpret_cast<First>(number),
                               ArgumentFor<Rest>(mAlive, Mode::NoTypes)...),
                      XR_ERROR_HANDLE_INVALID)
                << name << " with " << number;
            ++mCalls;
        }
    }

    /// Tests a function whose first argument is a live handle, and ignores all others.
    template <typename First, typename... Rest>
    void ExpectRefused(const std::string& name, XrResult (*function)(First, Rest...), Mode mode)
    {
        constexpr bool HAS_POINTER = ((std::is_pointer_v<Rest> && !IS_HANDLE<Rest>) || ...);
        if constexpr (HAS_POINTER && IS_HANDLE<First>)
        {
            const bool mayBeRefused = mode == Mode::NoPointers || (HAS_TYPE<Rest> || ...);
            if (!mayBeRefused || std::get<First>(mAlive) == XR_NULL_HANDLE)
            {
                return;
            }
            const auto other = mOthers.find(name);
            EXPECT_EQ(function(std::get<First>(mAlive), ArgumentFor<Rest>(mAlive, mode)...),
                      other == mOthers.end() ? XR_ERROR_VALIDATION_FAILURE : other->second)
                << name;
            ++mCalls;
        }
    }

    /// Other results: another argument is wrong, too, or a pointer may be null.
    std::map<std::string, XrResult> mOthers = {
        {"EnumerateEnvironmentBlendModes", XR_ERROR_SYSTEM_INVALID},
        {"EnumerateViewConfigurations", XR_ERROR_SYSTEM_INVALID},
        {"EnumerateViewConfigurationViews", XR_ERROR_SYSTEM_INVALID},
        {"PathToString", XR_ERROR_PATH_INVALID}};
    Handles mAlive;
    int mCalls = 0;
};

TEST_F(MisuseTest, EveryFunctionKnowsAHandleThatIsNone)
{
    const XrSpace dead = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_VIEW);
    DestroySpace(dead);
    for (const std::uint64_t number :
         {std::uint64_t{0}, std::uint64_t{0x1234}, std::uint64_t{0xBAAAAAAAAAAAAAAD},
          reinterpret_cast<std::uint64_t>(dead)})
    {
#define QLT_XR_CASE(name, extension) ExpectHandleInvalid(#name, name, number);
        QLT_XR_FUNCTIONS(QLT_XR_CASE)
#undef QLT_XR_CASE
    }
    EXPECT_GT(mCalls, 4 * 50);
}

TEST_F(MisuseTest, EveryFunctionWantsItsPointersAndTypes)
{
    mOthers["BeginFrame"] = XR_ERROR_CALL_ORDER_INVALID;
    for (const Mode mode : {Mode::NoPointers, Mode::NoTypes})
    {
#define QLT_XR_CASE(name, extension) ExpectRefused(#name, name, mode);
        QLT_XR_FUNCTIONS(QLT_XR_CASE)
#undef QLT_XR_CASE
        mOthers["BeginFrame"] = XR_ERROR_VALIDATION_FAILURE;
        mOthers["PollEvent"] = XR_SUCCESS; // it ignores the type of the buffer
    }
    EXPECT_GT(mCalls, 60);
}

} // namespace qltxr
