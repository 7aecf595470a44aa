#include "Commands.h"

#include <qlt/qlt.h>

#include "OutputFile.h"
#include "ReportRecorder.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

namespace
{

volatile std::sig_atomic_t gInterrupted = 0;

void Interrupt(int) { gInterrupted = 1; }

} // namespace

int RunRecord(const RecordOptions& options)
{
    std::signal(SIGINT, Interrupt);
    ReportRecorder recorder(qlt::UsbHost::System(), options.recording);
    if (qlt::UsbHost::System().OpenFirst() == nullptr)
    {
        std::fprintf(stderr, "qlt: no headset is connected; waiting for one\n");
    }
    {
        qlt::Hmd hmd(recorder);
        hmd.Start();
        const auto start = std::chrono::steady_clock::now();
        const auto isOver = [&]
        {
            const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
            return gInterrupted != 0 || recorder.Failed() ||
                   (options.seconds > 0.0 && elapsed.count() >= options.seconds);
        };
        while (!isOver())
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        hmd.Stop();
    }
    recorder.Close();
    std::printf("%s: %zu reports\n", options.recording.c_str(), recorder.Reports());
    return 0;
}
