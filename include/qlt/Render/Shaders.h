// GLSL sources for the two things that an engine draws with OpenGL: the lens pre-distortion through
// the mesh of DistortionMeshBuilder, each colour channel sampled at its own coordinates, and a
// calibration object with a procedural checkerboard. The library itself never compiles them.
//
//     uMVPMatrix            uniform, mat4: applied to the position
//     aPosition             3 floats; of the distortion: the mesh's GetPosition
//     aTexCoordR, G and B   2 floats, distortion: the mesh's GetTextureR, G and B
//     texture               uniform, sampler2D, distortion: the eye image
//     aTexCoord             2 floats, object: from 0 to 1 the board has eight squares
//     uColor                uniform, vec4, object: declared and not used
//
// deliberate: the distortion writes alpha 0, and the board has one value in all four channels, so
// that its black squares are transparent. Draw the distortion without blending.
//
// The texts have no #version. As they are, they are for OpenGL ES 2 and WebGL. On a desktop, whose
// GLSL 1.10 and 1.20 do not know `precision`, put one line in front of them, as the first string of
// glShaderSource:
//
//     "#version 130\n"       OpenGL 3.0 and later; knows `precision`
//     "#define __linux__\n"  OpenGL 2; leaves `precision` out. Compilers may warn of the name
//
// Core profiles and "#version 300 es" do not take them: `attribute`, `varying`, `texture2D` and a
// uniform that is called `texture` are of the language's first versions.
//
// The strings live as long as the library is loaded. Any thread may read them, and so may the
// initialisers and destructors of static objects.
#pragma once

#include <qlt/Export.h>

#include <string>

namespace qlt
{

class QLT_API Shaders
{
public:
    /// The distortion: vertex and fragment shader.
    static const std::string& TextureShaderV();
    static const std::string& TextureShaderF();

    /// The checkerboard: vertex and fragment shader.
    static const std::string& ObjectShaderV();
    static const std::string& ObjectShaderF();

private:
    explicit Shaders() = default; // explicit, because braces make an aggregate all the same
};

} // namespace qlt
