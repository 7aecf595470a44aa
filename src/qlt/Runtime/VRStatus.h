// The fixed texts of the status codes.
#pragma once

#include <qlt/Runtime/VRStatus.h>

#include <string>

namespace qlt
{

/// The text of `code`: "Error VR_STATUS_OK (0)", and "Error VR_STATUS (n)" for a value outside the
/// list.
std::string StatusText(VR_STATUS code);

} // namespace qlt
