// The camera's stream, and the search for the header that begins its frames.
#include "Runtime/VRUsbStreamAsync.h"

#include "Runtime/FrameHeader.h"

#include "fakes/OpenHandles.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <iostream>
#include <sstream>

namespace
{

using Bytes = ScriptedUsbHost::Bytes;
constexpr std::uint32_t FRAME = 8192;

Bytes Frame(std::uint32_t number) { return ScriptedUsbHost::Frame(FRAME, number); }

/// The end of a frame and the beginning of the next one, whose header is at `offset`.
Bytes CutFrame(std::uint32_t offset)
{
    Bytes bytes(offset, 0x5A);
    const Bytes frame = Frame(1);
    bytes.insert(bytes.end(), frame.begin(), frame.end() - offset);
    return bytes;
}

int Occurrences(const std::string& text, const std::string& part)
{
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    {
        ++count;
    }
    return count;
}

std::uint32_t gHourMs = 0;

/// Replaces the buffer of standard output. It keeps the text and counts the reads in flight at the
/// end of the first line.
class Printout final : public std::stringbuf
{
public:
    explicit Printout(const ScriptedUsbHost& usbHost)
        : mHost(usbHost)
        , mBefore(std::cout.rdbuf(this))
    {
    }
    ~Printout() override { std::cout.rdbuf(mBefore); }

    int inFlight = -1;

private:
    int sync() override
    {
        // Count only the first time, because standard error flushes this stream, too.
        inFlight = inFlight < 0 ? mHost.inFlight.load() : inFlight;
        return 0;
    }

    const ScriptedUsbHost& mHost;
    std::streambuf* const mBefore;
};

class VRUsbStreamAsyncTest : public testing::Test
{
protected:
    void Start(bool trash, qlt::UsbHost* other = nullptr, bool hasEvent = true)
    {
        std::cerr << std::dec; // the stream may have changed the format
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        stream = std::make_unique<VRUsbStreamAsync>(
            0x04B4, 0x00F1, 0x82, FRAME, other != nullptr ? *other : host, [] { return gHourMs; });
        stream->Init();
        stream->SetTrashEnabled(trash);
        if (hasEvent)
        {
            frameEvent = stream->CreateFrameConsumerEvent(L"");
        }
        stream->Start(true, qlt::WAIT_FOREVER);
    }

    /// Returns true when this frame is the next one that the stream delivers.
    bool Delivers(std::uint32_t number)
    {
        frameEvent.Wait(qlt::WAIT_FOREVER);
        return std::memcmp(stream->GetCurrentFrame(), Frame(number).data(), FRAME) == 0;
    }

    void Stop()
    {
        host.WaitForIdle();
        host.Unplug();
        stream->Stop(true);
        EXPECT_EQ(stream->GetCurrentFrame(), nullptr);
        EXPECT_EQ(host.inFlight, 0);
        EXPECT_EQ(host.opened, host.closed);
        stream.reset();
        EXPECT_EQ(host.lastWaitMs, 1000U);
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
    }

    ScriptedUsbHost host{std::vector<ScriptedDevice>(1)};
    std::unique_ptr<VRUsbStreamAsync> stream;
    VREvent frameEvent;
    std::string out;
    std::string err;
};

using VRUsbStreamAsyncDeathTest = VRUsbStreamAsyncTest;

} // namespace

TEST(FrameHeaderTest, AHeaderIsFoundWhereItsWordsAddUpToZero)
{
    const Bytes frame = Frame(7);
    Bytes badSum = frame;
    badSum[4] ^= 1;
    Bytes badThenGood = CutFrame(4096);
    std::copy_n(badSum.begin(), 24, badThenGood.begin() + 1024);
    using Beginning = qlt::HeaderSearch::Beginning;
    const std::tuple<Bytes, std::uint32_t, qlt::HeaderSearch> rows[] = {
        {frame, FRAME, {Beginning::Header, 0, true, 0}},
        {frame, 3, {Beginning::Header, 0, false, 0}},
        {frame, 4, {Beginning::Header, 0, true, 0}},
        {CutFrame(4096), FRAME, {Beginning::NoSignature, 0, true, 4096}},
        {CutFrame(4), FRAME, {Beginning::NoSignature, 0, true, 4}},
        {CutFrame(FRAME - 4), FRAME, {Beginning::NoSignature, 0, true, FRAME - 4}},
        {CutFrame(FRAME - 4), FRAME - 4, {Beginning::NoSignature, 0, false, 0}},
        // The header does not begin at a whole word.
        {CutFrame(4098), FRAME, {Beginning::NoSignature, 0, false, 0}},
        {Bytes(24, 0x5A), 3, {Beginning::NoSignature, 0, false, 0}},
        {badSum, FRAME, {Beginning::WrongSum, 1, false, 0}},
        {badThenGood, FRAME, {Beginning::NoSignature, 1, true, 4096}},
    };
    for (const auto& [bytes, length, expected] : rows)
    {
        // The last words of a header may lie past the length.
        std::vector<std::uint32_t> words(bytes.size() / 4 + 6);
        std::memcpy(words.data(), bytes.data(), bytes.size());
        if (expected.offset > FRAME - 24)
        {
            std::memcpy(&words[expected.offset / 4], Frame(1).data(), 24);
        }
        const qlt::HeaderSearch search = qlt::FindHeader(words.data(), length);
        EXPECT_EQ(
            std::tie(search.beginning, search.wrongSums, search.found, search.offset),
            std::tie(expected.beginning, expected.wrongSums, expected.found, expected.offset));
    }
}

