#include "commands/Commands.h"

#include <qlt/qlt.h>
#include <qltkit/Headset/ReportRecorder.h>

#include "commands/CommandLine.h"
#include "source/HeadsetSearch.h"
#include "source/Interrupt.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <thread>

namespace
{

struct Options
{
    std::string recording;
    double seconds = 0.0; // 0: until interrupted
};

int Run(const Options& options)
{
    qltkit::ReportRecorder recorder(options.recording);
    CatchInterrupts();
    SayThatHeadsetIsAwaited();
    {
        qltkit::ReportTap tap(qlt::UsbHost::System(), qlt::Clock::System(), recorder);
        qlt::Hmd hmd(tap);
        hmd.Start();
        const auto start = std::chrono::steady_clock::now();
        const auto isOver = [&]
        {
            const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
            return Interrupted() || recorder.Failed() ||
                   (options.seconds > 0.0 && elapsed.count() >= options.seconds);
        };
        while (!isOver())
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        hmd.Stop();
    }
    if (recorder.Reports() == 0 && !recorder.Failed())
    {
        throw std::runtime_error("no report has come; " + options.recording + " is not written");
    }
    recorder.Close();
    std::printf("%s: %zu reports\n", options.recording.c_str(), recorder.Reports());
    return 0;
}

} // namespace

CommandBody AddRecord(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Write the headset's reports down as they come, for replay");
    line.File("recording", options->recording, "The file to write").Required();
    line.Seconds(options->seconds, "Stop after so many seconds");
    return [options] { return Run(*options); };
}
