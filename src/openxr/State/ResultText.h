// The names of results and structure types in the registry.
#pragma once

#include <openxr/openxr.h>

namespace qltxr
{

/// Writes the name of a result. A number without a name becomes "XR_UNKNOWN_SUCCESS_n" or
/// "XR_UNKNOWN_FAILURE_n".
void WriteResultText(XrResult value, char (&text)[XR_MAX_RESULT_STRING_SIZE]);

/// Writes the name of a structure type. A number without a name becomes
/// "XR_UNKNOWN_STRUCTURE_TYPE_n".
void WriteStructureText(XrStructureType value, char (&text)[XR_MAX_STRUCTURE_NAME_SIZE]);

} // namespace qltxr
