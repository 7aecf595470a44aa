// The fixed texts of the status codes.
#pragma once

#include <qlt/Runtime/VRStatus.h>

#include <string>

namespace qlt
{

/// The text of `code`, for example "Error VR_STATUS_OK (0)". A value outside the list gives "Error
/// VR_STATUS (n)".
std::string StatusText(VR_STATUS code);

} // namespace qlt
