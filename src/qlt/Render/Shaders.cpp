#include <qlt/Render/Shaders.h>

namespace qlt
{
namespace
{

/// Engines identify their compiled and cached programs by these texts, so no character may change.
struct Texts
{
    const std::string textureShaderV = R"(uniform mat4 uMVPMatrix;
attribute vec3 aPosition;
attribute vec2 aTexCoordR;
attribute vec2 aTexCoordG;
attribute vec2 aTexCoordB;
varying vec2 vTexCoordR;
varying vec2 vTexCoordG;
varying vec2 vTexCoordB;

void main()
{
    vTexCoordR = aTexCoordR;
    vTexCoordG = aTexCoordG;
    vTexCoordB = aTexCoordB;
    gl_Position = uMVPMatrix * vec4(aPosition, 1.0);
})";

    const std::string textureShaderF = R"(#ifndef __linux__
precision mediump float;
#endif

uniform sampler2D texture;
varying vec2 vTexCoordR;
varying vec2 vTexCoordG;
varying vec2 vTexCoordB;

void main()
{
    gl_FragColor = vec4(texture2D(texture, vTexCoordR).r,
                        texture2D(texture, vTexCoordG).g,
                        texture2D(texture, vTexCoordB).b,
                        0.);
}
)";

    const std::string objectShaderV = R"(uniform mat4 uMVPMatrix;
attribute vec3 aPosition;
attribute vec2 aTexCoord;
varying vec2 vTexCoord;

void main()
{
    vTexCoord = aTexCoord;
    gl_Position = uMVPMatrix * vec4(aPosition, 1.0);
})";

    const std::string objectShaderF = R"(#ifndef __linux__
precision mediump float;
#endif

uniform vec4 uColor;

varying vec2 vTexCoord;

void main()
{
    int num = 4;
    int numX = num;
    int numY = num;

    float fmodvalX = 1. / float(numX);
    float fmodvalY = 1. / float(numY);

    float valX = mod(vTexCoord.x, fmodvalX);
    float valY = mod(vTexCoord.y, fmodvalY);

    float realval = abs(float(valX > (fmodvalX / 2.)) - float(valY > (fmodvalY / 2.)));

    gl_FragColor = vec4(realval, realval, realval, realval);
})";
};

const Texts& TheTexts()
{
    static const Texts texts;
    return texts;
}

/// The texts are built when the library is loaded, so they outlive the static objects of every
/// program. A static object that is built earlier may still ask for them.
[[maybe_unused]] const Texts& gBuiltWhenLoaded = TheTexts();

} // namespace

const std::string& Shaders::TextureShaderV() { return TheTexts().textureShaderV; }

const std::string& Shaders::TextureShaderF() { return TheTexts().textureShaderF; }

const std::string& Shaders::ObjectShaderV() { return TheTexts().objectShaderV; }

const std::string& Shaders::ObjectShaderF() { return TheTexts().objectShaderF; }

} // namespace qlt
