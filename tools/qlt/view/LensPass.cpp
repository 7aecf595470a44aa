#include "view/LensPass.h"

#include <qlt/Render/Shaders.h>

#include "Sensors/Lens/DistortConstants.h"

#include <GL/glew.h>

using qlt::Params;
using qlt::Vec2;
using qlt::Vec3;

namespace
{

/// A matrix that keeps the position and removes its depth. With its depth the mesh would lose whole
/// triangles at the lens's edge, and the edge would have steps.
constexpr float WITHOUT_DEPTH[] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

constexpr Vec3 CORNERS[] = {{-1, -1, 0}, {1, -1, 0}, {-1, 1, 0}, {1, 1, 0}};

/// vInLens is the position relative to the lens's centre. Its length is 1 at the lens's edge.
constexpr const char* EDGE_SHADER_V = R"(attribute vec3 aPosition;
attribute vec2 aInLens;
varying vec2 vInLens;

void main()
{
    vInLens = aInLens;
    gl_Position = vec4(aPosition, 1.0);
}
)";

/// The alpha is the part of the pixel that is outside the lens.
constexpr const char* EDGE_SHADER_F = R"(varying vec2 vInLens;

void main()
{
    float radius = length(vInLens);
    float pixel = length(vec2(dFdx(radius), dFdy(radius)));
    gl_FragColor = vec4(0.0, 0.0, 0.0, clamp((radius - 1.0) / pixel + 0.5, 0.0, 1.0));
}
)";

/// Sets up the state. Blending is off, because the alpha is 0. Culling is off, because the
/// triangles face both ways.
void SetUp(const GlProgram& program, unsigned int texture)
{
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glBindTexture(GL_TEXTURE_2D, texture); // unit 0 is the sampler's default
    program.Use();
    program.SetMatrix("uMVPMatrix", *WITHOUT_DEPTH);
}

Vec2 InLens(const Vec3& corner, Params::Eye eye)
{
    using namespace qlt::DistortConstants;
    const float center = eye == Params::EYE_LEFT ? -LENS_CENTER_OFFSET_X : LENS_CENTER_OFFSET_X;
    return {(corner.x() - center) / LENS_EDGE_RADIUS,
            corner.y() / Params::EYE_ASPECT_RATIO / LENS_EDGE_RADIUS};
}

} // namespace

LensPass::LensPass(int resX, int resY)
    : mProgram(qlt::Shaders::TextureShaderV(), qlt::Shaders::TextureShaderF())
    , mEdge(EDGE_SHADER_V, EDGE_SHADER_F)
    , mMeshes{{{resX, resY, Params::EYE_LEFT, true}, {resX, resY, Params::EYE_RIGHT, true}}}
{
    for (qlt::DistortionMeshBuilder& mesh : mMeshes)
    {
        mesh.BuildMesh();
    }
}

void LensPass::Draw(Params::Eye eye, unsigned int texture) const
{
    const qlt::DistortionMeshBuilder& mesh = mMeshes[static_cast<std::size_t>(eye)];
    SetUp(mProgram, texture);
    const GlProgram::Array position(mProgram, "aPosition", 3, mesh.GetPosition());
    const GlProgram::Array red(mProgram, "aTexCoordR", 2, mesh.GetTextureR());
    const GlProgram::Array green(mProgram, "aTexCoordG", 2, mesh.GetTextureG());
    const GlProgram::Array blue(mProgram, "aTexCoordB", 2, mesh.GetTextureB());
    glDrawElements(GL_TRIANGLES, mesh.GetNumIndices(), GL_UNSIGNED_INT, mesh.GetIndices());
    BlackenOutside(eye);
}

void LensPass::BlackenOutside(Params::Eye eye) const
{
    const Vec2 places[] = {InLens(CORNERS[0], eye), InLens(CORNERS[1], eye),
                           InLens(CORNERS[2], eye), InLens(CORNERS[3], eye)};
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    mEdge.Use();
    const GlProgram::Array position(mEdge, "aPosition", 3, CORNERS);
    const GlProgram::Array inLens(mEdge, "aInLens", 2, places);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

void LensPass::DrawFlat(unsigned int texture) const
{
    static constexpr Vec2 TEXTURE[] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    SetUp(mProgram, texture);
    const GlProgram::Array position(mProgram, "aPosition", 3, CORNERS);
    const GlProgram::Array red(mProgram, "aTexCoordR", 2, TEXTURE);
    const GlProgram::Array green(mProgram, "aTexCoordG", 2, TEXTURE);
    const GlProgram::Array blue(mProgram, "aTexCoordB", 2, TEXTURE);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}
