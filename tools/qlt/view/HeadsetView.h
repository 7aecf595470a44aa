#pragma once

#include <qlt/Math/Quaternion.h>

#include "view/LensPass.h"
#include "view/RenderTarget.h"
#include "view/Scene.h"

#include <array>

/// The picture on the headset's panel. Each eye's image of the scene is drawn from the eye's
/// position, and then drawn through the eye's lens into its half of the panel. It belongs to an
/// OpenGL context, as a GlProgram does.
class HeadsetView
{
public:
    /// Makes eye images of `sharpness` times the size in the headset's constants. A factor above 1
    /// is for pictures that people look at without the lens.
    explicit HeadsetView(int sharpness);

    /// Draws the two eye images. Afterwards another target is in use.
    void RenderEyes(const qlt::Quaternion& orientation);

    /// Draws both images side by side into the current target. Without `lens` they are drawn
    /// unchanged.
    void Present(int width, int height, bool lens) const;

private:
    Scene mScene;
    LensPass mLens;
    std::array<RenderTarget, qlt::Params::EYE_COUNT> mEyes;
};
