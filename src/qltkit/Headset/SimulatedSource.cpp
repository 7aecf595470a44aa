#include "Headset/SimulatedSource.h"

#include <algorithm>

namespace qltkit
{
namespace
{

constexpr std::chrono::milliseconds REPORT_PERIOD(1);

/// When a reader is later than this, the headset pauses until the reader comes. So the reader finds
/// no backlog of reports.
constexpr std::chrono::milliseconds MAX_LATE(100);

class EndPointOf final : public qlt::UsbEndPoint
{
public:
    explicit EndPointOf(SimulatedSource& source)
        : mSource(source)
    {
    }

    std::uint8_t Attributes() const override { return 3; }

    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        return mSource.ReadReport(buffer, length);
    }

private:
    SimulatedSource& mSource;
};

class DeviceOf final : public qlt::VendorUsbDevice
{
public:
    explicit DeviceOf(SimulatedSource& source)
        : mEndPoint(source)
    {
    }

    std::uint16_t VendorId() const override { return 0x04B4; }
    std::uint16_t ProductId() const override { return 0x00F1; }
    std::uint8_t EndPointCount() const override { return 2; }
    qlt::UsbEndPoint& EndPoint(std::uint8_t) override { return mEndPoint; }

private:
    EndPointOf mEndPoint;
};

} // namespace

std::unique_ptr<qlt::VendorUsbDevice> SimulatedSource::OpenFirst()
{
    return mSleeper.IsAwake() ? nullptr : std::make_unique<DeviceOf>(*this);
}

bool SimulatedSource::ReadReport(std::uint8_t* buffer, std::uint32_t& length)
{
    const auto now = std::chrono::steady_clock::now();
    mDue += REPORT_PERIOD;
    if (now > mDue + MAX_LATE)
    {
        mDue = now;
    }
    mSleeper.SleepUntil(mDue);
    if (mSleeper.IsAwake() || length < sizeof(SoftwareHeadset::Report))
    {
        length = 0;
        return false;
    }
    const SoftwareHeadset::Sample sample = mHeadset.Next();
    std::copy(sample.report.begin(), sample.report.end(), buffer);
    length = sizeof(SoftwareHeadset::Report);
    return true;
}

} // namespace qltkit
