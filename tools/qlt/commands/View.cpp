#include "commands/Commands.h"

#include <qlt/qlt.h>
#include <qltkit/Headset/ReportFollower.h>

#include "commands/CommandLine.h"
#include "output/Orientation.h"
#include "output/PngFile.h"
#include "source/HeadsetSearch.h"
#include "source/Interrupt.h"
#include "source/TrackerSource.h"
#include "view/GlContext.h"
#include "view/HeadsetView.h"
#include "view/Window.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace
{

struct Options
{
    std::string source = "simulator"; // simulator, headset or a file
    std::string filter = "kit";
    double seconds = 0.0; // 0: until the window is closed, or 6 s into it for a picture
    std::string png;      // empty: a window
};

using qlt::Params;
using SteadyClock = std::chrono::steady_clock;

/// The moment of a picture. By then the filter has settled, and the simulator looks a little down.
constexpr double DEFAULT_MOMENT_S = 6.0;

/// Runs the source's tracker, and keeps the orientation of the head at the last report.
class Head final : public qltkit::ReportFollower
{
public:
    /// Follows the tracker for this number of reports. 0 means without an end.
    Head(TrackerSource& source, std::size_t reports)
        : ReportFollower(source.Recorded(), reports)
        , mSource(source)
        , mTracker(source.Get())
    {
        mTracker.AddListener(*this);
        mTracker.Start();
    }

    ~Head() override
    {
        mTracker.Stop();
        mTracker.RemoveListener(*this);
    }

    qlt::Quaternion Orientation() const
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mOrientation;
    }

    /// Makes the current heading forward, at the next report or while the tracker is held.
    void ResetYaw() { mYawIsToBeReset = true; }

private:
    void OnReport(std::size_t report, const qlt::Quaternion& core, float) override
    {
        Keep(mSource.Follow(report, core));
        WhileHeld();
    }

    // This call runs on the tracker's thread, because other threads would have to wait for a held
    // tracker.
    void WhileHeld() override
    {
        if (mYawIsToBeReset.exchange(false))
        {
            Keep(mSource.ResetYaw());
        }
    }

    void Keep(const qlt::Quaternion& orientation)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mOrientation = orientation;
    }

    TrackerSource& mSource;
    qlt::Tracker& mTracker;
    std::atomic<bool> mYawIsToBeReset{false};
    mutable std::mutex mMutex; // guards the orientation
    qlt::Quaternion mOrientation = qlt::Quaternion::Identity;
};

/// The text of the window's title, which changes every half second.
class Title
{
public:
    explicit Title(const std::string& source)
        : mSource(source)
    {
    }

    /// Call it after each frame. It returns true when there is a new text.
    bool Update(const qlt::Quaternion& orientation)
    {
        ++mFrames;
        const double elapsedS = std::chrono::duration<double>(SteadyClock::now() - mSince).count();
        if (elapsedS < 0.5)
        {
            return false;
        }
        text = "qlt view: " + mSource + ", " + FormatAngles(orientation) +
               OutputFile::Format(", %.0f frames/s", mFrames / elapsedS) +
               " - D lens, R forward, Esc close";
        mFrames = 0;
        mSince = SteadyClock::now();
        return true;
    }

    std::string text;

private:
    const std::string mSource;
    int mFrames = 0;
    SteadyClock::time_point mSince = SteadyClock::now();
};

