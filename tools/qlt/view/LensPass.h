// The last step of a frame: an eye's image, drawn into the eye's viewport so that it looks right
// through the lens. Belongs to an OpenGL context as a GlProgram does.
#pragma once

#include <qlt/Sensors/DistortionMeshBuilder.h>

#include "view/GlProgram.h"

#include <array>

class LensPass
{
public:
    /// With meshes of resX x resY cells.
    LensPass(int resX, int resY);

    /// Draws `texture` into the current viewport, and black outside of the lens, whose edge
    /// is smooth.
    void Draw(qlt::Params::Eye eye, unsigned int texture) const;

    /// The same without a lens: the image as it is, over the whole viewport.
    void DrawFlat(unsigned int texture) const;

private:
    void BlackenOutside(qlt::Params::Eye eye) const;

    GlProgram mProgram;
    GlProgram mEdge;
    std::array<qlt::DistortionMeshBuilder, qlt::Params::EYE_COUNT> mMeshes;
};
