// What the library throws when the operating system, the USB layer or the host service fails.
// Thrown by value; a handler for VRException or for std::exception catches every kind.
#pragma once

#include <qlt/Export.h>
#include <qlt/Runtime/VRStatus.h>

#include <exception>
#include <string>

/// A failure with its status code and its text.
class QLT_API VRException : public std::exception
{
public:
    /// The text is the one of the code, "Error VR_STATUS_ERROR_EVENT (23)". A code that is not in
    /// the list keeps its value and gets "Error VR_STATUS (n)".
    explicit VRException(VR_STATUS code);

    /// The text is `text` made narrow and always without its last character (deliberate: the
    /// shortened texts are part of the interface). At most 1023 characters survive; the text ends
    /// at the first zero or the first character above 255. An empty `text` ends the process.
    VRException(VR_STATUS code, const std::wstring& text);

    VRException(const VRException&) = default;
    VRException& operator=(const VRException&) = default;
    ~VRException() override;

    /// The characters of `message`; valid until this exception is changed or destroyed.
    const char* what() const noexcept override;

    VR_STATUS status;
    std::string message;
};

/// A wait that ran out of time or failed.
class QLT_API VRExceptionTimeout : public VRException
{
public:
    using VRException::VRException;
    VRExceptionTimeout(const VRExceptionTimeout&) = default;
    VRExceptionTimeout& operator=(const VRExceptionTimeout&) = default;
    ~VRExceptionTimeout() override;
};

/// An event that could not be created or signalled.
class QLT_API VRExceptionEvent : public VRException
{
public:
    using VRException::VRException;
    VRExceptionEvent(const VRExceptionEvent&) = default;
    VRExceptionEvent& operator=(const VRExceptionEvent&) = default;
    ~VRExceptionEvent() override;
};

/// A failure of the library's own conversation with the system.
class QLT_API VRExceptionSoftware : public VRException
{
public:
    using VRException::VRException;
    VRExceptionSoftware(const VRExceptionSoftware&) = default;
    VRExceptionSoftware& operator=(const VRExceptionSoftware&) = default;
    ~VRExceptionSoftware() override;
};
