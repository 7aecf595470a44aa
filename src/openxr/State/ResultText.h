// The registry's names of results and structure types.
#pragma once

#include <openxr/openxr.h>

namespace qltxr
{

/// "XR_UNKNOWN_SUCCESS_n" or "XR_UNKNOWN_FAILURE_n" for a number without a name.
void WriteResultText(XrResult value, char (&text)[XR_MAX_RESULT_STRING_SIZE]);

/// "XR_UNKNOWN_STRUCTURE_TYPE_n" for a number without a name.
void WriteStructureText(XrStructureType value, char (&text)[XR_MAX_STRUCTURE_NAME_SIZE]);

} // namespace qltxr