// The rows cover every result: a signature with a wrong sum at the beginning and again in the scan,
// a frame without a header, and a header after a wrong sum.
TEST_F(VRUsbStreamAsyncTest, PrintsTheSearchesForTheFirstHeader)
{
    Bytes badSum = Frame(1);
    badSum[4] ^= 1;
    host.Queue({{badSum}, {Frame(2)}});
    Start(true);
    EXPECT_TRUE(Delivers(2));
    Stop();
    EXPECT_EQ(err.substr(0, err.find("error wait")),
              "error head checksum is not valid\nerror head checksum is not valid\n"
              "error could not find new header\n");
}

TEST_F(VRUsbStreamAsyncTest, DropsTheBytesBeforeTheFirstHeader)
{
    host.Queue({{CutFrame(4096)}, {Bytes(4096)}, {Frame(2)}, {Frame(3)}});
    Start(true);
    EXPECT_TRUE(Delivers(3));
    host.Queue({{Bytes(16)}});
    Stop();
    EXPECT_EQ(out, "validating 8192\ntrashing 4096\nvalidating 8192\n");
    EXPECT_EQ(host.transferSizes, (std::vector<std::uint32_t>{FRAME, 4096, FRAME, FRAME}));
    // Numbers are hexadecimal after the first header that was found.
    EXPECT_EQ(err.substr(0, err.find("error wait")),
              "error head_sig is not valid\nfound header offset (0xdeadbeef) at 0x1000\n"
              "error incomplete transfer of size 10 expected 2000\n");
}

TEST_F(VRUsbStreamAsyncTest, SynchronisesForEverySequenceOfTheDevice)
{
    host.Queue({{CutFrame(100)},
                {Bytes(100), false, true}, // late
                {CutFrame(512)},
                {{}, true, false}, // failed
                {{}},              // no bytes arrived, and the buffer still holds the header at 512
                {Bytes(512)},
                {Frame(1)}});
    Start(true);
    Stop();
    EXPECT_EQ(out, "validating 8192\ntrashing 100\nwarning trash len not a multiple of 512\n"
                   "validating 8192\ntrashing 512\nvalidating 8192\ntrashing 512\n"
                   "validating 8192\n");
    for (const char* line : {"wait timeout", "while async transfer", "incomplete"})
    {
        EXPECT_EQ(Occurrences(err, line + std::string(" trash_buffer")), 1) << line;
    }
    EXPECT_EQ(Occurrences(err, " trash_buffer transfer of size 0 expected 2000\n"), 1);
}

TEST_F(VRUsbStreamAsyncTest, DeliversWholeFramesOnlyAndGoesOn)
{
    Start(false);
    host.Queue({{Frame(1)}});
    EXPECT_TRUE(Delivers(1));
    const std::uint8_t* first = stream->GetCurrentFrame();
    host.Queue({{Bytes(8191)}, {{}, true, false}, {{}, false, false}});
    host.WaitForIdle();
    EXPECT_EQ(qlt::WaitNativeEvent(frameEvent.Handle(), 0), qlt::WAIT_TIMED_OUT);
    EXPECT_EQ(stream->GetCurrentFrame(), first);
    EXPECT_EQ(host.inFlight, 10);
    for (std::uint32_t number = 2; number < 50; ++number)
    {
        host.Queue({{Frame(number)}});
        ASSERT_TRUE(Delivers(number)) << number;
    }
    Stop();
    EXPECT_EQ(out, "");
    EXPECT_EQ(err.find("error incomplete transfer of size 8191 expected 8192\n"
                       "error while async transfer\n"
                       "error wait timeout\nerror while async transfer\n"),
              0u);
    EXPECT_EQ(host.aborts - Occurrences(err, "error wait timeout\n"), 10); // the event of the drain
}

