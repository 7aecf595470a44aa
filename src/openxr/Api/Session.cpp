// The functions of a session, its spaces and its views.
#include "Api/Functions.h"
#include "Api/Runtime.h"
#include "Api/SessionControl.h"
#include "Graphics/GlGraphics.h"
#include "Optics/LensShape.h"
#include "Settings/Log.h"
#include "State/Structures.h"

namespace qltxr
{

namespace
{

/// Returns null for a headless session.
std::unique_ptr<Graphics> OpenGraphics(const Instance& instance, const void* chain,
                                       const OutputSettings& settings)
{
    const bool hasOpenGl = instance.extensions.Has(XR_KHR_OPENGL_ENABLE_EXTENSION_NAME);
    const bool mayBeHeadless = instance.extensions.Has(XR_MND_HEADLESS_EXTENSION_NAME);
    // A structure of an extension that is not enabled counts as unknown, so it is skipped.
    const bool hasBinding =
        hasOpenGl && FindInChain<void>(chain, XR_TYPE_GRAPHICS_BINDING_OPENGL_XLIB_KHR) != nullptr;
    if (mayBeHeadless && !hasBinding)
    {
        return nullptr;
    }
    Require(hasOpenGl, XR_ERROR_GRAPHICS_DEVICE_INVALID);
    Require(instance.requirementsAsked, XR_ERROR_GRAPHICS_REQUIREMENTS_CALL_MISSING);
    std::unique_ptr<GlSurface> surface = GlSurface::Open(chain, settings);
    Require(surface != nullptr, XR_ERROR_GRAPHICS_DEVICE_INVALID);
    return std::make_unique<GlGraphics>(std::move(surface));
}

bool IsOfferedSpace(const Instance& instance, XrReferenceSpaceType type)
{
    return type == XR_REFERENCE_SPACE_TYPE_VIEW || type == XR_REFERENCE_SPACE_TYPE_LOCAL ||
           type == XR_REFERENCE_SPACE_TYPE_STAGE ||
           (type == REFERENCE_SPACE_TYPE_LOCAL_FLOOR && instance.extensions.Has(LOCAL_FLOOR_NAME));
}

Instance& InstanceOf(const Session&) { return *TheRuntime().instance; }

VisibilityMask MaskOf(XrVisibilityMaskTypeKHR type, qlt::Params::Eye eye)
{
    switch (type)
    {
    case XR_VISIBILITY_MASK_TYPE_HIDDEN_TRIANGLE_MESH_KHR:
        return HiddenMask(eye);
    case XR_VISIBILITY_MASK_TYPE_VISIBLE_TRIANGLE_MESH_KHR:
        return VisibleMask(eye);
    case XR_VISIBILITY_MASK_TYPE_LINE_LOOP_KHR:
        return EdgeLoop(eye);
    default:
        throw Failure{XR_ERROR_VALIDATION_FAILURE};
    }
}

void SayAll(const Configuration& configuration, const std::string& complaint)
{
    for (const std::string& mistake : configuration.complaints)
    {
        Say(mistake);
    }
    if (!complaint.empty())
    {
        Say(complaint);
    }
}

/// Ends the compositor when a program exits without destroying its session. The driver ends later,
/// because this object was constructed after the driver's objects.
struct SessionAtExit
{
    ~SessionAtExit()
    {
        std::unique_ptr<Session> session;
        {
            const Lock lock = LockRuntime();
            Instance* instance = TheRuntime().instance.get();
            session = instance == nullptr ? nullptr : TakeSession(*instance);
        }
    }
};

} // namespace

XrResult XRAPI_CALL CreateSession(XrInstance handle, const XrSessionCreateInfo* info,
                                  XrSession* session)
{
    const Lock lock = LockRuntime();
    Instance& instance = Get<Instance>(handle);
    RequireType(info, XR_TYPE_SESSION_CREATE_INFO);
    RequirePointer(session);
    Require(info->createFlags == 0, XR_ERROR_VALIDATION_FAILURE);
    RequireSystem(info->systemId);
    Require(instance.session == nullptr, XR_ERROR_LIMIT_REACHED);
    const Configuration configuration = LoadConfiguration();
    std::unique_ptr<Graphics> graphics = OpenGraphics(instance, info->next, configuration.output);
    std::string complaint;
    std::unique_ptr<PoseSource> source =
        TheRuntime().openPoseSource(configuration.source, complaint);
    SayAll(configuration, complaint);
    instance.session =
        std::make_unique<Session>(TheRuntime().handles, instance.events, configuration,
                                  std::move(source), std::move(graphics));
    static const SessionAtExit atExit;
    *session = instance.session->handle.Get();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroySession(XrSession handle)
{
    Lock lock = LockRuntime();
    const std::unique_ptr<Session> session = TakeSession(InstanceOf(Get<Session>(handle)));
    lock.unlock(); // the compositor ends without the lock
    return XR_SUCCESS;
}

XrResult XRAPI_CALL BeginSession(XrSession handle, const XrSessionBeginInfo* info)
{
    const Lock lock = LockRuntime();
    Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_SESSION_BEGIN_INFO);
    Require(!session.state.IsRunning(), XR_ERROR_SESSION_RUNNING);
    if (session.compositor != nullptr)
    {
        RequireViewConfiguration(InstanceOf(session), info->primaryViewConfigurationType);
    }
    session.state.Begin(Now());
    session.order.Reset();
    TheRuntime().changed.notify_all();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL EndSession(XrSession handle)
{
    const Lock lock = LockRuntime();
    Session& session = Get<Session>(handle);
    session.state.End(Now());
    if (session.compositor != nullptr)
    {
        session.compositor->Blank();
    }
    TheRuntime().changed.notify_all();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL RequestExitSession(XrSession handle)
{
    const Lock lock = LockRuntime();
    Get<Session>(handle).state.RequestExit(Now());
    return XR_SUCCESS;
}

void HandleWindowEvents(Instance& instance)
{
    Session& session = *instance.session;
    if (session.compositor == nullptr)
    {
        return;
    }
    const WindowEvents events = session.compositor->TakeWindowEvents();
    if (events.closed && session.state.IsRunning())
    {
        session.state.RequestExit(Now());
    }
    if (events.recentre)
    {
        Recentre(instance);
    }
}

void Recentre(Instance& instance)
{
    Session& session = *instance.session;
    const XrTime now = Now();
    const XrPosef origin = ToPose(session.head.Recentre(now));
    const XrSession handle = session.handle.Get();
    instance.events.OriginChange(handle, XR_REFERENCE_SPACE_TYPE_LOCAL, now, origin);
    instance.events.OriginChange(handle, XR_REFERENCE_SPACE_TYPE_STAGE, now, origin);
    if (instance.extensions.Has(LOCAL_FLOOR_NAME))
    {
        instance.events.OriginChange(handle, REFERENCE_SPACE_TYPE_LOCAL_FLOOR, now, origin);
    }
}

XrResult XRAPI_CALL EnumerateReferenceSpaces(XrSession handle, std::uint32_t capacity,
                                             std::uint32_t* count, XrReferenceSpaceType* spaces)
{
    const Lock lock = LockRuntime();
    const Instance& instance = InstanceOf(Get<Session>(handle));
    constexpr XrReferenceSpaceType ALL[] = {
        XR_REFERENCE_SPACE_TYPE_VIEW, XR_REFERENCE_SPACE_TYPE_LOCAL, XR_REFERENCE_SPACE_TYPE_STAGE,
        REFERENCE_SPACE_TYPE_LOCAL_FLOOR};
    const std::size_t number = instance.extensions.Has(LOCAL_FLOOR_NAME) ? 4 : 3;
    return AnswerValues(capacity, count, spaces, ALL, number);
}

XrResult XRAPI_CALL CreateReferenceSpace(XrSession handle, const XrReferenceSpaceCreateInfo* info,
                                         XrSpace* space)
{
    const Lock lock = LockRuntime();
    Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_REFERENCE_SPACE_CREATE_INFO);
    RequirePointer(space);
    Require(IsOfferedSpace(InstanceOf(session), info->referenceSpaceType),
            XR_ERROR_REFERENCE_SPACE_UNSUPPORTED);
    RequirePose(info->poseInReferenceSpace);
    const SpaceOrigin origin{false, info->referenceSpaceType, FromPose(info->poseInReferenceSpace)};
    *space = session.spaces.emplace_back(TheRuntime().handles, origin, handle).handle.Get();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetReferenceSpaceBoundsRect(XrSession handle, XrReferenceSpaceType type,
                                                XrExtent2Df* bounds)
{
    const Lock lock = LockRuntime();
    const Instance& instance = InstanceOf(Get<Session>(handle));
    RequirePointer(bounds);
    if (!IsOfferedSpace(instance, type))
    {
        RefuseValue(instance.extensions, Enumeration::ReferenceSpaceType, type,
                    XR_ERROR_REFERENCE_SPACE_UNSUPPORTED);
    }
    *bounds = {0.0f, 0.0f};
    return XR_SPACE_BOUNDS_UNAVAILABLE;
}

XrResult XRAPI_CALL CreateActionSpace(XrSession handle, const XrActionSpaceCreateInfo* info,
                                      XrSpace* space)
{
    const Lock lock = LockRuntime();
    Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_ACTION_SPACE_CREATE_INFO);
    RequirePointer(space);
    const Action& action = Get<Action>(info->action);
    Require(action.type == XR_ACTION_TYPE_POSE_INPUT, XR_ERROR_ACTION_TYPE_MISMATCH);
    InstanceOf(session).actions.RequireDeclared(action, info->subactionPath);
    RequirePose(info->poseInActionSpace);
    const SpaceOrigin origin{true, XR_REFERENCE_SPACE_TYPE_LOCAL, {}};
    *space = session.spaces.emplace_back(TheRuntime().handles, origin, handle).handle.Get();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroySpace(XrSpace handle)
{
    const Lock lock = LockRuntime();
    const Space& space = Get<Space>(handle);
    Get<Session>(space.session)
        .spaces.remove_if([&space](const Space& other) { return &other == &space; });
    return XR_SUCCESS;
}

XrResult XRAPI_CALL LocateSpace(XrSpace handle, XrSpace baseHandle, XrTime time,
                                XrSpaceLocation* location)
{
    const Lock lock = LockRuntime();
    const Space& space = Get<Space>(handle);
    const Space& base = Get<Space>(baseHandle);
    RequireType(location, XR_TYPE_SPACE_LOCATION);
    Require(time > 0, XR_ERROR_TIME_INVALID);
    const Session& session = Get<Session>(space.session);
    Locate(space.origin, base.origin, session.head.At(time), session.head.Wearer(), *location,
           FindInOutChain<XrSpaceVelocity>(location->next, XR_TYPE_SPACE_VELOCITY));
    return XR_SUCCESS;
}

XrResult XRAPI_CALL LocateViews(XrSession handle, const XrViewLocateInfo* info, XrViewState* state,
                                std::uint32_t capacity, std::uint32_t* count, XrView* views)
{
    const Lock lock = LockRuntime();
    const Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_VIEW_LOCATE_INFO);
    RequireType(state, XR_TYPE_VIEW_STATE);
    RequireViewConfiguration(InstanceOf(session), info->viewConfigurationType);
    const Space& base = Get<Space>(info->space);
    Require(info->displayTime > 0, XR_ERROR_TIME_INVALID);
    const bool wantsViews = AnswerCount(capacity, count, views, VIEW_COUNT);
    const Head head = session.head.At(info->displayTime);
    const Person& person = session.head.Wearer();
    XrSpaceLocation location{};
    Locate({false, XR_REFERENCE_SPACE_TYPE_VIEW, {}}, base.origin, head, person, location, nullptr);
    state->viewStateFlags = location.locationFlags; // both kinds of flags have the same bits
    for (std::uint32_t i = 0; wantsViews && i < VIEW_COUNT; ++i)
    {
        RequireType(&views[i], XR_TYPE_VIEW);
        const SpaceOrigin eye{false, XR_REFERENCE_SPACE_TYPE_VIEW, EyeInHead(i, person)};
        Locate(eye, base.origin, head, person, location, nullptr);
        views[i].pose = location.pose;
        views[i].fov = session.fieldsOfView[i];
    }
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetVisibilityMaskKHR(XrSession handle, XrViewConfigurationType type,
                                         std::uint32_t view, XrVisibilityMaskTypeKHR maskType,
                                         XrVisibilityMaskKHR* mask)
{
    const Lock lock = LockRuntime();
    const Session& session = Get<Session>(handle);
    RequireType(mask, XR_TYPE_VISIBILITY_MASK_KHR);
    RequireViewConfiguration(InstanceOf(session), type);
    Require(view < VIEW_COUNT, XR_ERROR_VALIDATION_FAILURE);
    const VisibilityMask source = MaskOf(maskType, static_cast<qlt::Params::Eye>(view));
    mask->vertexCountOutput = static_cast<std::uint32_t>(source.vertices.size());
    mask->indexCountOutput = static_cast<std::uint32_t>(source.indices.size());
    if (mask->vertexCapacityInput == 0 || mask->indexCapacityInput == 0)
    {
        return XR_SUCCESS;
    }
    AnswerValues(mask->vertexCapacityInput, &mask->vertexCountOutput, mask->vertices,
                 source.vertices.data(), source.vertices.size());
    return AnswerValues(mask->indexCapacityInput, &mask->indexCountOutput, mask->indices,
                        source.indices.data(), source.indices.size());
}

} // namespace qltxr
