// The camera's stream, and the search for the header that begins its frames.
#include "Runtime/VRUsbStreamAsync.h"

#include "Runtime/FrameHeader.h"

#include "fakes/OpenHandles.h"
#include "fakes/ScriptedStream.h"

#include <gtest/gtest.h>

#include <iostream>
#include <regex>

namespace
{

using Bytes = ScriptedStream::Bytes;
using Read = ScriptedStream::Read;

constexpr std::uint32_t FRAME = 8192;

/// `bytes` of anything but a header.
Bytes Noise(std::size_t bytes) { return Bytes(bytes, 0x5A); }

/// The end of a frame and the beginning of the next: a header at `offset`.
Bytes CutFrame(std::uint32_t offset)
{
    Bytes bytes = Noise(offset);
    const Bytes frame = ScriptedStream::Frame(FRAME, 1);
    bytes.insert(bytes.end(), frame.begin(), frame.end() - offset);
    return bytes;
}

int Occurrences(const std::string& text, const std::string& part)
{
    const std::regex pattern(part);
    return static_cast<int>(
        std::distance(std::sregex_iterator(text.begin(), text.end(), pattern), {}));
}

std::uint32_t gHourMs = 0;

std::uint32_t HourClock() { return gHourMs; }

class VRUsbStreamAsyncTest : public testing::Test
{
protected:
    VRUsbStreamAsyncTest()
    {
        std::cerr << std::dec; // which the stream may have left otherwise
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }

    void Start(bool trash)
    {
        stream = std::make_unique<VRUsbStreamAsync>(0x04B4, 0x00F1, 0x82, FRAME, host, HourClock);
        stream->Init();
        stream->SetTrashEnabled(trash);
        frameEvent = stream->CreateFrameConsumerEvent(L"");
        stream->Start(true, qlt::WAIT_FOREVER);
    }

    void Stop()
    {
        host.WaitForIdle();
        host.End();
        stream->Stop(true);
        EXPECT_EQ(stream->GetCurrentFrame(), nullptr);
        stream.reset();
        EXPECT_EQ(host.InFlight(), 0);
        EXPECT_EQ(host.OpenDevices(), 0);
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
    }

    ScriptedStream host;
    std::unique_ptr<VRUsbStreamAsync> stream;
    VREvent frameEvent;
    std::string out;
    std::string err;
};

} // namespace

TEST(FrameHeaderTest, IsFoundWhereItsSumVanishes)
{
    const Bytes frame = ScriptedStream::Frame(FRAME, 7);
    Bytes badSum = frame;
    badSum[4] ^= 1;
    Bytes badThenGood = CutFrame(4096);
    std::memcpy(&badThenGood[1024], badSum.data(), 24);
    const std::string none = "error could not find new header\n";
    const std::string signature = "error head_sig is not valid\n";
    const std::string checksum = "error head checksum is not valid\n";
    const std::string found = "found header offset (0xdeadbeef) at 0x";
    const struct
    {
        Bytes bytes;
        std::uint32_t length;
        std::uint32_t offset;
        std::string text;
    } rows[] = {
        {frame, FRAME, 0, ""},
        {frame, 3, 0, none},
        {frame, 4, 0, ""},
        {CutFrame(4096), FRAME, 4096, signature + found + "1000\n"},
        {CutFrame(4), FRAME, 4, signature + found + "4\n"},
        {CutFrame(FRAME - 4), FRAME, FRAME - 4, signature + found + "1ffc\n"},
        {CutFrame(FRAME - 4), FRAME - 4, 0, signature + none},
        {CutFrame(4098), FRAME, 0, signature + none}, // not on a word
        {Noise(FRAME), FRAME, 0, signature + none},
        {Noise(24), 3, 0, signature + none},
        {badSum, FRAME, 0, checksum + checksum + none},
        {badThenGood, FRAME, 4096, signature + checksum + found + "1000\n"},
    };
    for (const auto& row : rows)
    {
        // The last words of a cut header lie behind the length.
        std::vector<std::uint32_t> words(row.bytes.size() / 4 + 6);
        std::memcpy(words.data(), row.bytes.data(), row.bytes.size());
        if (row.offset > FRAME - 24)
        {
            const Bytes header = ScriptedStream::Frame(FRAME, 1);
            std::memcpy(&words[row.offset / 4], header.data(), 24);
        }
        std::cerr << std::dec;
        testing::internal::CaptureStderr();
        EXPECT_EQ(qlt::FindHeader(words.data(), row.length), row.offset);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.text);
    }
}

TEST_F(VRUsbStreamAsyncTest, DropsWhatComesBeforeTheFirstHeader)
{
    host.Queue({CutFrame(4096)});
    host.Queue({Noise(4096)});
    host.Queue({ScriptedStream::Frame(FRAME, 2)});
    host.Queue({ScriptedStream::Frame(FRAME, 3)});
    Start(true);
    frameEvent.Wait(qlt::WAIT_FOREVER);
    const Bytes expected = ScriptedStream::Frame(FRAME, 3); // the first that is delivered
    EXPECT_EQ(std::memcmp(stream->GetCurrentFrame(), expected.data(), FRAME), 0);
    host.Queue({Noise(16)});
    Stop();
    EXPECT_EQ(out, "validating 8192\ntrashing 4096\nvalidating 8192\n");
    EXPECT_EQ(host.TransferSizes(), (std::vector<std::uint32_t>{FRAME, 4096, FRAME, FRAME}));
    // Hexadecimal from the first header that was found on.
    EXPECT_EQ(err.substr(0, err.find("error wait")),
              "error head_sig is not valid\nfound header offset (0xdeadbeef) at 0x1000\n"
              "error incomplete transfer of size 10 expected 2000\n");
}

