#include <qltkit/Headset/ReportTap.h>

#include <algorithm>
#include <vector>

namespace qltkit
{
namespace
{

constexpr std::uint8_t INTERRUPT_TRANSFER = 3;

class TappedEndPoint final : public qlt::UsbEndPoint
{
public:
    TappedEndPoint(qlt::UsbEndPoint& endPoint, qlt::Clock& clock, ReportSink& sink)
        : mEndPoint(endPoint)
        , mClock(clock)
        , mSink(sink)
    {
    }

    std::uint8_t Attributes() const override { return mEndPoint.Attributes(); }
    std::uint8_t Address() const override { return mEndPoint.Address(); }
    void SetTransferSize(std::uint32_t bytes) override { mEndPoint.SetTransferSize(bytes); }
    void AbortTransfers() override { mEndPoint.AbortTransfers(); }

    std::unique_ptr<qlt::UsbTransfer> BeginTransfer(std::uint8_t* buffer, std::uint32_t length,
                                                    void* event) override
    {
        return mEndPoint.BeginTransfer(buffer, length, event);
    }

    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        const bool succeeded = mEndPoint.TransferData(buffer, length);
        const std::int64_t nowNs = mClock.NowNs();
        if (length == qlt::SENSOR_REPORT_SIZE) // the tracker uses the same test
        {
            qlt::SensorReport report;
            std::copy_n(buffer, report.size(), report.begin());
            mSink.OnReport(report, nowNs);
        }
        else
        {
            mSink.OnLost(nowNs);
        }
        return succeeded;
    }

private:
    qlt::UsbEndPoint& mEndPoint;
    qlt::Clock& mClock;
    ReportSink& mSink;
};

class TappedDevice final : public qlt::VendorUsbDevice
{
public:
    TappedDevice(std::unique_ptr<qlt::VendorUsbDevice> device, qlt::Clock& clock, ReportSink& sink)
        : mDevice(std::move(device))
        , mTapped(mDevice->EndPointCount())
    {
        for (std::uint8_t i = 1; i < mDevice->EndPointCount(); ++i)
        {
            qlt::UsbEndPoint& endPoint = mDevice->EndPoint(i);
            if (endPoint.Attributes() == INTERRUPT_TRANSFER)
            {
                mTapped[i] = std::make_unique<TappedEndPoint>(endPoint, clock, sink);
            }
        }
    }

    std::uint16_t VendorId() const override { return mDevice->VendorId(); }
    std::uint16_t ProductId() const override { return mDevice->ProductId(); }
    std::uint8_t EndPointCount() const override { return mDevice->EndPointCount(); }

    qlt::UsbEndPoint& EndPoint(std::uint8_t index) override
    {
        const bool tapped = index < mTapped.size() && mTapped[index] != nullptr;
        return tapped ? *mTapped[index] : mDevice->EndPoint(index);
    }

private:
    std::unique_ptr<qlt::VendorUsbDevice> mDevice;
    std::vector<std::unique_ptr<TappedEndPoint>> mTapped; // null for endpoints that pass through
};

} // namespace

ReportSink::~ReportSink() = default;

std::unique_ptr<qlt::VendorUsbDevice> ReportTap::OpenFirst() { return Tapped(mHost.OpenFirst()); }

std::uint32_t ReportTap::CountDevices() { return mHost.CountDevices(); }

std::unique_ptr<qlt::VendorUsbDevice> ReportTap::Open(std::uint32_t index)
{
    return Tapped(mHost.Open(index));
}

std::string ReportTap::Name() const { return mHost.Name(); }

std::string ReportTap::Problem() const { return mHost.Problem(); }

std::unique_ptr<qlt::VendorUsbDevice>
ReportTap::Tapped(std::unique_ptr<qlt::VendorUsbDevice> device)
{
    return device == nullptr ? nullptr
                             : std::make_unique<TappedDevice>(std::move(device), mClock, mSink);
}

} // namespace qltkit
