#pragma once

#include <qltkit/Headset/SoftwareHeadset.h>
#include <qltkit/Headset/Source.h>

#include "Headset/Sleeper.h"

namespace qltkit
{

/// The software headset on its own USB port, in real time.
class SimulatedSource final : public Source
{
public:
    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;
    std::string Name() const override { return "simulator"; }
    std::int64_t NowNs() override { return qlt::Clock::System().NowNs(); }
    void SleepNs(std::int64_t durationNs) override { mSleeper.SleepNs(durationNs); }
    void Close() override { mSleeper.WakeAll(); }

    /// Waits until the next report is due and gives it. Returns false when the source is closed.
    /// The endpoint calls it.
    bool ReadReport(std::uint8_t* buffer, std::uint32_t& length);

private:
    Sleeper mSleeper;
    SoftwareHeadset mHeadset{1, false}; // only the reading thread uses this and mDue
    std::chrono::steady_clock::time_point mDue{};
};

} // namespace qltkit
