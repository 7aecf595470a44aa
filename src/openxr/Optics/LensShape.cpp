#include "Optics/LensShape.h"

#include <qlt/Sensors/DistortionFunction.h>
#include <qlt/Sensors/DistortionMeshBuilder.h>

#include <algorithm>
#include <cmath>

namespace qltxr
{

using qlt::Params;
using qlt::Vec2;
using qlt::Vec3;

namespace
{

constexpr int MESH_RES_X = 96; // the cells of an eye's mesh
constexpr int MESH_RES_Y = 108;
constexpr int EDGE_POINTS = 64;
constexpr float REPROJECTION_MARGIN = 0.03f; // a difference of tangents
constexpr double PI = 3.14159265358979323846;
constexpr double DEG = PI / 180.0;

/// The tangents at the texture coordinate 1, measured from the middle of the eye's image.
struct HalfTangents
{
    float x = static_cast<float>(std::tan(Params::EYE_FOV_DEG * 0.5 * DEG));
    float y = x / Params::EYE_ASPECT_RATIO;
};

std::array<float, 2> Tangents(float u, float v)
{
    const HalfTangents half;
    return {(2.0f * u - 1.0f) * half.x, (2.0f * v - 1.0f) * half.y};
}

/// The lens's circle on the eye's half of the panel, in half widths of this half. The core
/// publishes the lens only as a function, so a search on the function finds the numbers.
class Circle
{
public:
    explicit Circle(Params::Eye eye)
        : mEye(eye)
    {
        mFunction.Initialize();
        mCenterX = Bisect(-0.5f, 0.5f, [this](float x) { return At(x, 0.0f).x() < 0.5f; });
        mRadius =
            Bisect(0.5f, 1.2f, [this](float r) { return At(mCenterX, Height(r)).z() == 0.0f; });
    }

    Vec3 At(float x, float y, Params::Color color = Params::COLOR_BLUE) const
    {
        return mFunction.Distortion(Vec2(x, y), mEye, color);
    }

    float CenterX() const { return mCenterX; }
    float Radius() const { return mRadius; }

    /// Converts half widths of the viewport into half heights.
    static float Height(float halfWidths) { return halfWidths * Params::EYE_ASPECT_RATIO; }

    /// The tangents at an angle and at a part of the radius, for the colour with the largest field
    /// of view.
    std::array<float, 2> TangentsAt(double angle, float part) const
    {
        const Vec3 at = At(mCenterX + part * mRadius * static_cast<float>(std::cos(angle)),
                           Height(part * mRadius * static_cast<float>(std::sin(angle))));
        return Tangents(at.x(), at.y());
    }

private:
    /// Finds the value between `low` and `high` from which the condition is false. It must be true
    /// at `low`.
    template <typename Condition>
    static float Bisect(float low, float high, Condition holds)
    {
        for (int i = 0; i < 40; ++i)
        {
            const float middle = 0.5f * (low + high);
            (holds(middle) ? low : high) = middle;
        }
        return low;
    }

    mutable qlt::DistortionFunction mFunction;
    Params::Eye mEye;
    float mCenterX = 0.0f;
    float mRadius = 1.0f;
};

double AngleOf(int point) { return 2.0 * PI * point / EDGE_POINTS; }

/// The points run counter-clockwise around the lens.
std::vector<XrVector2f> EdgeTangents(Params::Eye eye, float scale)
{
    const Circle circle(eye);
    std::vector<XrVector2f> points;
    for (int i = 0; i < EDGE_POINTS; ++i)
    {
        const std::array<float, 2> t = circle.TangentsAt(AngleOf(i), 1.0f);
        points.push_back({t[0] * scale, t[1] * scale});
    }
    return points;
}

} // namespace

LensMesh BuildLensMesh(Params::Eye eye)
{
    qlt::DistortionMeshBuilder builder(MESH_RES_X, MESH_RES_Y, eye, true);
    builder.BuildMesh();
    const Circle circle(eye);
    LensMesh mesh;
    for (int i = 0; i < builder.GetNumVertices(); ++i)
    {
        const Vec3& at = builder.GetPosition()[i];
        const auto tangents = [i](const Vec2* texture)
        { return Tangents(texture[i].x(), texture[i].y()); };
        mesh.vertices.push_back({{at.x(), at.y()},
                                 tangents(builder.GetTextureR()),
                                 tangents(builder.GetTextureG()),
                                 tangents(builder.GetTextureB()),
                                 {(at.x() - circle.CenterX()) / circle.Radius(),
                                  at.y() / Circle::Height(circle.Radius())}});
    }
    mesh.indices.assign(builder.GetIndices(), builder.GetIndices() + builder.GetNumIndices());
    return mesh;
}

XrFovf FieldOfView(Params::Eye eye)
{
    const std::vector<XrVector2f> edge = EdgeTangents(eye, 1.0f);
    const auto byX = [](const XrVector2f& a, const XrVector2f& b) { return a.x < b.x; };
    const auto byY = [](const XrVector2f& a, const XrVector2f& b) { return a.y < b.y; };
    const auto x = std::minmax_element(edge.begin(), edge.end(), byX);
    const auto y = std::minmax_element(edge.begin(), edge.end(), byY);
    return {std::atan(x.first->x), std::atan(x.second->x), std::atan(y.second->y),
            std::atan(y.first->y)};
}

VisibilityMask EdgeLoop(Params::Eye eye)
{
    VisibilityMask mask;
    mask.vertices = EdgeTangents(eye, 1.0f + REPROJECTION_MARGIN);
    for (std::uint32_t i = 0; i < mask.vertices.size(); ++i)
    {
        mask.indices.push_back(i);
    }
    return mask;
}

VisibilityMask VisibleMask(Params::Eye eye)
{
    VisibilityMask mask = EdgeLoop(eye);
    mask.indices.clear();
    const auto center = static_cast<std::uint32_t>(mask.vertices.size());
    for (std::uint32_t i = 0; i < center; ++i)
    {
        mask.indices.insert(mask.indices.end(), {center, i, (i + 1) % center});
    }
    mask.vertices.push_back({0.0f, 0.0f});
    return mask;
}

// The mask is a ring of triangles between the edge and a circle outside every eye image.
VisibilityMask HiddenMask(Params::Eye eye)
{
    VisibilityMask mask = EdgeLoop(eye);
    mask.indices.clear();
    const auto count = static_cast<std::uint32_t>(mask.vertices.size());
    const HalfTangents half;
    const double radius = 2.0 * std::hypot(half.x, half.y);
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const double angle = AngleOf(static_cast<int>(i));
        mask.vertices.push_back({static_cast<float>(radius * std::cos(angle)),
                                 static_cast<float>(radius * std::sin(angle))});
        const std::uint32_t next = (i + 1) % count;
        mask.indices.insert(mask.indices.end(),
                            {i, count + i, count + next, i, count + next, next});
    }
    return mask;
}

} // namespace qltxr
