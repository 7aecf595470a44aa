// Measures the cost of the OpenXR runtime besides drawing. One xrLocateViews may take 1 us. The
// processor time of all its threads may be 0.3 ms per frame. The program needs an X display:
// xvfb-run build/linux/bin/qlt_openxr_bench.
#include "Api/Functions.h"
#include "Api/Runtime.h"
#include "Graphics/GlGraphics.h"

#include "openxr/ProgramContext.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace
{

using namespace qltxr;

double ThreadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The processor time of the compositor's thread.
struct ThreadTimes
{
    std::atomic<double> drawing{0.0}; // in calls of OpenGL
    std::atomic<double> all{0.0};     // until the end of the last call of OpenGL
};

/// OpenGL that adds up the processor time of its calls on the compositor's thread.
class TimedGraphics final : public Graphics
{
public:
    TimedGraphics(std::unique_ptr<Graphics> graphics, ThreadTimes& times)
        : mGraphics(std::move(graphics))
        , mTimes(times)
    {
    }

    std::vector<std::int64_t> Formats() const override { return mGraphics->Formats(); }
    XrDuration RefreshPeriod() const override { return mGraphics->RefreshPeriod(); }
    XrDuration ScanTime() const override { return mGraphics->ScanTime(); }
    bool HasOutput() const override { return mGraphics->HasOutput(); }
    std::string DescribeOutput() const override { return mGraphics->DescribeOutput(); }
    void Enter() override { mGraphics->Enter(); }
    void Leave() override { mGraphics->Leave(); }
    std::shared_ptr<ImageSet> CreateImages(const XrSwapchainCreateInfo& info,
                                           std::uint32_t count) override
    {
        return mGraphics->CreateImages(info, count);
    }
    bool IsComplete(const Frame& frame) override
    {
        return Timed([&] { return mGraphics->IsComplete(frame); });
    }
    void Draw(const Composition& composition) override
    {
        Timed(
            [&]
            {
                mGraphics->Draw(composition);
                return true;
            });
    }
    XrTime Present() override
    {
        return Timed([&] { return mGraphics->Present(); });
    }
    WindowEvents PollWindow() override
    {
        return Timed([&] { return mGraphics->PollWindow(); });
    }
    Picture ReadPicture() override { return mGraphics->ReadPicture(); }
    std::size_t CountObjects() const override { return mGraphics->CountObjects(); }

private:
    template <typename Action>
    auto Timed(const Action& action) const -> decltype(action())
    {
        const double begin = ThreadSeconds();
        const auto result = action();
        mTimes.all = ThreadSeconds();
        mTimes.drawing = mTimes.drawing + mTimes.all - begin;
        return result;
    }

    std::unique_ptr<Graphics> mGraphics;
    ThreadTimes& mTimes; // only the compositor's thread writes them
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

/// Measures the processor time of the program's thread and of the compositor's thread in two
/// seconds of frames, besides the time of the OpenGL calls. The program itself draws nothing.
void FrameBesidesDrawing(benchmark::State& state)
{
    constexpr int FRAMES = 120;
    setenv("LP_NUM_THREADS", "0", 1); // Mesa's software OpenGL then draws on the thread of the call
    for (auto _ : state)
    {
        const ProgramContext context;
        const Program program;
        ThreadTimes times;
        const HeadModel& head = TheRuntime().instance->session->head;
        FrameClock clock(FrameClock::DEFAULT_PERIOD, Now());
        auto graphics = std::make_unique<GlGraphics>(GlSurface::Open(context.Binding(), {}));
        Compositor compositor(std::make_unique<TimedGraphics>(std::move(graphics), times), head,
                              clock);
        compositor.TakePicture(); // the first picture prepares the driver
        const double drawingBefore = times.drawing;
        const double besidesBefore = times.all - times.drawing + ThreadSeconds();
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
        const double besides = times.all - times.drawing + ThreadSeconds() - besidesBefore;
        state.counters["drawing_us_per_frame"] = (times.drawing - drawingBefore) / FRAMES * 1e6;
        state.counters["cpu_us_per_frame"] = besides / FRAMES * 1e6;
    }
}

BENCHMARK(LocateTheViews);
BENCHMARK(FrameBesidesDrawing)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
