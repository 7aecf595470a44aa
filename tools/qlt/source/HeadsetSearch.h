// Searches for the headset as its tracker and its camera do.
#pragma once

#include <qlt/Runtime/Usb.h>

#include <string>

enum class HeadsetPart
{
    Sensors,
    Camera,
};

/// Returns a sentence that says why that part will not be found. Empty when a device with the
/// headset's identifiers has the endpoint of that part.
std::string WhyNoHeadset(qlt::UsbHost& host, HeadsetPart part);

/// Throws std::runtime_error with that sentence when the part is missing on the machine's own USB.
void RequireHeadset(HeadsetPart part);

/// Prints on standard error that a command waits for the sensors, unless they are connected.
void SayThatHeadsetIsAwaited();

/// Describes how a limit of `megabytes` MB on the memory for transfers affects the camera. 0 means
/// no limit.
std::string DescribeUsbMemory(long megabytes);
