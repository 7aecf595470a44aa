#pragma once

#include <qlt/Math/Matrix.h>

#include "view/GlProgram.h"
#include "view/SceneModel.h"

#include <vector>

/// The scene around the head. A sky has lines that show headings and elevations. A ring of
/// checkered cubes stands on a checkered floor, coloured by their heading; red is forward. The axes
/// of the world are x red, y green and z blue towards the viewer. Units are metres, y is up, -z is
/// forward, and the floor is at 0.
///
/// It belongs to an OpenGL context, as a GlProgram does.
class Scene
{
public:
    Scene();

    /// Draws the scene over the whole current target. `view` maps the world to clip coordinates.
    void Draw(const qlt::Matrix& view) const;

private:
    const std::vector<SceneVertex> mTriangles;
    GlProgram mColors;
    GlProgram mBoard;
};
