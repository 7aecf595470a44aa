// A picture as a file of the PPM format.
#pragma once

#include "Graphics/Graphics.h"

namespace qltxr
{

/// False when the file cannot be written.
bool WritePicture(const std::string& path, const Picture& picture);

} // namespace qltxr
