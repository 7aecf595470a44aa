#pragma once

#include <qlt/Sensors/DistortionMeshBuilder.h>

#include "view/GlProgram.h"

#include <array>

/// The last step of a frame. It draws an eye's image into the eye's viewport so that the image
/// looks right through the lens. It belongs to an OpenGL context, as a GlProgram does.
class LensPass
{
public:
    /// Builds meshes of resX x resY cells.
    LensPass(int resX, int resY);

    /// Draws `texture` into the current viewport. The area outside the lens is black, and the
    /// lens's edge is smooth.
    void Draw(qlt::Params::Eye eye, unsigned int texture) const;

    /// Draws `texture` unchanged over the whole viewport, without a lens.
    void DrawFlat(unsigned int texture) const;

private:
    void BlackenOutside(qlt::Params::Eye eye) const;

    GlProgram mProgram;
    GlProgram mEdge;
    std::array<qlt::DistortionMeshBuilder, qlt::Params::EYE_COUNT> mMeshes;
};
