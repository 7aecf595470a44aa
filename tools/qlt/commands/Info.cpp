#include "commands/Commands.h"

#include <qlt/qlt.h>

#include "source/HeadsetSearch.h"
#include "source/UsbMemory.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>

namespace
{

void PrintVector(const char* name, const qlt::Vec3& v)
{
    std::printf("  %-32s %.9g %.9g %.9g\n", name, static_cast<double>(v.x()),
                static_cast<double>(v.y()), static_cast<double>(v.z()));
}

void PrintNumber(const char* name, float value)
{
    std::printf("  %-32s %.9g\n", name, static_cast<double>(value));
}

void PrintConstants()
{
    using qlt::Params;
    std::printf("  %-32s %d x %d\n", "HMD_RESOLUTION", Params::HMD_RESOLUTION_X,
                Params::HMD_RESOLUTION_Y);
    PrintNumber("HMD_SCREEN_SIZE_HORZ", Params::HMD_SCREEN_SIZE_HORZ);
    PrintNumber("HMD_ASPECT_RATIO", Params::HMD_ASPECT_RATIO);
    PrintNumber("EYE_FOV_DEG", Params::EYE_FOV_DEG);
    PrintNumber("EYE_FOV_Y_DEG", Params::EYE_FOV_Y_DEG);
    PrintNumber("EYE_ASPECT_RATIO", Params::EYE_ASPECT_RATIO);
    std::printf("  %-32s %s\n", "EYE_DISTORT", Params::EYE_DISTORT ? "true" : "false");
    PrintNumber("EYE_STRETCH", Params::EYE_STRETCH);
    std::printf("  %-32s %d\n", "EYE_RESOLUTION", Params::EYE_RESOLUTION);
    PrintNumber("USER_IPD_M", Params::USER_IPD_M);
    PrintNumber("USER_NECK_EYE_V_M", Params::USER_NECK_EYE_V_M);
    PrintNumber("USER_NECK_EYE_H_M", Params::USER_NECK_EYE_H_M);
    PrintVector("GYROSCOPE_POSITION_OFFSET", Params::GYROSCOPE_POSITION_OFFSET);
    PrintVector("GYROSCOPE_MAGNITUDE_OFFSET", Params::GYROSCOPE_MAGNITUDE_OFFSET);
    PrintVector("ACCELEROMETER_POSITION_OFFSET", Params::ACCELEROMETER_POSITION_OFFSET);
    PrintVector("ACCELEROMETER_MAGNITUDE_OFFSET", Params::ACCELEROMETER_MAGNITUDE_OFFSET);
    PrintVector("MAGNETOMETER_POSITION_OFFSET", Params::MAGNETOMETER_POSITION_OFFSET);
    PrintVector("MAGNETOMETER_MAGNITUDE_OFFSET", Params::MAGNETOMETER_MAGNITUDE_OFFSET);
}

void PrintUsb(qlt::UsbHost& host)
{
    if (!host.Name().empty())
    {
        std::printf("USB access: %s\n", host.Name().c_str());
    }
    if (const std::optional<long> memory = UsbMemoryMb())
    {
        std::printf("USB memory: %s\n", DescribeUsbMemory(*memory).c_str());
    }
    const std::string reason = WhyNoHeadset(host, HeadsetPart::Sensors);
    std::printf("%s\n", reason.empty() ? "connected: USB device 04B4:00F1" : reason.c_str());
}

int Run()
{
    std::printf("QueltaSDK %s\n%s\n", QLT_VERSION, qlt::Params::HMD_NAME);
    PrintConstants();
    PrintUsb(qlt::UsbHost::System());
    return 0;
}

} // namespace

CommandBody AddInfo(CommandLine line)
{
    line.Describe("Show the version, the device's constants and what is connected");
    return Run;
}
