// A program that writes and reads captures for tests in other languages.
//
//   qlt_capture_probe write FILE REPORTS PAUSE_US [RING]
//   qlt_capture_probe read FILE
#include <qltkit/Capture/CaptureReader.h>
#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Error.h>
#include <qltkit/Headset/SoftwareHeadset.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <thread>

namespace
{

/// Prints the counts of the writer and the longest time of one call.
int Write(const char* path, int reports, int pauseUs, int ring)
{
    qltkit::CaptureOptions options;
    options.ringReports = static_cast<std::size_t>(ring);
    qltkit::CaptureWriter writer(path, options);
    qltkit::SoftwareHeadset headset(1, true);
    std::chrono::steady_clock::duration longest{};
    bool failed = false;
    writer.AddEvent("connected");
    for (int i = 0; i < reports; ++i)
    {
        const qltkit::CaptureReport report = headset.Next().report;
        const auto before = std::chrono::steady_clock::now();
        writer.AddReport(report.data());
        longest = std::max(longest, std::chrono::steady_clock::now() - before);
        std::this_thread::sleep_for(std::chrono::microseconds(pauseUs));
        if (i % 1000 == 999)
        {
            failed = failed || !writer.Failure().empty();
            std::printf("%d %s\n", i + 1, writer.Failure().c_str());
            std::fflush(stdout);
        }
    }
    writer.AddText(qltkit::CaptureLevel::Warning, "half a \xE2\x82\xAC and a \"quote\"");
    writer.AddFrame({2, 2, 2, "mono8", std::string_view("\0\x7F\x80\xFF", 4)});
    int result = 0;
    try
    {
        writer.Close();
    }
    catch (const qltkit::Error& error)
    {
        std::printf("error %s\n", error.what());
        result = 3;
    }
    std::printf("added %d taken %llu written %llu dropped %llu failed %d longestUs %lld\n", reports,
                static_cast<unsigned long long>(writer.Reports()),
                static_cast<unsigned long long>(writer.WrittenReports()),
                static_cast<unsigned long long>(writer.DroppedReports()), failed ? 1 : 0,
                static_cast<long long>(
                    std::chrono::duration_cast<std::chrono::microseconds>(longest).count()));
    return result;
}

void PrintHex(std::string_view bytes)
{
    for (const char byte : bytes)
    {
        std::printf("%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    }
}

int Read(const char* path)
{
    qltkit::CaptureReader reader(path);
    qltkit::CaptureItem item;
    while (reader.Next(item))
    {
        constexpr const char* KINDS[] = {"report", "event", "text", "frame", "other"};
        std::printf("%s %llu %llu ", KINDS[static_cast<int>(item.kind)],
                    static_cast<unsigned long long>(item.logTimeNs),
                    static_cast<unsigned long long>(item.publishTimeNs));
        PrintHex(item.kind == qltkit::CaptureItem::Kind::Frame ? item.frame.pixels : item.data);
        std::printf(" %s\n", (item.name + item.text).c_str());
    }
    for (const qltkit::CaptureProblem& problem : reader.Problems())
    {
        std::printf("problem %s\n", problem.text.c_str());
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        return argc > 4 ? Write(argv[2], std::atoi(argv[3]), std::atoi(argv[4]),
                                argc > 5 ? std::atoi(argv[5]) : 32768)
                        : Read(argv[2]);
    }
    catch (const qltkit::Error& error)
    {
        std::printf("error %s\n", error.what());
        return 2;
    }
}
