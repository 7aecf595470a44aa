// Whether the headset is there, by what its tracker and its camera will look for.
#pragma once

#include <qlt/Runtime/Usb.h>

#include <string>

enum class HeadsetPart
{
    Sensors,
    Camera,
};

/// A sentence that says why that part will not be found; empty when a device with the headset's
/// identifiers has its endpoint.
std::string WhyNoHeadset(qlt::UsbHost& host, HeadsetPart part);

/// std::runtime_error with that sentence, about the machine's own USB, unless the part is there.
void RequireHeadset(HeadsetPart part);

/// Says on standard error that a command waits for the sensors, unless they are there.
void SayThatHeadsetIsAwaited();

/// What this much memory for transfers, in MB, means to the camera; 0 is without a limit.
std::string DescribeUsbMemory(long megabytes);
