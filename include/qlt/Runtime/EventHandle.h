#pragma once

namespace qlt
{

/// An event of the system: the HANDLE of an event object on Windows, and elsewhere the number of an
/// eventfd as a pointer. Null is no event.
using NativeEventHandle = void*;

} // namespace qlt
