#include "source/ReportRecorder.h"

#include <deque>

namespace
{

constexpr std::uint32_t REPORT_SIZE = 64;

} // namespace

class ReportRecorder::EndPoint final : public qlt::UsbEndPoint
{
public:
    EndPoint(ReportRecorder& recorder, qlt::UsbEndPoint& endPoint)
        : mRecorder(recorder)
        , mEndPoint(endPoint)
    {
    }

    std::uint8_t Attributes() const override { return mEndPoint.Attributes(); }
    std::uint8_t Address() const override { return mEndPoint.Address(); }

    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        const bool succeeds = mEndPoint.TransferData(buffer, length);
        mRecorder.Write(buffer, length);
        return succeeds;
    }

private:
    ReportRecorder& mRecorder;
    qlt::UsbEndPoint& mEndPoint;
};

class ReportRecorder::Device final : public qlt::VendorUsbDevice
{
public:
    Device(ReportRecorder& recorder, std::unique_ptr<qlt::VendorUsbDevice> device)
        : mDevice(std::move(device))
    {
        for (std::uint8_t i = 1; i < mDevice->EndPointCount(); ++i)
        {
            mEndPoints.emplace_back(recorder, mDevice->EndPoint(i));
        }
    }

    std::uint16_t VendorId() const override { return mDevice->VendorId(); }
    std::uint16_t ProductId() const override { return mDevice->ProductId(); }
    std::uint8_t EndPointCount() const override { return mDevice->EndPointCount(); }
    qlt::UsbEndPoint& EndPoint(std::uint8_t index) override { return mEndPoints[index - 1U]; }

private:
    std::unique_ptr<qlt::VendorUsbDevice> mDevice;
    std::deque<ReportRecorder::EndPoint> mEndPoints;
};

ReportRecorder::ReportRecorder(qlt::UsbHost& host, const std::string& path)
    : mHost(host)
    , mFile(path)
{
}

std::unique_ptr<qlt::VendorUsbDevice> ReportRecorder::OpenFirst()
{
    std::unique_ptr<qlt::VendorUsbDevice> device = mHost.OpenFirst();
    return device == nullptr ? nullptr : std::make_unique<Device>(*this, std::move(device));
}

void ReportRecorder::Write(const std::uint8_t* report, std::uint32_t length)
{
    if (length != REPORT_SIZE || mFailed) // what the tracker does not take is no report
    {
        return;
    }
    mFile.Write(std::string(report, report + length));
    mFailed = !mFile.Flush(); // so that a recorder that is killed loses no more than one
    mReports += mFailed ? 0 : 1;
}

void ReportRecorder::Close() { mFile.Close(); }
