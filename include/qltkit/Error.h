#pragma once

#include <qltkit/Export.h>

#include <stdexcept>

namespace qltkit
{

/// QueltaKit throws this error when a file, a device or the system fails, and when the caller asks
/// for something impossible.
///
/// The text is one clear sentence in UTF-8 without a full stop. It names the file and the position
/// in the file if there is one. So a program can show it to a user as it is:
///
///     try
///     {
///         qltkit::CaptureReader reader("walk.mcap");
///     }
///     catch (const qltkit::Error& error)
///     {
///         std::cerr << error.what() << '\n';
///     }
///
/// An error is a plain value. Different threads may use different errors.
class QLTKIT_API Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
    Error(const Error&) = default;
    Error& operator=(const Error&) = default;
    ~Error() override;
};

} // namespace qltkit
