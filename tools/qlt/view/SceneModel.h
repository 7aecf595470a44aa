// The triangles of the scene.
#pragma once

#include <qlt/Math/Vector.h>

#include <vector>

/// `board` is the position of the vertex on the checkerboard. It is zero for surfaces without a
/// board.
struct SceneVertex
{
    qlt::Vec3 position;
    qlt::Vec3 color;
    qlt::Vec2 board;
};

/// Three vertices for each triangle.
std::vector<SceneVertex> MakeSceneModel();
