// Measures the cost of the OpenXR runtime without drawing. One xrLocateViews may take 1 us. The
// processor time of all its threads may be 0.3 ms per frame.
#include "Api/Functions.h"
#include "Api/Runtime.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <ctime>

namespace
{

using namespace qltxr;

/// Graphics that draw nothing.
class NoGraphics final : public Graphics
{
public:
    std::vector<std::int64_t> Formats() const override { return {}; }
    XrDuration RefreshPeriod() const override { return 0; }
    XrDuration ScanTime() const override { return 0; }
    bool HasOutput() const override { return true; }
    std::string DescribeOutput() const override { return "none"; }
    void Enter() override {}
    void Leave() override {}
    std::shared_ptr<ImageSet> CreateImages(const XrSwapchainCreateInfo&, std::uint32_t) override
    {
        return nullptr;
    }
    bool IsComplete(const Frame&) override { return true; }
    void Draw(const Composition& composition) override
    {
        benchmark::DoNotOptimize(composition.scanStart.head.turn.w);
    }
    XrTime Present() override { return 0; }
    WindowEvents PollWindow() override { return {}; }
    Picture ReadPicture() override { return {}; }
    std::size_t CountObjects() const override { return 0; }
};

/// A program with a running session on the simulator. It does not draw.
class Program
{
public:
    Program()
    {
        setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
        setenv("QUELTA_SOURCE", "simulator", 1);
        const char* headless = "XR_MND_headless";
        XrInstanceCreateInfo info{};
        info.type = XR_TYPE_INSTANCE_CREATE_INFO;
        std::strcpy(info.applicationInfo.applicationName, "a benchmark");
        info.applicationInfo.apiVersion = XR_MAKE_VERSION(1, 0, 0);
        info.enabledExtensionCount = 1;
        info.enabledExtensionNames = &headless;
        CreateInstance(&info, &instance);
        const XrSessionCreateInfo sessionInfo{XR_TYPE_SESSION_CREATE_INFO, nullptr, 0, SYSTEM_ID};
        CreateSession(instance, &sessionInfo, &session);
        const XrSessionBeginInfo begin{XR_TYPE_SESSION_BEGIN_INFO, nullptr,
                                       XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO};
        BeginSession(session, &begin);
        const XrReferenceSpaceCreateInfo local{XR_TYPE_REFERENCE_SPACE_CREATE_INFO,
                                               nullptr,
                                               XR_REFERENCE_SPACE_TYPE_LOCAL,
                                               {{0, 0, 0, 1}, {0, 0, 0}}};
        CreateReferenceSpace(session, &local, &space);
    }
    ~Program() { DestroyInstance(instance); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Locate(XrTime time) const
    {
        const XrViewLocateInfo info{XR_TYPE_VIEW_LOCATE_INFO, nullptr,
                                    XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO, time, space};
        XrViewState state{};
        state.type = XR_TYPE_VIEW_STATE;
        XrView views[2] = {};
        views[0].type = views[1].type = XR_TYPE_VIEW;
        std::uint32_t count = 0;
        LocateViews(session, &info, &state, 2, &count, views);
        benchmark::DoNotOptimize(views);
    }

    XrInstance instance = XR_NULL_HANDLE;
    XrSession session = XR_NULL_HANDLE;
    XrSpace space = XR_NULL_HANDLE;
};

void LocateTheViews(benchmark::State& state)
{
    const Program program;
    const XrTime time = Now();
    for (auto _ : state)
    {
        program.Locate(time);
    }
}

/// Measures the processor time of the whole process in two seconds of frames at 60 Hz with a
/// compositor. It subtracts the processor time of two seconds without frames and compositor, which
/// is that of the tracker.
void FrameWithoutDrawing(benchmark::State& state)
{
    constexpr int FRAMES = 120;
    const auto seconds = [] { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; };
    for (auto _ : state)
    {
        const Program program;
        const double idle = seconds();
        std::this_thread::sleep_for(std::chrono::nanoseconds(FRAMES * FrameClock::DEFAULT_PERIOD));
        const double busy = seconds();
        {
            const HeadModel& head = TheRuntime().instance->session->head;
            FrameClock clock(FrameClock::DEFAULT_PERIOD, Now());
            Compositor compositor(std::make_unique<NoGraphics>(), head, clock);
            for (int i = 0; i < FRAMES; ++i)
            {
                XrFrameState frame{};
                frame.type = XR_TYPE_FRAME_STATE;
                WaitFrame(program.session, nullptr, &frame);
                BeginFrame(program.session, nullptr);
                program.Locate(frame.predictedDisplayTime);
                const XrFrameEndInfo end{
                    XR_TYPE_FRAME_END_INFO,           nullptr, frame.predictedDisplayTime,
                    XR_ENVIRONMENT_BLEND_MODE_OPAQUE, 0,       nullptr};
                EndFrame(program.session, &end);
                compositor.NextFrame().layerCount = 0;
                compositor.Submit();
            }
        }
        const double perFrame = ((seconds() - busy) - (busy - idle)) / FRAMES;
        state.counters["cpu_us_per_frame"] = perFrame * 1e6;
    }
}

BENCHMARK(LocateTheViews);
BENCHMARK(FrameWithoutDrawing)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
