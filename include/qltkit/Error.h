#pragma once

#include <qltkit/Export.h>

#include <stdexcept>

namespace qltkit
{

/// QueltaKit throws this error when a file, a device or the system fails, and when the caller asks
/// for something impossible.
///
/// The text is one clear sentence in UTF-8 without a full stop. It names the file and the position
/// in the file if there is one.
class QLTKIT_API Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
    Error(const Error&) = default;
    Error& operator=(const Error&) = default;
    ~Error() override;
};

} // namespace qltkit
