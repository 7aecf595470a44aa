// What QueltaKit throws when a file, a device or the system fails it, or when it is asked for the
// impossible.
#pragma once

#include <qltkit/Export.h>

#include <stdexcept>

namespace qltkit
{

/// The text is one clear sentence without a full stop, in UTF-8. It names the file and the place
/// where there is one.
class QLTKIT_API Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
    Error(const Error&) = default;
    Error& operator=(const Error&) = default;
    ~Error() override;
};

} // namespace qltkit
