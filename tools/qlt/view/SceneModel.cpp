#include "view/SceneModel.h"

#include <algorithm>
#include <array>
#include <cmath>

using qlt::Vec2;
using qlt::Vec3;

namespace
{

constexpr float RAD_PER_DEG = 0.017453292f;
constexpr float FAR_AWAY = 250.0f;   // the sky and the end of the ground
constexpr float LINES_AWAY = 120.0f; // nearer than the flat patches of the sky

constexpr Vec3 HAZE(0.72f, 0.80f, 0.86f);
constexpr Vec3 SKY(0.36f, 0.55f, 0.78f);
constexpr Vec3 ZENITH(0.10f, 0.22f, 0.45f);
constexpr Vec3 FLOOR(0.16f, 0.22f, 0.27f);
constexpr Vec3 LINES(0.92f, 0.96f, 1.0f);

/// The point at a heading (0 is forward, positive to the right) and an elevation, in degrees.
Vec3 At(float heading, float elevation, float distance)
{
    const float h = heading * RAD_PER_DEG;
    const float e = elevation * RAD_PER_DEG;
    return Vec3(std::sin(h) * std::cos(e), std::sin(e), -std::cos(h) * std::cos(e)) * distance;
}

/// The colour of full saturation at a hue: red at 0, green at 120, blue at 240.
Vec3 Hue(float degrees)
{
    const auto part = [degrees](float peak)
    {
        const float distance = std::abs(std::remainder(degrees - peak, 360.0f));
        return std::clamp(2.0f - distance / 60.0f, 0.0f, 1.0f);
    };
    return {part(0.0f), part(120.0f), part(240.0f)};
}

class Model
{
public:
    /// Adds a band around the whole horizon, between two elevations.
    void SkyBand(float low, const Vec3& lowColor, float high, const Vec3& highColor,
                 float distance = FAR_AWAY)
    {
        for (float heading = 0.0f; heading < 360.0f; heading += 5.0f)
        {
            SkyPatch(heading, heading + 5.0f, low, lowColor, high, highColor, distance);
        }
    }

    void SkyPatch(float left, float right, float low, const Vec3& lowColor, float high,
                  const Vec3& highColor, float distance)
    {
        Quad({{{At(left, low, distance), lowColor, {}},
               {At(right, low, distance), lowColor, {}},
               {At(right, high, distance), highColor, {}},
               {At(left, high, distance), highColor, {}}}});
    }

    /// Adds a ring of the ground. `squares` is the number of the board's squares in each metre.
    void GroundRing(float inner, const Vec3& innerColor, float outer, const Vec3& outerColor,
                    float squares)
    {
        const auto vertex = [squares](float heading, float distance, const Vec3& color)
        {
            const Vec3 p = At(heading, 0.0f, distance);
            return SceneVertex{p, color, Vec2(p.x() * squares / 8.0f, p.z() * squares / 8.0f)};
        };
        for (float heading = 0.0f; heading < 360.0f; heading += 5.0f)
        {
            Quad({vertex(heading, inner, innerColor), vertex(heading + 5.0f, inner, innerColor),
                  vertex(heading + 5.0f, outer, outerColor), vertex(heading, outer, outerColor)});
        }
    }

    /// Adds a box around `center`. Its axes are `right`, up and the third direction, each with its
    /// extent. The brightness of the faces shows the light from above.
    void Box(const Vec3& center, const Vec3& right, const Vec3& extent, const Vec3& color,
             float squares)
    {
        const Vec3 up = Vec3::Y_AXIS;
        const Vec3 x = right * (0.5f * extent.x());
        const Vec3 y = up * (0.5f * extent.y());
        const Vec3 z = right.Cross(up) * (0.5f * extent.z());
        Face(center + y, x, z, color, squares);
        Face(center - y, x, z, color * 0.45f, squares);
        Face(center + x, z, y, color * 0.75f, squares);
        Face(center - x, z, y, color * 0.75f, squares);
        Face(center + z, x, y, color * 0.88f, squares);
        Face(center - z, x, y, color * 0.88f, squares);
    }

    std::vector<SceneVertex> triangles;

private:
    void Face(const Vec3& center, const Vec3& a, const Vec3& b, const Vec3& color, float squares)
    {
        const float board = squares / 8.0f;
        Quad({{{center - a - b, color, {0.0f, 0.0f}},
               {center + a - b, color, {board, 0.0f}},
               {center + a + b, color, {board, board}},
               {center - a + b, color, {0.0f, board}}}});
    }

    void Quad(const std::array<SceneVertex, 4>& corners)
    {
        constexpr std::size_t TWO_TRIANGLES[] = {0, 1, 2, 0, 2, 3};
        for (const std::size_t corner : TWO_TRIANGLES)
        {
            triangles.push_back(corners[corner]);
        }
    }
};

void AddSky(Model& model)
{
    model.SkyBand(0.0f, HAZE, 12.0f, SKY);
    model.SkyBand(12.0f, SKY, 90.0f, ZENITH);
    for (const float elevation : {30.0f, 60.0f})
    {
        model.SkyBand(elevation - 0.15f, LINES, elevation + 0.15f, LINES, LINES_AWAY);
    }
    for (int heading = 0; heading < 360; heading += 10)
    {
        const float height = heading % 90 == 0 ? 30.0f : heading % 30 == 0 ? 12.0f : 6.0f;
        const auto middle = static_cast<float>(heading);
        model.SkyPatch(middle - 0.15f, middle + 0.15f, 0.0f, LINES, height, LINES, LINES_AWAY);
    }
}

void AddCubes(Model& model)
{
    for (float heading = 0.0f; heading < 360.0f; heading += 30.0f)
    {
        const bool quarter = std::fmod(heading, 90.0f) == 0.0f;
        const float size = quarter ? 0.8f : 0.5f;
        const Vec3 place = At(heading, 0.0f, 4.0f);
        const Vec3 right = At(heading + 90.0f, 0.0f, 1.0f);
        const Vec3 color = Hue(heading) * 0.75f;
        model.Box(place + Vec3(0.0f, 1.5f, 0.0f), right, Vec3(size, size, size), color, 4.0f);
        model.Box(place + Vec3(0.0f, 0.55f, 0.0f), right, Vec3(0.06f, 1.1f, 0.06f),
                  Vec3(0.5f, 0.5f, 0.5f), 0.0f);
    }
}

/// Adds the three axes, each half a metre long with a head.
void AddAxes(Model& model)
{
    const Vec3 origin(0.0f, 0.7f, -1.7f);
    for (const Vec3& axis : {Vec3::X_AXIS, Vec3::Y_AXIS, Vec3::Z_AXIS})
    {
        const Vec3 thin(0.03f, 0.03f, 0.03f);
        const Vec3 color = axis * 0.9f + Vec3(0.05f, 0.05f, 0.05f);
        model.Box(origin + axis * 0.25f, Vec3::X_AXIS, axis * 0.5f + thin, color, 0.0f);
        model.Box(origin + axis * 0.5f, Vec3::X_AXIS, thin * 3.0f, color, 0.0f);
    }
}

} // namespace

std::vector<SceneVertex> MakeSceneModel()
{
    Model model;
    AddSky(model);
    model.GroundRing(0.0f, FLOOR, 12.0f, FLOOR, 2.0f);
    model.GroundRing(12.0f, FLOOR, 60.0f, HAZE * 0.85f, 0.0f);
    model.GroundRing(60.0f, HAZE * 0.85f, FAR_AWAY, HAZE, 0.0f);
    AddCubes(model);
    AddAxes(model);
    return std::move(model.triangles);
}
