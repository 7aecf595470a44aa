#include "LensPass.h"

#include <qlt/Math/Matrix.h>
#include <qlt/Render/Shaders.h>

#include <GL/glew.h>

using qlt::Params;
using qlt::Vec2;
using qlt::Vec3;

namespace
{

/// Without blending, as the alpha is 0, and without culling, as the triangles face both ways. What
/// lies outside of the lens is clipped by its depth, which needs no depth test.
void SetUp(const GlProgram& program, unsigned int texture)
{
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glBindTexture(GL_TEXTURE_2D, texture); // of unit 0, which the sampler has by default
    program.Use();
    program.SetMatrix("uMVPMatrix", qlt::Matrix::Identity().array());
}

} // namespace

LensPass::LensPass(int resX, int resY)
    : mProgram(qlt::Shaders::TextureShaderV(), qlt::Shaders::TextureShaderF())
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
}

void LensPass::DrawFlat(unsigned int texture) const
{
    static constexpr Vec3 CORNERS[] = {{-1, -1, 0}, {1, -1, 0}, {-1, 1, 0}, {1, 1, 0}};
    static constexpr Vec2 TEXTURE[] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    SetUp(mProgram, texture);
    const GlProgram::Array position(mProgram, "aPosition", 3, CORNERS);
    const GlProgram::Array red(mProgram, "aTexCoordR", 2, TEXTURE);
    const GlProgram::Array green(mProgram, "aTexCoordG", 2, TEXTURE);
    const GlProgram::Array blue(mProgram, "aTexCoordB", 2, TEXTURE);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}
