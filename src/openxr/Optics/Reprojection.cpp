#include "Optics/Reprojection.h"

#include <cmath>

namespace qltxr
{

namespace
{

/// The columns of the rotation matrix.
std::array<Vector, 3> Columns(const Turn& turn)
{
    return {turn * Vector{1.0, 0.0, 0.0}, turn * Vector{0.0, 1.0, 0.0},
            turn * Vector{0.0, 0.0, 1.0}};
}

// The eye may have moved since the program drew the picture. The homography uses only the turn
// between both poses, which is exact for distant objects.
Homography OfProjection(const LayerView& view, const Turn& eye)
{
    const std::array<Vector, 3> turned = Columns(view.pose.turn.Inverse() * eye);
    const double left = std::tan(view.fov.angleLeft);
    const double down = std::tan(view.fov.angleDown);
    const double width = std::tan(view.fov.angleRight) - left;
    const double height = std::tan(view.fov.angleUp) - down;
    Homography h{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        const Vector& r = turned[i];
        h[i] = static_cast<float>((r[0] + left * r[2]) / width);
        h[3 + i] = static_cast<float>((r[1] + down * r[2]) / height);
        h[6 + i] = static_cast<float>(-r[2]);
    }
    return h;
}

// The ray from the eye `o` along `d`, in the quad's axes, meets the quad's plane z = 0 at
// o - d * o.z / d.z.
bool OfQuad(const Layer& layer, const Rigid& eye, Homography& h)
{
    const Rigid eyeInQuad = layer.views[0].pose.Inverse() * eye;
    const Vector& o = eyeInQuad.place;
    if (!(o[2] > 0.0) || !(layer.size.width > 0.0f) || !(layer.size.height > 0.0f))
    {
        return false; // a quad is visible only from its front
    }
    const std::array<Vector, 3> turned = Columns(eyeInQuad.turn);
    for (std::size_t i = 0; i < 3; ++i)
    {
        const Vector& d = turned[i];
        const double c = -d[2];
        h[i] = static_cast<float>((o[0] * c + o[2] * d[0]) / layer.size.width + 0.5 * c);
        h[3 + i] = static_cast<float>((o[1] * c + o[2] * d[1]) / layer.size.height + 0.5 * c);
        h[6 + i] = static_cast<float>(c);
    }
    return true;
}

bool IsSeenBy(const Layer& layer, std::uint32_t eye)
{
    return layer.eyes == XR_EYE_VISIBILITY_BOTH ||
           (layer.eyes == XR_EYE_VISIBILITY_LEFT) == (eye == 0);
}

} // namespace

Rigid EyeInHead(std::uint32_t eye, const Person& person)
{
    return {{}, {(eye == 0 ? -0.5 : 0.5) * person.ipdM, 0.0, 0.0}};
}

bool PictureOf(const Layer& layer, std::uint32_t eye, const Viewer& viewer, Homography& homography)
{
    if (layer.space.isAction || !IsSeenBy(layer, eye))
    {
        return false;
    }
    const Rigid space = PlaceOf(layer.space, viewer.head, viewer.person);
    const Rigid eyeInSpace = space.Inverse() * viewer.head * EyeInHead(eye, viewer.person);
    if (layer.isQuad)
    {
        return OfQuad(layer, eyeInSpace, homography);
    }
    homography = OfProjection(layer.views[eye], eyeInSpace.turn);
    return true;
}

} // namespace qltxr
