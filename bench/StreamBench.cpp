// These benchmarks measure three ratios. HeaderSearch compares the search for a header in a frame
// without one to a plain loop over the words of the frame (at most 0.5). ZeroFrame compares zeroing
// a frame to memset (at most 1.15).
// ReportToListener compares the round trip of a report, from a blocking source to a listener and
// back, to the same round trip through a bare thread (at most 1.25).
#include "Cores.h"
#include "Paired.h"

#include <qlt/Sensors/Hmd.h>

#include "Runtime/FrameHeader.h"

#include <condition_variable>
#include <cstring>
#include <iostream>
#include <mutex>
#include <optional>
#include <thread>

namespace
{

constexpr std::size_t WORDS = 0x388000 / 4;

std::size_t PlainSearch(const std::uint32_t* words)
{
    for (std::size_t i = 0; i < WORDS; ++i)
    {
        if (words[i] == qlt::FRAME_SIGNATURE)
        {
            return i;
        }
    }
    return WORDS;
}

void HeaderSearch(benchmark::State& state)
{
    std::vector<std::uint32_t> frame(WORDS + 6);
    for (std::size_t i = 0; i < WORDS; ++i)
    {
        frame[i] =
            // A signature has this bit clear, so no word is a signature.
            static_cast<std::uint32_t>(i) * 2654435761U | 1U << 4;
    }
    const auto ours = [&]
    {
        for (int i = 0; i < 4; ++i)
        {
            benchmark::DoNotOptimize(qlt::FindHeader(frame.data(), WORDS * 4));
        }
    };
    const auto theirs = [&]
    {
        for (int i = 0; i < 4; ++i)
        {
            benchmark::DoNotOptimize(PlainSearch(frame.data()));
        }
    };
    std::streambuf* const messages = std::cerr.rdbuf(nullptr);
    RunPaired(
        state, 4, [&] { return Seconds(ours); }, [&] { return Seconds(theirs); });
    std::cerr.rdbuf(messages);
    std::cerr.clear();
}
BENCHMARK(HeaderSearch)->UseManualTime()->Iterations(101);

void ZeroFrame(benchmark::State& state)
{
    std::vector<std::uint32_t> frame(WORDS);
    const auto ours = [&]
    {
        std::fill(frame.begin(), frame.end(), 0U); // the stream does the same
        benchmark::ClobberMemory();
    };
    const auto theirs = [&]
    {
        std::memset(frame.data(), 0, WORDS * 4);
        benchmark::ClobberMemory();
    };
    RunPaired(
        state, 1, [&] { return Seconds(ours); }, [&] { return Seconds(theirs); });
}
BENCHMARK(ZeroFrame)->UseManualTime()->Iterations(401);

/// Passes a report from one thread to another.
class HandOff
{
public:
    void Put(bool isLast = false)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mFull = true;
        mLast = isLast;
        mChanged.notify_one();
    }

    /// Waits for a report. Returns false for the last one.
    bool Take()
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this] { return mFull; });
        mFull = mLast; // the last one stays
        return !mLast;
    }

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mFull = false;
    bool mLast = false;
};

/// A headset whose reads block until there is a report.
class BlockingHeadset final : public qlt::UsbHost
{
public:
    explicit BlockingHeadset(HandOff& source)
        : mSource(source)
    {
    }

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override
    {
        return std::make_unique<Device>(mSource);
    }

private:
    class Device final : public qlt::VendorUsbDevice, public qlt::UsbEndPoint
    {
    public:
        explicit Device(HandOff& source)
            : mSource(source)
        {
        }

        std::uint16_t VendorId() const override { return 0x04B4; }
        std::uint16_t ProductId() const override { return 0x00F1; }
        std::uint8_t EndPointCount() const override { return 2; }
        qlt::UsbEndPoint& EndPoint(std::uint8_t) override { return *this; }
        std::uint8_t Attributes() const override { return 3; }

        bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
        {
            length = mSource.Take() ? length : 0;
            std::memset(buffer, 1, length);
            return length != 0;
        }

    private:
        HandOff& mSource;
    };

    HandOff& mSource;
};

class Answering final : public qlt::TrackerListener
{
public:
    explicit Answering(HandOff& answer)
        : mAnswer(answer)
    {
    }

    void OnOrientationEvent(const qlt::Quaternion&, float) override { mAnswer.Put(); }

private:
    HandOff& mAnswer;
};

void ReportToListener(benchmark::State& state)
{
    constexpr int ROUNDS = 50;
    HandOff question;
    HandOff answer;
    HandOff bareQuestion;
    HandOff bareAnswer;
    BlockingHeadset headset(question);
    Answering listener(answer);
    StayOnCore(1);
    std::optional<qlt::Hmd> hmd(std::in_place, headset);
    hmd->AddListener(listener);
    hmd->Start();
    std::thread bare(
        [&]
        {
            while (bareQuestion.Take())
            {
                bareAnswer.Put();
            }
        });
    StayOnCore(0);
    const auto ask = [](HandOff& to, HandOff& from)
    {
        return Seconds(
            [&]
            {
                for (int i = 0; i < ROUNDS; ++i)
                {
                    to.Put();
                    from.Take();
                }
            });
    };
    RunPaired(
        state, ROUNDS, [&] { return ask(question, answer); },
        [&] { return ask(bareQuestion, bareAnswer); });
    bareQuestion.Put(true);
    bare.join();
    question.Put(true);
    hmd->Stop();
    hmd->RemoveListener(listener);
}
BENCHMARK(ReportToListener)->UseManualTime()->Iterations(401);

} // namespace
