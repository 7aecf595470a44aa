// Brings the driver of the virtual headset into a Wine prefix; it lies beside the program.
#pragma once

/// A handle of the driver, which is installed and started before, if need be, and has both of its
/// devices. Throws std::system_error when the system refuses.
void* OpenVirtualHeadsetDriver();
