#pragma once

#include <string>

/// The system's text for the calling thread's last error, in the form that the exceptions carry.
/// deliberate: it is the first half of the text with a zero after each character, because the
/// UTF-16 is copied byte by byte. A VRException therefore shows only the first character. Empty
/// when there is no last error or no text for it.
std::wstring GetLastErrorText();
