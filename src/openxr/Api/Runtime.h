// What a program has made of the runtime: the instance, the session, and what belongs to them; and
// the one lock over all of it. Nothing waits or composes while it holds the lock.
#pragma once

#include "Compositor/Compositor.h"
#include "Compositor/SteadyTime.h"
#include "Optics/LensShape.h"
#include "Settings/Configuration.h"
#include "Settings/StatusPublisher.h"
#include "State/Actions.h"
#include "State/EventQueue.h"
#include "State/Extensions.h"
#include "State/FrameOrder.h"
#include "State/Layers.h"
#include "State/SessionState.h"
#include "Tracking/TrackerSource.h"

#include <functional>
#include <list>
#include <memory>

namespace qltxr
{

struct Session
{
    static constexpr HandleKind KIND = HandleKind::Session;

    /// `graphics` is null for a headless session.
    Session(HandleTable& table, EventQueue& events, const Configuration& settings,
            std::unique_ptr<PoseSource> source, std::unique_ptr<Graphics> graphics);

    /// A thread that makes a swapchain may still have the compositor, so it is stopped by name.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Registration<XrSession, KIND> handle;
    const Configuration configuration;
    HeadModel head;
    const std::array<XrFovf, VIEW_COUNT> fieldsOfView;
    FrameClock clock;
    FramePacer pacer;
    FrameOrder order;
    SessionState state;
    AttachedSets attached;
    std::list<Space> spaces;
    std::list<Swapchain> swapchains;
    Frame headlessFrame; // what a session without a compositor checks its layers with
    std::atomic<std::uint64_t> frames{0};
    const std::shared_ptr<Compositor> compositor; // after what it refers to
    const StatusPublisher status;                 // and this after all of it
};

struct Instance
{
    static constexpr HandleKind KIND = HandleKind::Instance;

    explicit Instance(HandleTable& table)
        : actions(table, paths)
        , handle(table, this)
    {
    }

    EnabledExtensions extensions;
    EventQueue events;
    PathTable paths;
    Actions actions;
    bool requirementsAsked = false;
    std::unique_ptr<Session> session;
    Registration<XrInstance, KIND> handle;
};

struct Runtime
{
    std::mutex mutex;                // guards everything below, and every object behind a handle
    std::condition_variable changed; // the frame order, the session state, or a session is gone
    HandleTable handles;
    std::unique_ptr<Instance> instance;

    /// Where sessions get the head's orientation from; a test puts its own here.
    std::function<std::unique_ptr<PoseSource>(const std::string& source, std::string& complaint)>
        openPoseSource = OpenPoseSource;
};

Runtime& TheRuntime();

using Lock = std::unique_lock<std::mutex>;

inline Lock LockRuntime() { return Lock(TheRuntime().mutex); }

/// The object of a handle, which is valid while the lock is held.
template <typename Object, typename Handle>
Object& Get(Handle handle)
{
    return Resolve<Object>(TheRuntime().handles, handle);
}

/// With the lock held: takes the session from the program. What it returns ends without the lock.
std::unique_ptr<Session> TakeSession(Instance& instance);

constexpr XrSystemId SYSTEM_ID = 1;

inline void RequireSystem(XrSystemId id) { Require(id == SYSTEM_ID, XR_ERROR_SYSTEM_INVALID); }

/// XR_ERROR_VIEW_CONFIGURATION_TYPE_UNSUPPORTED for another one than primary stereo.
void RequireViewConfiguration(const Instance& instance, XrViewConfigurationType type);

} // namespace qltxr
