#include "commands/Commands.h"

#include <qlt/qlt.h>

#include "Sensors/Lens/DistortConstants.h"
#include "commands/CommandLine.h"
#include "output/OutputFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

namespace
{

struct Options
{
    std::string eye = "left"; // or "right"
    std::string resolution = "32x36";
    int resX = 32; // cells; ParseResolution sets both
    int resY = 36;
    bool strip = false;
    std::string svg; // empty: no file; likewise for obj and csv
    std::string obj;
    std::string csv;
};

using qlt::Vec2;
using qlt::Vec3;

using Triangle = std::array<int, 3>;

constexpr int MAX_RESOLUTION = 4096;

struct Channel
{
    const char* name;
    const char* color;
    const Vec2* texture;
};

class Mesh
{
public:
    explicit Mesh(const Options& options)
        : mBuilder(options.resX, options.resY,
                   options.eye == "right" ? qlt::Params::EYE_RIGHT : qlt::Params::EYE_LEFT,
                   !options.strip)
    {
        mBuilder.BuildMesh();
        channels = {{{"red", "#f00", mBuilder.GetTextureR()},
                     {"green", "#0f0", mBuilder.GetTextureG()},
                     {"blue", "#00f", mBuilder.GetTextureB()}}};
        // A triangle is three indices of a list, or any three neighbours of a strip. The triangles
        // that join the rows of a strip have no area.
        const int* index = mBuilder.GetIndices();
        for (int i = 0; i + 2 < mBuilder.GetNumIndices(); i += options.strip ? 1 : 3)
        {
            const Triangle t = {index[i], index[i + 1], index[i + 2]};
            if (t[0] != t[1] && t[1] != t[2] && t[0] != t[2])
            {
                triangles.push_back(t);
            }
        }
    }

    int Vertices() const { return mBuilder.GetNumVertices(); }
    int Indices() const { return mBuilder.GetNumIndices(); }
    const Vec3& Position(int vertex) const { return mBuilder.GetPosition()[vertex]; }

    std::vector<Triangle> triangles;
    std::array<Channel, 3> channels{};

private:
    qlt::DistortionMeshBuilder mBuilder;
};

double At(const Vec3& v, int axis) { return static_cast<double>(axis == 0 ? v.x() : v.y()); }

double At(const Vec2& v, int axis) { return static_cast<double>(axis == 0 ? v.x() : v.y()); }

void WriteObj(const Mesh& mesh, const Options& options, OutputFile& file)
{
    file.Print(
        "# Lens mesh of the %s eye, %d x %d cells. Texture coordinates: the green channel.\n",
        options.eye.c_str(), options.resX, options.resY);
    for (int i = 0; i < mesh.Vertices(); ++i)
    {
        const Vec3& p = mesh.Position(i);
        const Vec2& t = mesh.channels[1].texture[i];
        file.Print("v %.9g %.9g %.9g\nvt %.9g %.9g\n", At(p, 0), At(p, 1),
                   static_cast<double>(p.z()), At(t, 0), At(t, 1));
    }
    for (const Triangle& t : mesh.triangles)
    {
        file.Print("f %d/%d %d/%d %d/%d\n", t[0] + 1, t[0] + 1, t[1] + 1, t[1] + 1, t[2] + 1,
                   t[2] + 1);
    }
    file.Close();
}

void WriteCsv(const Mesh& mesh, OutputFile& file)
{
    file.Write("vertex,x,y,depth,red_u,red_v,green_u,green_v,blue_u,blue_v\n");
    for (int i = 0; i < mesh.Vertices(); ++i)
    {
        const Vec3& p = mesh.Position(i);
        file.Print("%d,%.9g,%.9g,%.9g", i, At(p, 0), At(p, 1), static_cast<double>(p.z()));
        for (const Channel& channel : mesh.channels)
        {
            file.Print(",%.9g,%.9g", At(channel.texture[i], 0), At(channel.texture[i], 1));
        }
        file.Write("\n");
    }
    file.Close();
}

/// Draws an eye's viewport with the aspect ratio of the eye's half of the panel.
class Drawing
{
public:
    Drawing(const Mesh& mesh, const Options& options, OutputFile& file)
        : mMesh(mesh)
        , mOptions(options)
        , mCenter(OnPaper(options.eye == "right" ? LENS_CENTER_X : -LENS_CENTER_X, 0.0))
        , mFile(file)
    {
    }

