#include "view/HeadsetView.h"

#include <qltkit/Tracking/Pose.h>

#include <GL/glew.h>

#include <cmath>

using qlt::Matrix;
using qlt::Params;
using qlt::Vec3;

namespace
{

constexpr int MESH_RES_X = 192; // cells of an eye's mesh, each less than 7 x 7 panel pixels
constexpr int MESH_RES_Y = 216;
constexpr float NEAR_M = 0.05f;
constexpr float FAR_M = 500.0f;

/// The position of the neck of a standing person, in metres. The head turns about the neck.
const Vec3 NECK(0.0f, 1.55f, 0.0f);

/// The height that gives an eye's image the aspect ratio of the eye's half of the panel. The pixels
/// are then squares.
int EyeHeight(int width)
{
    return static_cast<int>(std::lround(static_cast<float>(width) / Params::EYE_ASPECT_RATIO));
}

} // namespace

HeadsetView::HeadsetView(int sharpness)
    : mLens(MESH_RES_X, MESH_RES_Y)
    , mEyes{{{sharpness * Params::EYE_RESOLUTION, EyeHeight(sharpness * Params::EYE_RESOLUTION)},
             {sharpness * Params::EYE_RESOLUTION, EyeHeight(sharpness * Params::EYE_RESOLUTION)}}}
{
}

// The projection is symmetric although the lens is not in the middle of its half of the panel. The
// lens mesh moves the middle of the eye's image to the lens.
void HeadsetView::RenderEyes(const qlt::Quaternion& orientation)
{
    const Matrix projection =
        Matrix::PerspectiveProjection(Params::EYE_FOV_DEG, Params::EYE_ASPECT_RATIO, NEAR_M, FAR_M);
    qltkit::Pose head;
    head.orientation = orientation;
    for (const Params::Eye eye : {Params::EYE_LEFT, Params::EYE_RIGHT})
    {
        const qltkit::EyePose pose = qltkit::EyePoseOf(head, eye);
        mEyes[static_cast<std::size_t>(eye)].Use();
        mScene.Draw(projection *
                    Matrix::FirstPersonView(Vec3(), NECK + pose.position, pose.orientation));
    }
}

void HeadsetView::Present(int width, int height, bool lens) const
{
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    for (const Params::Eye eye : {Params::EYE_LEFT, Params::EYE_RIGHT})
    {
        const unsigned int image = mEyes[static_cast<std::size_t>(eye)].Texture();
        glViewport(eye * width / 2, 0, width / 2, height);
        lens ? mLens.Draw(eye, image) : mLens.DrawFlat(image);
    }
}
