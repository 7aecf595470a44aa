#pragma once

#include <qlt/Export.h>

#include <string>

namespace qlt
{

/// GLSL sources for two things that an engine draws with OpenGL: the lens pre-distortion through
/// the mesh of DistortionMeshBuilder, which samples each colour channel at its own coordinates, and
/// a calibration object with a procedural checkerboard. The library itself never compiles them.
///
///     uMVPMatrix            uniform, mat4: applied to the position
///     aPosition             3 floats; distortion: the mesh's GetPosition
///     aTexCoordR, G and B   2 floats; distortion: the mesh's GetTextureR, G and B
///     texture               uniform, sampler2D; distortion: the eye image
///     aTexCoord             2 floats; object: the board has eight squares from 0 to 1
///     uColor                uniform, vec4; object: declared and not used
///
/// deliberate: the distortion writes alpha 0. The checkerboard writes one value to all four
/// channels, so its black squares are transparent. Draw the distortion without blending.
///
/// The texts have no \#version. They fit OpenGL ES 2 and WebGL as they are. On a desktop, GLSL 1.10
/// and 1.20 do not know `precision`. There, pass one of these lines as the first string of
/// glShaderSource, before the text:
///
///     "#version 130\n"       for OpenGL 3.0 and later, which knows `precision`
///     "#define __linux__\n"  for OpenGL 2; it leaves `precision` out. Compilers may warn of the
///     name
///
/// Core profiles and "#version 300 es" do not accept the texts, because `attribute`, `varying`,
/// `texture2D` and a uniform called `texture` belong to the first versions of the language.
///
/// The strings exist as long as the library is loaded. Any thread may read them, and so may the
/// initialisers and destructors of static objects.
class QLT_API Shaders
{
public:
    /// The vertex shader of the distortion.
    static const std::string& TextureShaderV();

    /// The fragment shader of the distortion.
    static const std::string& TextureShaderF();

    /// The vertex shader of the checkerboard.
    static const std::string& ObjectShaderV();

    /// The fragment shader of the checkerboard.
    static const std::string& ObjectShaderF();

private:
    explicit Shaders() = default; // explicit, because {} would create an aggregate otherwise
};

} // namespace qlt