    void Draw()
    {
        mFile.Print("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %g %g\">\n",
                    WIDTH + 2 * MARGIN, HEIGHT + 2 * MARGIN + CAPTION);
        mFile.Write("<rect width=\"100%\" height=\"100%\" fill=\"#222\"/>\n");
        mFile.Print(
            "<clipPath id=\"lens\"><circle cx=\"%.3f\" cy=\"%.3f\" r=\"%.3f\"/></clipPath>\n",
            mCenter.x, mCenter.y, RADIUS);
        DrawViewport("#666");
        mFile.Write("<g clip-path=\"url(#lens)\">\n");
        DrawViewport("#000");
        for (const Channel& channel : mMesh.channels)
        {
            DrawGrid(channel);
        }
        mFile.Write("</g>\n");
        mFile.Print("<text x=\"%g\" y=\"%g\" font-family=\"sans-serif\" font-size=\"15\" "
                    "fill=\"#ccc\">",
                    MARGIN, HEIGHT + 2 * MARGIN + 6);
        mFile.Print("A square grid on the panel, %s lens, %d x %d cells; grey: outside of the lens",
                    mOptions.eye.c_str(), mOptions.resX, mOptions.resY);
        mFile.Write("</text>\n</svg>\n");
        mFile.Close();
    }

private:
    static constexpr double WIDTH = 640.0;
    static constexpr double HEIGHT = 720.0;
    static constexpr double MARGIN = 20.0;
    static constexpr double CAPTION = 20.0;
    static constexpr double LENS_CENTER_X =
        // The value for the right eye.
        static_cast<double>(qlt::DistortConstants::LENS_CENTER_OFFSET_X);
    /// The radius of the lens's edge. Its unit is half the width on both axes, so the edge is a
    /// circle in the picture.
    static constexpr double RADIUS =
        static_cast<double>(qlt::DistortConstants::LENS_EDGE_RADIUS) * WIDTH / 2.0;
    static constexpr int GRID = 24; // cells across the texture; the lines between them are drawn

    struct Point
    {
        double x;
        double y;
    };

    static Point OnPaper(double x, double y)
    {
        return {MARGIN + (x + 1.0) * 0.5 * WIDTH, MARGIN + (1.0 - y) * 0.5 * HEIGHT};
    }

    void DrawViewport(const char* color)
    {
        mFile.Print("<rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\" fill=\"%s\"/>\n", MARGIN,
                    MARGIN, WIDTH, HEIGHT, color);
    }

    /// True when the point of a line that is nearest to the lens's centre is inside the lens.
    bool MeetsLens(const Point& from, const Point& to) const
    {
        const double x = to.x - from.x;
        const double y = to.y - from.y;
        const double part = ((mCenter.x - from.x) * x + (mCenter.y - from.y) * y) / (x * x + y * y);
        const double nearest = std::clamp(part, 0.0, 1.0);
        return std::hypot(from.x + nearest * x - mCenter.x, from.y + nearest * y - mCenter.y) <=
               RADIUS;
    }

    /// Draws the lines of equal u and of equal v, interpolated in each triangle as graphics
    /// hardware does.
    void DrawGrid(const Channel& channel)
    {
        mFile.Print(
            "<path fill=\"none\" stroke=\"%s\" stroke-width=\"1.6\" stroke-linecap=\"round\" "
            "style=\"mix-blend-mode:screen\" d=\"",
            channel.color);
        for (const Triangle& t : mMesh.triangles)
        {
            for (int axis = 0; axis < 2; ++axis)
            {
                const std::array<double, 3> values = {At(channel.texture[t[0]], axis) * GRID,
                                                      At(channel.texture[t[1]], axis) * GRID,
                                                      At(channel.texture[t[2]], axis) * GRID};
                const auto [low, high] = std::minmax_element(values.begin(), values.end());
                // Skip the edges of the texture, where the coordinate is clamped and the line has
                // no direction.
                const int last = std::min(static_cast<int>(std::floor(*high)), GRID - 1);
                for (int line = std::max(static_cast<int>(std::ceil(*low)), 1); line <= last;
                     ++line)
                {
                    DrawLine(t, values, line);
                }
            }
        }
        mFile.Write("\"/>\n");
    }

