// What the head looks around in: a sky whose lines tell headings and elevations, a checkered floor,
// a ring of checkered cubes coloured by their heading (forward is red), and the axes of the world
// (x red, y green, z blue, towards the viewer). Metres, y up, -z forward, the floor at 0.
//
// Belongs to an OpenGL context as a GlProgram does.
#pragma once

#include <qlt/Math/Matrix.h>

#include "view/GlProgram.h"
#include "view/SceneModel.h"

#include <vector>

class Scene
{
public:
    Scene();

    /// Draws it into the current target, all of it; `view` maps the world to clip coordinates.
    void Draw(const qlt::Matrix& view) const;

private:
    const std::vector<SceneVertex> mTriangles;
    GlProgram mColors;
    GlProgram mBoard;
};
