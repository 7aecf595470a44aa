// The OpenGL calls of the camera, for the thread whose context is current.
#pragma once

namespace qlt
{

/// Prepares `id`, or a new name for 0, as a texture for grey levels, and the unpacking of tight
/// rows. Returns the name. The first upload makes the storage.
unsigned int InitLuminanceTexture(unsigned int id);

/// Makes width x height bytes, first row first, the texture's image.
void UploadLuminance(unsigned int id, int width, int height, const unsigned char* pixels);

} // namespace qlt