// The wait for a stop paces the stream. The best of several attempts counts on a busy machine.
TEST_F(VRUsbStreamAsyncTest, TakesAFrameEveryTenMilliseconds)
{
    using std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;
    constexpr int FRAMES = 20;
    Start(false);
    double best = 1.0;
    for (int attempt = 0; attempt < 10 && best > 0.25; ++attempt)
    {
        const auto start = steady_clock::now();
        host.Queue(std::vector<ScriptedUsbHost::Read>(FRAMES, {Frame(1)}));
        host.WaitForIdle();
        best = std::min(best, Seconds(steady_clock::now() - start).count());
    }
    EXPECT_GT(best, 0.009 * FRAMES);
    EXPECT_LT(best, 0.019 * FRAMES);
    Stop();
}

TEST_F(VRUsbStreamAsyncTest, CountsAMinuteOfFramesOverAnHourThatChanges)
{
    gHourMs = 3599900;
    Start(false);
    const Printout printout(host);
    host.Queue(std::vector<ScriptedUsbHost::Read>(59, {Frame(1)}));
    host.WaitForIdle();
    gHourMs = 50;
    host.Queue({{Frame(1)}});
    Stop();
    const std::string text = printout.str();
    EXPECT_EQ(text.substr(0, text.find('\n')),
              "Time: 4291367446, Count: 60, Bytes: 491520, Mb/s: 1.14537e-07");
    EXPECT_EQ(printout.inFlight, 10) << "A slow printer must not delay the device.";
}

// When another kind of object has the name of the event, there is no event.
TEST_F(VRUsbStreamAsyncTest, GoesOnWithoutAnEventToSignal)
{
    Start(false, nullptr, false);
    for (std::uint32_t number = 1; number < 12; ++number)
    {
        host.Queue({{Frame(number)}});
        host.WaitForIdle();
        EXPECT_EQ(std::memcmp(stream->GetCurrentFrame(), Frame(number).data(), FRAME), 0);
    }
    Stop();
}

TEST_F(VRUsbStreamAsyncTest, WaitsForItsReadsInItsDestructorEvenAfterAStopThatDidNotWait)
{
    Start(false);
    host.WaitForIdle();
    stream->Stop(false);
    int openAfterAWhile = 0;
    std::thread device(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            openAfterAWhile = host.opened - host.closed;
            host.Unplug();
        });
    stream.reset();
    device.join();
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(openAfterAWhile, 1) << "The destructor must wait for the last read.";
    EXPECT_EQ(host.inFlight, 0);
    EXPECT_EQ(host.opened, host.closed);
}

// Ten events of the reads and one of the search stay open. A stop opens no more.
TEST_F(VRUsbStreamAsyncTest, LeavesTheEventsOfItsReadsOpenAndNothingElse)
{
    const auto run = []
    {
        ScriptedUsbHost device{std::vector<ScriptedDevice>(1)};
        VRUsbStreamAsync once(0x04B4, 0x00F1, 0x82, FRAME, device);
        once.Init();
        once.SetTrashEnabled(true);
        once.CreateFrameConsumerEvent(L"");
        device.Queue({{Frame(1)}});
        once.Start(true, qlt::WAIT_FOREVER);
        device.Unplug();
        once.Stop(true);
    };
    const std::size_t before = CountOpenHandles();
    for (int i = 0; i < 20; ++i)
    {
        run();
    }
    const std::size_t left = CountOpenHandles() - before;
    EXPECT_GE(left, 20u * 11);
    EXPECT_LE(left, 20 * 11 + RUNTIME_HANDLES);
}

// The stream compares the vendor of the first device, and then only products.
TEST_F(VRUsbStreamAsyncDeathTest, WithoutItsDeviceTheProcessEnds)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    using Device = ScriptedDevice;
    const std::pair<std::vector<Device>, bool> rows[] = {
        {{}, false},
        {{Device{}}, true},
        {{Device{0x1234, 0x00F1}, Device{}}, false},
        {{Device{0x04B4, 0x0001}, Device{0x9999, 0x00F1}}, true},
        {{Device{0x04B4, 0x0001}}, false},
        {{Device{0x04B4, 0x00F1, {0}}}, false},
        {{Device{0x04B4, 0x00F1, {0, 3, 2}, {0, 0x81, 0x02}}}, false},
    };
    for (const auto& row : rows)
    {
        const auto run = [&]
        {
            ScriptedUsbHost other(row.first);
            Start(false, &other);
            std::_Exit(77);
        };
        const auto isAsExpected = [&row](int status)
        { return testing::ExitedWithCode(77)(status) == row.second; };
        EXPECT_EXIT(run(), isAsExpected, "");
    }
}
