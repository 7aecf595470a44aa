// The lens model and its mesh, written point by point and without the library. Tests compare the
// library's values with it to the last bit, and benchmarks compare the speed.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace plain
{

using Doubles = std::vector<double>;

/// A natural cubic spline: ((cubic h + quad) h + lin) h + y.
struct Spline
{
    Doubles x;
    Doubles y;
    Doubles cubic;
    Doubles quad;
    Doubles lin;
};

/// The curvatures solve a system with three diagonals. Scale the rows by the main diagonal,
/// eliminate downwards and solve upwards.
inline Doubles Curvatures(const Doubles& x, const Doubles& y)
{
    const std::size_t n = x.size();
    Doubles lower(n, 0.0);
    Doubles upper(n, 0.0);
    Doubles middle(n, 2.0);
    Doubles b(n, 0.0);
    for (std::size_t i = 1; i + 1 < n; ++i)
    {
        lower[i] = (x[i] - x[i - 1]) / 3.0;
        middle[i] = (x[i + 1] - x[i - 1]) * (2.0 / 3.0);
        upper[i] = (x[i + 1] - x[i]) / 3.0;
        b[i] = (y[i + 1] - y[i]) / (x[i + 1] - x[i]) - (y[i] - y[i - 1]) / (x[i] - x[i - 1]);
    }
    for (std::size_t i = 0; i < n; ++i)
    {
        const double scale = 1.0 / middle[i];
        lower[i] *= scale;
        upper[i] *= scale;
        b[i] *= scale;
        middle[i] = 1.0;
        if (i > 0)
        {
            lower[i] /= middle[i - 1];
            middle[i] -= lower[i] * upper[i - 1];
            b[i] -= lower[i] * b[i - 1];
        }
    }
    for (std::size_t i = n; i-- > 0;)
    {
        b[i] = (i + 1 < n ? b[i] - upper[i] * b[i + 1] : b[i]) / middle[i];
    }
    return b;
}

inline Spline Fit(const Doubles& x, const Doubles& y)
{
    const std::size_t n = x.size();
    Spline s{x, y, Doubles(n, 0.0), Curvatures(x, y), Doubles(n, 0.0)};
    for (std::size_t i = 0; i + 1 < n; ++i)
    {
        const double h = x[i + 1] - x[i];
        s.cubic[i] = (s.quad[i + 1] - s.quad[i]) / 3.0 / h;
        s.lin[i] = (y[i + 1] - y[i]) / h - (2.0 * s.quad[i] + s.quad[i + 1]) / 3.0 * h;
    }
    const double h = x[n - 1] - x[n - 2];
    s.lin[n - 1] = 3.0 * s.cubic[n - 2] * h * h + 2.0 * s.quad[n - 2] * h + s.lin[n - 2];
    return s;
}

inline double Evaluate(const Spline& s, double x)
{
    const auto notLess = std::lower_bound(s.x.begin(), s.x.end(), x) - s.x.begin();
    const auto i = static_cast<std::size_t>(std::max<std::ptrdiff_t>(notLess - 1, 0));
    const double h = x - s.x[i];
    if (x < s.x.front() || x > s.x.back())
    {
        return (s.quad[i] * h + s.lin[i]) * h + s.y[i];
    }
    return ((s.cubic[i] * h + s.quad[i]) * h + s.lin[i]) * h + s.y[i];
}

/// The tables of a lens and the constants that the process shares.
struct Lens
{
    Spline colors[3];
    float offsetY = 0.0f;
    float scale = 0x1.0a9bd2p+0f; // 1.0414401
};

/// The lens of the headset. Its tables are copies that do not come from the library.
inline Lens HeadsetLens()
{
    const Doubles radius = {0.0,      0.0526316, 0.105263, 0.157895, 0.210526, 0.263158, 0.315789,
                            0.368421, 0.421053,  0.473684, 0.526316, 0.578947, 0.631579, 0.684211,
                            0.736842, 0.789474,  0.842105, 0.894737, 0.947368, 1.0};
    Lens lens;
    lens.colors[0] = Fit(radius, {0.5576, 0.5576, 0.5589, 0.5605, 0.5625, 0.5663, 0.5712,
                                  0.5775, 0.5849, 0.5947, 0.6057, 0.6191, 0.6357, 0.6548,
                                  0.6783, 0.7069, 0.7406, 0.7829, 0.8326, 0.8921});
    lens.colors[1] = Fit(radius, {0.5617, 0.5615, 0.5628, 0.5645, 0.5666, 0.5706, 0.5758,
                                  0.5824, 0.5902, 0.6004, 0.6119, 0.626,  0.6433, 0.6635,
                                  0.6883, 0.7188, 0.7551, 0.8008, 0.8552, 0.9211});
    lens.colors[2] = Fit(radius, {0.5669, 0.5666, 0.5678, 0.5696, 0.5719, 0.5762, 0.5817,
                                  0.5887, 0.5971, 0.6078, 0.6201, 0.6352, 0.6537, 0.6755,
                                  0.7024, 0.7357, 0.7756, 0.8262, 0.8871, 0.9616});
    return lens;
}

struct Sample
{
    float u;
    float v;
    float depth;
};

/// Limits a coordinate to [-1, 1] and maps it to [0, 1].
inline float ToTexture(float x)
{
    const float limited = x < -1.0f ? -1.0f : x > 1.0f ? 1.0f : x;
    return (limited - -1.0f) / (1.0f - -1.0f);
}

inline Sample Distort(const Lens& lens, float x, float y, int eye, std::size_t color)
{
    const float offsetX = 0.012436205f;
    const float dx = eye == 1 ? x - offsetX : x + offsetX;
    const float dy = (y - lens.offsetY) * (1.0f / (8.0f / 9.0f));
    const float r = std::sqrt(dx * dx + dy * dy);
    const auto s = static_cast<float>(Evaluate(lens.colors[color], static_cast<double>(r)));
    const float k = s / lens.scale;
    return {ToTexture(dx * k), ToTexture((y - lens.offsetY) * k), r > 0.99553567f ? -1.1f : 0.0f};
}

struct Mesh
{
    std::vector<float> position;
    std::vector<float> texture[3];
    std::vector<std::int32_t> indices;
};

/// Writes into arrays and reuses arrays that already have the right size.
inline void BuildMesh(const Lens& lens, int resX, int resY, int eye, bool triangleList, Mesh& mesh)
{
    const float stepX = 2.0f / static_cast<float>(resX);
    const float stepY = 2.0f / static_cast<float>(resY);
    const std::int32_t width = resX + 1;
    const auto vertices = static_cast<std::size_t>(width) * static_cast<std::size_t>(resY + 1);
    mesh.position.resize(3 * vertices);
    for (std::vector<float>& texture : mesh.texture)
    {
        texture.resize(2 * vertices);
    }
    mesh.indices.resize(
        static_cast<std::size_t>(triangleList ? 6 * resX * resY : 2 * resY * (resX + 2) - 2));
    std::int32_t* index = mesh.indices.data();
    for (int j = 0; j <= resY; ++j)
    {
        for (int i = 0; i <= resX; ++i)
        {
            const std::int32_t v = width * j + i;
            const auto at = static_cast<std::size_t>(v);
            const float x = static_cast<float>(i) * stepX - 1.0f;
            const float y = static_cast<float>(j) * stepY - 1.0f;
            for (std::size_t c = 3; c-- > 0;)
            {
                const Sample sample = Distort(lens, x, y, eye, c);
                mesh.texture[c][2 * at] = sample.u;
                mesh.texture[c][2 * at + 1] = sample.v;
                mesh.position[3 * at + 2] = sample.depth; // red comes last, so its depth remains
            }
            mesh.position[3 * at] = x;
            mesh.position[3 * at + 1] = y;
            if (triangleList && i < resX && j < resY)
            {
                for (const std::int32_t corner :
                     {v, v + width, v + 1, v + width, v + 1, v + width + 1})
                {
                    *index++ = corner;
                }
            }
            if (!triangleList && j < resY)
            {
                if (j > 0 && i == 0)
                {
                    *index++ = v;
                }
                *index++ = v;
                *index++ = v + width;
                if (j < resY - 1 && i == resX)
                {
                    *index++ = v + width;
                }
            }
        }
    }
}

} // namespace plain
