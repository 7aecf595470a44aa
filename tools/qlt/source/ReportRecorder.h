// A USB host that hands on another one's devices and writes down every whole report that is read
// from them, as it comes.
#pragma once

#include <qlt/Runtime/Usb.h>

#include "output/OutputFile.h"

#include <atomic>
#include <cstddef>

class ReportRecorder final : public qlt::UsbHost
{
public:
    /// std::runtime_error when the file cannot be created.
    ReportRecorder(qlt::UsbHost& host, const std::string& path);

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;

    std::size_t Reports() const { return mReports; }

    /// Whether something could not be written, on a full disk for one.
    bool Failed() const { return mFailed; }

    /// std::runtime_error when something could not be written.
    void Close();

private:
    class Device;
    class EndPoint;

    void Write(const std::uint8_t* report, std::uint32_t length);

    qlt::UsbHost& mHost;
    OutputFile mFile;
    std::atomic<std::size_t> mReports{0};
    std::atomic<bool> mFailed{false};
};