    /// Draws the line of `value` in the triangle that has `values` at its corners.
    void DrawLine(const Triangle& t, const std::array<double, 3>& values, double value)
    {
        std::vector<Point> crossings;
        for (std::size_t a = 0; a < 3; ++a)
        {
            const std::size_t b = (a + 1) % 3;
            // The test is half open, so that a corner belongs to only one of its edges.
            if ((values[a] <= value) == (values[b] <= value))
            {
                continue;
            }
            const double part = (value - values[a]) / (values[b] - values[a]);
            const Vec3& p = mMesh.Position(t[a]);
            const Vec3& q = mMesh.Position(t[b]);
            crossings.push_back(OnPaper(At(p, 0) + part * (At(q, 0) - At(p, 0)),
                                        At(p, 1) + part * (At(q, 1) - At(p, 1))));
        }
        if (crossings.size() == 2 && MeetsLens(crossings[0], crossings[1]))
        {
            mFile.Print("M%.1f %.1fL%.1f %.1f", crossings[0].x, crossings[0].y, crossings[1].x,
                        crossings[1].y);
        }
    }

    const Mesh& mMesh;
    const Options& mOptions;
    const Point mCenter; // the centre of the lens
    OutputFile& mFile;
};

int Run(const Options& options)
{
    OutputFile svg(options.svg);
    OutputFile obj(options.obj);
    OutputFile csv(options.csv);
    const Mesh mesh(options);
    if (!options.svg.empty())
    {
        Drawing(mesh, options, svg).Draw();
    }
    if (!options.obj.empty())
    {
        WriteObj(mesh, options, obj);
    }
    if (!options.csv.empty())
    {
        WriteCsv(mesh, csv);
    }
    std::printf("%s eye, %d x %d cells: %d vertices, %d indices of a %s, %zu triangles\n",
                options.eye.c_str(), options.resX, options.resY, mesh.Vertices(), mesh.Indices(),
                options.strip ? "strip" : "list", mesh.triangles.size());
    return 0;
}

/// Parses "WxH" in cells into `options`. Returns an error sentence, or an empty text on success.
std::string ParseResolution(const std::string& text, Options& options)
{
    const std::size_t middle = std::min(text.find('x'), text.size());
    const auto x = ParseNumber(text.substr(0, middle), 1, MAX_RESOLUTION);
    const auto y = ParseNumber(text.substr(std::min(middle + 1, text.size())), 1, MAX_RESOLUTION);
    if (!x || !y)
    {
        return "must be WxH, each from 1 to " + std::to_string(MAX_RESOLUTION);
    }
    options.resX = *x;
    options.resY = *y;
    return {};
}

} // namespace

CommandBody AddMesh(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Build the lens mesh of one eye, and draw or write it");
    line.Choice("--eye", options->eye, {"left", "right"}, "left or right").ShowDefault();
    line.Text("--resolution", options->resolution, "Cells across and down, as WxH")
        .ShowDefault()
        .Check([options](const std::string& text) { return ParseResolution(text, *options); });
    line.Flag("--strip", options->strip, "One triangle strip instead of a list");
    line.File("--svg", options->svg, "Draw a square grid as the panel shows it to the lens");
    line.File("--obj", options->obj, "Write the mesh for other programs");
    line.File("--csv", options->csv, "Write its vertices as numbers");
    line.AfterParsing(
        [options] {
            RequireDistinct({}, {options->svg, options->obj, options->csv});
        });
    return [options] { return Run(*options); };
}
