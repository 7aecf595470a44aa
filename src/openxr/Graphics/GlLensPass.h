// Draws a frame's layers through the lenses, one after another, each straight from the program's
// image: there is no eye image in between that would blur it. Belongs to the compositor's thread.
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

    /// Into the framebuffer in use, which is black and encodes as sRGB.
    void Draw(const Composition& composition, std::uint32_t width, std::uint32_t height) const;

private:
    /// For images, and for arrays of them.
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
