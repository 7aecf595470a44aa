// The objects that a program has made: the instance, the session and everything that belongs to
// them. One lock guards all of them. No thread waits or composes while it holds the lock.
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

    /// Stops the compositor explicitly, because a thread that makes a swapchain may still own a
    /// reference to it.
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
    Frame headlessFrame; // a session without a compositor checks its layers with this frame
    std::atomic<std::uint64_t> frames{0};
    // It is destroyed before the members that it refers to.
    const std::shared_ptr<Compositor> compositor;
    const StatusPublisher status; // it is destroyed first
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
    std::mutex mutex; // guards all members below, and every object behind a handle
    // The frame order or the session state has changed, or a session has ended.
    std::condition_variable changed;
    HandleTable handles;
    std::unique_ptr<Instance> instance;

    /// Opens the source of the head's orientation for a session. A test replaces it.
    std::function<std::unique_ptr<PoseSource>(const SourceSettings&, std::string& complaint)>
        openPoseSource = OpenPoseSource;
};

Runtime& TheRuntime();

using Lock = std::unique_lock<std::mutex>;

inline Lock LockRuntime() { return Lock(TheRuntime().mutex); }

/// Returns the object of a handle. It is valid while the lock is held.
template <typename Object, typename Handle>
Object& Get(Handle handle)
{
    return Resolve<Object>(TheRuntime().handles, handle);
}

/// Takes the session from the instance. The caller holds the lock, and destroys the result without
/// the lock.
std::unique_ptr<Session> TakeSession(Instance& instance);

constexpr XrSystemId SYSTEM_ID = 1;

inline void RequireSystem(XrSystemId id) { Require(id == SYSTEM_ID, XR_ERROR_SYSTEM_INVALID); }

/// Throws XR_ERROR_VIEW_CONFIGURATION_TYPE_UNSUPPORTED for every configuration except primary
/// stereo.
void RequireViewConfiguration(const Instance& instance, XrViewConfigurationType type);

} // namespace qltxr
