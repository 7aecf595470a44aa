#pragma once

#include <string>

/// The system's text for the calling thread's last error, as the texts of the exceptions carry it:
/// deliberate: the first half of the text with a zero after each character, because its UTF-16 is
/// copied byte by byte; a VRException therefore shows only its first character. Empty when there is
/// no last error or no text for it.
std::wstring GetLastErrorText();