int ShowWindow(const Options& options)
{
    TrackerSource source(options.source, options.filter);
    Head head(source, source.Reports());
    bool lens = Params::EYE_DISTORT;
    Window window(Params::HMD_RESOLUTION_X / 2, Params::HMD_RESOLUTION_Y / 2,
                  [&](char key)
                  {
                      lens = key == 'D' ? !lens : lens;
                      if (key == 'R' || key == ' ')
                      {
                          head.ResetYaw();
                      }
                  });
    LoadOpenGl();
    HeadsetView view(1);
    Title title(options.source);
    const SteadyClock::time_point start = SteadyClock::now();
    const std::chrono::duration<double> length(options.seconds);
    do
    {
        const qlt::Quaternion orientation = head.Orientation();
        view.RenderEyes(orientation);
        int width = 0;
        int height = 0;
        window.Use(width, height);
        view.Present(width, height, lens);
        if (title.Update(orientation))
        {
            window.SetTitle(title.text);
        }
    } while (window.Show() && (options.seconds <= 0.0 || SteadyClock::now() - start < length));
    return source.ExitCode();
}

/// Returns the orientation of the head `seconds` after its tracker's start, in the tracker's time.
qlt::Quaternion OrientationAfter(double seconds, TrackerSource& source)
{
    const auto patience = std::chrono::duration<double>(seconds + 10.0);
    const SteadyClock::time_point start = SteadyClock::now();
    const std::size_t reports = source.ReportsIn(seconds);
    Head head(source, reports);
    const auto isTime = [&]
    {
        const std::chrono::duration<double> elapsed = SteadyClock::now() - start;
        return head.Ended() ||
               (head.Reports() != 0 &&
                (Interrupted() || source.IsOver() || (reports == 0 && elapsed.count() >= seconds)));
    };
    while (!isTime())
    {
        if (Interrupted() || source.IsOver() || SteadyClock::now() - start > patience)
        {
            throw std::runtime_error("there are too few reports for a picture");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return head.Orientation();
}

/// Returns the pixels without alpha, the upper row first.
std::vector<unsigned char> ForPng(const RenderTarget& target)
{
    const std::vector<unsigned char> pixels = target.Pixels();
    const auto width = static_cast<std::size_t>(target.Width());
    std::vector<unsigned char> picture;
    picture.reserve(pixels.size() / 4 * 3);
    for (std::size_t row = static_cast<std::size_t>(target.Height()); row-- > 0;)
    {
        for (std::size_t i = row * width * 4; i < (row + 1) * width * 4; i += 4)
        {
            picture.insert(picture.end(), &pixels[i], &pixels[i] + 3);
        }
    }
    return picture;
}

int DrawPicture(const Options& options)
{
    OutputFile png(options.png);
    CatchInterrupts();
    if (options.source == "headset")
    {
        RequireHeadset(HeadsetPart::Sensors);
    }
    TrackerSource source(options.source, options.filter, TrackerSource::Pace::Fastest);
    const double seconds = options.seconds > 0.0 ? options.seconds : DEFAULT_MOMENT_S;
    const qlt::Quaternion orientation = OrientationAfter(seconds, source);
    const GlContext context;
    LoadOpenGl();
    HeadsetView view(2);
    const RenderTarget panel(Params::HMD_RESOLUTION_X, Params::HMD_RESOLUTION_Y);
    view.RenderEyes(orientation);
    panel.Use();
    view.Present(panel.Width(), panel.Height(), Params::EYE_DISTORT);
    WritePng(png, panel.Width(), panel.Height(), 3, ForPng(panel));
    std::printf("%s: %d x %d, %s\n", options.png.c_str(), panel.Width(), panel.Height(),
                FormatAngles(orientation).c_str());
    return source.ExitCode();
}

int Run(const Options& options)
{
    return options.png.empty() ? ShowWindow(options) : DrawPicture(options);
}

} // namespace

CommandBody AddView(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Show a scene as the headset shows it; D switches the lens, R or space makes "
                  "this heading forward, Esc closes");
    line.Source(options->source);
    line.Filter(options->filter);
    line.File("--png", options->png, "Save one picture instead of opening a window");
    line.Seconds(options->seconds, "Close after this number of seconds, or take the picture then");
    line.AfterParsing([options]
                      { RequireDistinct({FileOfSource(options->source)}, {options->png}); });
    return [options] { return Run(*options); };
}
