// The OpenGL calls of the camera. Only the thread whose context is current may call them.
#pragma once

namespace qlt
{

/// Prepares the texture `id` for grey levels and sets the unpacking of rows without padding. An id
/// of 0 creates a texture name. Returns the name. The first upload creates the storage.
unsigned int InitLuminanceTexture(unsigned int id);

/// Uploads width x height bytes as the image of the texture, first row first.
void UploadLuminance(unsigned int id, int width, int height, const unsigned char* pixels);

} // namespace qlt
