// What the headset's panel shows of the scene: each eye's image, seen from where the head is, and
// then drawn through the eye's lens into its half. Belongs to an OpenGL context as a GlProgram
// does.
#pragma once

#include <qlt/Math/Quaternion.h>

#include "view/LensPass.h"
#include "view/RenderTarget.h"
#include "view/Scene.h"

#include <array>

class HeadsetView
{
public:
    /// With eye images of so many times the size that the headset's constants name, for pictures
    /// that are looked at without the lens.
    explicit HeadsetView(int sharpness);

    /// Draws the two eye images, and leaves another target in use.
    void RenderEyes(const qlt::Quaternion& orientation);

    /// Draws both into the target in use, side by side; without `lens` as they are.
    void Present(int width, int height, bool lens) const;

private:
    Scene mScene;
    LensPass mLens;
    std::array<RenderTarget, qlt::Params::EYE_COUNT> mEyes;
};
