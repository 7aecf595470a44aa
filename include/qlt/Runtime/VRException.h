#pragma once

#include <qlt/Export.h>
#include <qlt/Runtime/VRStatus.h>

#include <exception>
#include <string>

/// A failure of the operating system, the USB layer or the host service, with its status code and
/// its text. The library throws exceptions by value. A handler for VRException or for
/// std::exception catches every kind.
///
///     try
///     {
///         pose = tracker.GetObjectPosition(1);
///     }
///     catch (const VRException& failure)
///     {
///         std::fprintf(stderr, "%s (%d)\n", failure.what(), failure.status);
///     }
///
/// An exception is a plain value. Different threads may use different exceptions.
class QLT_API VRException : public std::exception
{
public:
    /// Takes the text of the code, for example "Error VR_STATUS_ERROR_EVENT (23)". A code outside
    /// the list keeps its value and gets the text "Error VR_STATUS (n)".
    explicit VRException(VR_STATUS code);

    /// Makes `text` narrow and drops its last character. deliberate: the shortened texts are part
    /// of the interface. At most 1023 characters remain. The text ends before the first zero and
    /// before the first character above 255. An empty `text` ends the process.
    VRException(VR_STATUS code, const std::wstring& text);

    VRException(const VRException&) = default;
    VRException& operator=(const VRException&) = default;
    ~VRException() override;

    /// The characters of `message`. They are valid until this exception is changed or destroyed.
    const char* what() const noexcept override;

    /// The status code. Compare it to the values of VR_STATUS.
    VR_STATUS status;

    /// The text of the failure.
    std::string message;
};

/// A wait has timed out or failed.
class QLT_API VRExceptionTimeout : public VRException
{
public:
    using VRException::VRException;
    VRExceptionTimeout(const VRExceptionTimeout&) = default;
    VRExceptionTimeout& operator=(const VRExceptionTimeout&) = default;
    ~VRExceptionTimeout() override;
};

/// An event could not be created or signalled.
class QLT_API VRExceptionEvent : public VRException
{
public:
    using VRException::VRException;
    VRExceptionEvent(const VRExceptionEvent&) = default;
    VRExceptionEvent& operator=(const VRExceptionEvent&) = default;
    ~VRExceptionEvent() override;
};

/// A wait for several events at once has failed.
class QLT_API VRExceptionSoftware : public VRException
{
public:
    using VRException::VRException;
    VRExceptionSoftware(const VRExceptionSoftware&) = default;
    VRExceptionSoftware& operator=(const VRExceptionSoftware&) = default;
    ~VRExceptionSoftware() override;
};
