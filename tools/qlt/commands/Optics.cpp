#include "commands/Commands.h"

#include <qlt/qlt.h>

#include "Sensors/Lens/DistortConstants.h"
#include "Sensors/Lens/DistortionTables.h"
#include "commands/CommandLine.h"
#include "output/OutputFile.h"

#include <array>
#include <cstdio>
#include <memory>

namespace
{

using namespace qlt::DistortionTables;

constexpr double WIDTH = 720.0;
constexpr double HEIGHT = 440.0;
constexpr double LEFT = 60.0;
constexpr double TOP = 20.0;
constexpr double LEAST = 0.5; // the smallest value of the scale axis, which ends at 1
constexpr double LENS_EDGE = static_cast<double>(qlt::DistortConstants::LENS_EDGE_RADIUS);

double ToX(double radius) { return LEFT + radius * WIDTH; }

double ToY(double scale) { return TOP + (1.0 - scale) / (1.0 - LEAST) * HEIGHT; }

struct Curve
{
    const char* name;
    const char* color;
    qlt::Params::Color channel;
    const Table& table;
};

const Curve CURVES[] = {{"blue", "#2455d8", qlt::Params::COLOR_BLUE, BLUE},
                        {"green", "#1d9a3c", qlt::Params::COLOR_GREEN, GREEN},
                        {"red", "#d8322c", qlt::Params::COLOR_RED, RED}};

/// The headset's measured lens in the units of its tables. The field of view and the width are
/// those of one eye.
qlt::DistortParams MeasuredLens()
{
    qlt::DistortParams params;
    params.radius.assign(RADIUS.begin(), RADIUS.end());
    params.red.assign(RED.begin(), RED.end());
    params.green.assign(GREEN.begin(), GREEN.end());
    params.blue.assign(BLUE.begin(), BLUE.end());
    params.fovDeg = static_cast<double>(qlt::Params::EYE_FOV_DEG);
    params.widthMm = static_cast<double>(qlt::Params::HMD_SCREEN_SIZE_HORZ) / 2.0;
    return params;
}

/// The factor at a radius above 0, as the library computes it for a point straight below the lens
/// centre. It is the distance of the texture coordinate from the middle, divided by the distance of
/// the point from the middle.
double Scale(qlt::DistortionFunction& lens, double radius, qlt::Params::Color channel)
{
    // The value for the right eye.
    constexpr float CENTER_X = qlt::DistortConstants::LENS_CENTER_OFFSET_X;
    const float y = static_cast<float>(-radius) * qlt::Params::EYE_ASPECT_RATIO;
    const qlt::Vec3 sample =
        lens.Distortion(qlt::Vec2(CENTER_X, y), qlt::Params::EYE_RIGHT, channel);
    return (2.0 * static_cast<double>(sample.y()) - 1.0) / static_cast<double>(y);
}

void DrawAxes(OutputFile& file)
{
    file.Write("<g stroke=\"#ddd\">\n");
    for (int i = 0; i <= 10; ++i)
    {
        const double y = ToY(LEAST + 0.05 * i);
        const double x = ToX(0.1 * i);
        file.Print("<path d=\"M%.1f %.1fH%.1f\"/>", LEFT, y, LEFT + WIDTH);
        file.Print("<path d=\"M%.1f %.1fV%.1f\"/>\n", x, TOP, TOP + HEIGHT);
    }
    file.Write("</g>\n<g font-family=\"sans-serif\" font-size=\"13\" fill=\"#333\">\n");
    for (int i = 0; i <= 10; i += 2)
    {
        file.Print("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\">%.1f</text>", LEFT - 8,
                   ToY(LEAST + 0.05 * i) + 5, LEAST + 0.05 * i);
        file.Print("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"middle\">%.1f</text>\n", ToX(0.1 * i),
                   TOP + HEIGHT + 20, 0.1 * i);
    }
    file.Print("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"middle\">distance from the lens centre, ",
               LEFT + WIDTH / 2, TOP + HEIGHT + 42);
    file.Write("in half widths of the eye&#39;s viewport</text>\n");
    file.Print("<text transform=\"translate(16 %.1f) rotate(-90)\" text-anchor=\"middle\">",
               TOP + HEIGHT / 2);
    file.Write("scale factor</text>\n");
    file.Print("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\">edge of the lens</text>\n</g>\n",
               ToX(LENS_EDGE) - 6, TOP + HEIGHT - 8);
    file.Print("<path stroke=\"#555\" stroke-dasharray=\"5 4\" d=\"M%.1f %.1fV%.1f\"/>\n",
               ToX(LENS_EDGE), TOP, TOP + HEIGHT);
}

void DrawCurve(OutputFile& file, qlt::DistortionFunction& lens, const Curve& curve)
{
    constexpr int STEPS = 200;
    file.Print("<path fill=\"none\" stroke=\"%s\" stroke-width=\"1.8\" d=\"", curve.color);
    for (int i = 1; i <= STEPS; ++i)
    {
        const double radius = static_cast<double>(i) / STEPS;
        file.Print("%c%.2f %.2f", i == 1 ? 'M' : 'L', ToX(radius),
                   ToY(Scale(lens, radius, curve.channel)));
    }
    file.Print("\"/>\n<g fill=\"#fff\" stroke=\"%s\" stroke-width=\"1.5\">\n", curve.color);
    for (std::size_t knot = 0; knot < RADIUS.size(); ++knot)
    {
        file.Print("<circle cx=\"%.2f\" cy=\"%.2f\" r=\"3\"/>", ToX(RADIUS[knot]),
                   ToY(curve.table[knot]));
    }
    file.Write("\n</g>\n");
}

void DrawLegend(OutputFile& file)
{
    double y = TOP + 24;
    file.Write("<g font-family=\"sans-serif\" font-size=\"14\">\n");
    for (const Curve& curve : CURVES)
    {
        file.Print("<text x=\"%.1f\" y=\"%.1f\" fill=\"%s\">%s</text>\n", LEFT + 16, y, curve.color,
                   curve.name);
        y += 20;
    }
    file.Print("<text x=\"%.1f\" y=\"%.1f\" fill=\"#333\">", LEFT + 16, y);
    file.Write("line = fitted, circle = measured</text>\n</g>\n");
}

int Run(const std::string& svg)
{
    qlt::DistortionFunction lens;
    qlt::DistortParams params = MeasuredLens();
    lens.Initialize(params);
    OutputFile file(svg);
    file.Print("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %g %g\">\n",
               LEFT + WIDTH + 20, TOP + HEIGHT + 54);
    file.Write("<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n");
    DrawAxes(file);
    for (const Curve& curve : CURVES)
    {
        DrawCurve(file, lens, curve);
    }
    DrawLegend(file);
    file.Write("</svg>\n");
    file.Close();
    std::printf("%s: the scale factors of the three colours over the radius\n", svg.c_str());
    return 0;
}

} // namespace

CommandBody AddOptics(CommandLine line)
{
    auto svg = std::make_shared<std::string>();
    line.Describe("Draw the measured lens");
    line.File("--svg", *svg, "The file to draw").Required();
    return [svg] { return Run(*svg); };
}
