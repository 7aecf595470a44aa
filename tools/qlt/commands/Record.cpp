#include "commands/Commands.h"

#include <qlt/qlt.h>

#include "source/HeadsetSearch.h"
#include "source/Interrupt.h"
#include "source/ReportRecorder.h"

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>

int RunRecord(const RecordOptions& options)
{
    ReportRecorder recorder(qlt::UsbHost::System(), options.recording);
    CatchInterrupts();
    SayThatHeadsetIsAwaited();
    {
        qlt::Hmd hmd(recorder);
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
