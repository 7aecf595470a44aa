// The triangles of the scene.
#pragma once

#include <qlt/Math/Vector.h>

#include <vector>

/// `board` places the vertex on the checkerboard; all zeros where there is none.
struct SceneVertex
{
    qlt::Vec3 position;
    qlt::Vec3 color;
    qlt::Vec2 board;
};

/// Three vertices for each triangle.
std::vector<SceneVertex> MakeSceneModel();