TEST_F(VRUsbStreamAsyncTest, SynchronisesOverWhateverTheDeviceDoes)
{
    host.Queue({CutFrame(100)});
    host.Queue({Noise(100), false, true}); // late
    host.Queue({CutFrame(512)});
    host.Queue({Noise(0), true, false}); // failed
    host.Queue({{}}); // nothing came, and the buffer still holds the header at 512
    host.Queue({Noise(512)});
    host.Queue({ScriptedStream::Frame(FRAME, 1)});
    Start(true);
    Stop();
    EXPECT_EQ(out, "validating 8192\ntrashing 100\nwarning trash len not a multiple of 512\n"
                   "validating 8192\ntrashing 512\nvalidating 8192\ntrashing 512\n"
                   "validating 8192\n");
    EXPECT_EQ(Occurrences(err, "error wait timeout trash_buffer\n"), 1);
    EXPECT_EQ(Occurrences(err, "error while async transfer trash_buffer\n"), 1);
    EXPECT_EQ(Occurrences(err, "error incomplete trash_buffer transfer of size 0 expected 2000\n"),
              1);
}

TEST_F(VRUsbStreamAsyncTest, DeliversWholeFramesOnlyAndGoesOn)
{
    Start(false);
    host.Queue({ScriptedStream::Frame(FRAME, 1)});
    frameEvent.Wait(qlt::WAIT_FOREVER);
    const std::uint8_t* first = stream->GetCurrentFrame();
    host.Queue({Noise(8191)});
    host.Queue({{}, true, false});
    host.Queue({{}, false, false});
    host.WaitForIdle();
    EXPECT_EQ(qlt::WaitNativeEvent(frameEvent.Handle(), 0), qlt::WAIT_TIMED_OUT);
    EXPECT_EQ(stream->GetCurrentFrame(), first);
    EXPECT_EQ(host.InFlight(), 10);
    for (std::uint32_t number = 2; number < 50; ++number)
    {
        host.Queue({ScriptedStream::Frame(FRAME, number)});
        frameEvent.Wait(qlt::WAIT_FOREVER);
        const Bytes expected = ScriptedStream::Frame(FRAME, number);
        ASSERT_EQ(std::memcmp(stream->GetCurrentFrame(), expected.data(), FRAME), 0) << number;
    }
    Stop();
    EXPECT_EQ(out, "");
    EXPECT_EQ(err.find("error incomplete transfer of size 8191 expected 8192\n"
                       "error while async transfer\n"
                       "error wait timeout\nerror while async transfer\n"),
              0u);
    EXPECT_EQ(host.Aborts() - Occurrences(err, "error wait timeout\n"), 10); // the drain's
}

TEST_F(VRUsbStreamAsyncTest, CountsAMinuteOfFramesOverAnHourThatChanges)
{
    gHourMs = 3599900;
    Start(false);
    for (std::uint32_t i = 0; i < 60; ++i)
    {
        if (i == 59)
        {
            host.WaitForIdle();
            gHourMs = 50;
        }
        host.Queue({ScriptedStream::Frame(FRAME, i)});
    }
    Stop();
    EXPECT_EQ(out.substr(0, out.find('\n')),
              "Time: 4291367446, Count: 60, Bytes: 491520, Mb/s: 1.14537e-07");
}

// Ten for the reads and one for the search; nothing else, and none after a stop.
TEST_F(VRUsbStreamAsyncTest, LeavesTheEventsOfItsReadsOpenAndNothingElse)
{
    for (const bool trash : {false, true})
    {
        const std::size_t before = CountOpenHandles();
        {
            ScriptedStream device;
            VRUsbStreamAsync once(0x04B4, 0x00F1, 0x82, FRAME, device);
            once.Init();
            once.SetTrashEnabled(trash);
            once.CreateFrameConsumerEvent(L"");
            device.Queue({ScriptedStream::Frame(FRAME, 1)});
            once.Start(true, qlt::WAIT_FOREVER);
            device.End();
            once.Stop(true);
        }
        EXPECT_EQ(CountOpenHandles() - before, trash ? 11u : 10u);
    }
    Start(false);
    Stop();
}

// The first device's vendor is compared, and then products only.
TEST(VRUsbStreamAsyncDeathTest, WithoutItsDeviceTheProcessEnds)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    using Device = ScriptedStream::Device;
    const struct
    {
        std::vector<Device> devices;
        bool found;
    } rows[] = {
        {{}, false},
        {{Device{}}, true},
        {{Device{0x1234, 0x00F1}, Device{}}, false},
        {{Device{0x04B4, 0x0001}, Device{0x9999, 0x00F1}}, true},
        {{Device{0x04B4, 0x0001}}, false},
        {{Device{0x04B4, 0x00F1, {}}}, false},
        {{Device{0x04B4, 0x00F1, {0x81, 0x02}}}, false},
    };
    for (const auto& row : rows)
    {
        const auto run = [&row]
        {
            ScriptedStream host(row.devices);
            VRUsbStreamAsync stream(0x04B4, 0x00F1, 0x82, FRAME, host);
            stream.Init();
            stream.CreateFrameConsumerEvent(L"");
            stream.Start(true, qlt::WAIT_FOREVER);
            std::_Exit(77);
        };
        EXPECT_EXIT(
            run(), [&row](int status) { return testing::ExitedWithCode(77)(status) == row.found; },
            "");
    }
}
