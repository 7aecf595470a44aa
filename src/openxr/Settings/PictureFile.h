// Writes a picture as a PPM file.
#pragma once

#include "Graphics/Graphics.h"

namespace qltxr
{

/// Returns false when the file cannot be written.
bool WritePicture(const std::string& path, const Picture& picture);

} // namespace qltxr
