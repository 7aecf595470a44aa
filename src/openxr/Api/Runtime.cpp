#include "Api/Runtime.h"

#include "State/Structures.h"

namespace qltxr
{

namespace
{

constexpr double NS_PER_S = 1e9;

XrDuration PeriodOf(const Configuration& settings, const Graphics* graphics)
{
    const XrDuration display = graphics != nullptr ? graphics->RefreshPeriod() : 0;
    if (display > 0)
    {
        return display;
    }
    return settings.rateHz > 0.0 ? static_cast<XrDuration>(NS_PER_S / settings.rateHz)
                                 : FrameClock::DEFAULT_PERIOD;
}

/// A program may exit in the middle of a session while one of its threads still waits in the
/// runtime. In that case the runtime is never destroyed.
struct Holder
{
    Runtime* runtime = new Runtime;
    ~Holder()
    {
        if (runtime->instance == nullptr)
        {
            delete runtime;
        }
    }
};

} // namespace

Runtime& TheRuntime()
{
    static Holder holder;
    return *holder.runtime;
}

Session::Session(HandleTable& table, EventQueue& events, const Configuration& settings,
                 std::unique_ptr<PoseSource> source, std::unique_ptr<Graphics> graphics)
    : handle(table, this)
    , configuration(settings)
    , head(std::move(source), settings.person)
    , fieldsOfView{FieldOfView(qlt::Params::EYE_LEFT), FieldOfView(qlt::Params::EYE_RIGHT)}
    , clock(PeriodOf(settings, graphics.get()), Now())
    , state(events, handle.Get(), graphics == nullptr)
    , compositor(graphics == nullptr
                     ? nullptr
                     : std::make_shared<Compositor>(std::move(graphics), head, clock))
    , status(head, clock, compositor.get(), frames)
{
    state.Create(Now());
}

Session::~Session()
{
    if (compositor != nullptr)
    {
        compositor->Stop();
    }
}

std::unique_ptr<Session> TakeSession(Instance& instance)
{
    Session* session = instance.session.get();
    if (session != nullptr)
    {
        instance.events.Forget(session->handle.Get());
        session->spaces.clear();
        session->swapchains.clear();
        session->handle.End();
    }
    TheRuntime().changed.notify_all();
    return std::move(instance.session);
}

void RequireViewConfiguration(const Instance& instance, XrViewConfigurationType type)
{
    if (type != XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO)
    {
        RefuseValue(instance.extensions, Enumeration::ViewConfigurationType, type,
                    XR_ERROR_VIEW_CONFIGURATION_TYPE_UNSUPPORTED);
    }
}

} // namespace qltxr
