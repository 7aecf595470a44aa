// Draws the layers of a frame through the lenses, one after another. It samples the program's
// images directly, because an eye image in between would blur the picture. It belongs to the
// compositor's thread.
#pragma once

#include "Graphics/GlImages.h"
#include "Graphics/GlProgram.h"
#include "Optics/LensShape.h"

#include <array>

namespace qltxr
{

class GlLensPass
{
public:
    explicit GlLensPass(const GlFunctions& gl);
    ~GlLensPass();
    GlLensPass(const GlLensPass&) = delete;
    GlLensPass& operator=(const GlLensPass&) = delete;

    /// Draws into the current framebuffer. This framebuffer must be black and must encode colours
    /// as sRGB.
    void Draw(const Composition& composition, std::uint32_t width, std::uint32_t height) const;

private:
    /// There is one program for images and one for arrays of images.
    struct Program
    {
        Program(const GlFunctions& gl, const char* define);

        GlProgram program;
        GLint pictureAtStart;
        GLint pictureAtEnd;
        GLint rect;
        GLint inside;
        GLint arrayIndex;
        GLint alpha;
    };

    struct Mesh
    {
        GLuint vertexArray = 0;
        GLuint vertices = 0;
        GLuint indices = 0;
        GLsizei indexCount = 0;
    };

    Mesh Upload(qlt::Params::Eye eye) const;
    void DrawLayer(const Layer& layer, std::uint32_t eye, const Composition& composition) const;
    void BindSource(const Program& program, const SubImage& source) const;

    const GlFunctions& mGl;
    Program mPlain;
    Program mArray;
    std::array<Mesh, VIEW_COUNT> mMeshes;
    GLuint mSampler = 0;
    GLuint mMipSampler = 0;
};

} // namespace qltxr
