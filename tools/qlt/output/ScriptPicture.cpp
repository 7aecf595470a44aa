#include "output/ScriptPicture.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace
{

using qltkit::HeadsetScript;
using Kind = HeadsetScript::EventKind;
using Value = std::function<std::optional<double>(const ScriptMoment&)>;

constexpr double WIDTH = 860.0;
constexpr double LEFT = 60.0;
constexpr double RIGHT = LEFT + WIDTH;
constexpr double LABEL_HEIGHT = 14.0;
constexpr std::size_t MAX_LABEL_ROWS = 4;
constexpr double MARGIN = 30.0;

const char* const COLORS[] = {"#2455d8", "#1d9a3c", "#d8322c"};

/// One of the diagrams, which stand one below another.
struct Diagram
{
    double top;
    double height;
    std::string title;
    double least = 0.0;
    double most = 0.0;

    void Cover(double value)
    {
        least = std::min(least, value);
        most = std::max(most, value);
    }

    double ToY(double value) const { return top + (most - value) / (most - least) * height; }
};

struct Picture
{
    OutputFile& file;
    const HeadsetScript& script;
    const std::vector<ScriptMoment>& moments;
    const double gapS;
    const double endS;
    const std::size_t labelRows;

    double ToX(double seconds) const { return LEFT + seconds / endS * WIDTH; }
    double Top() const { return MARGIN + LABEL_HEIGHT * static_cast<double>(labelRows); }
};

/// Returns a round step that divides `span` into about five parts.
double StepOf(double span)
{
    const double rough = span / 5.0;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double step : {1.0, 2.0, 5.0})
    {
        if (rough <= step * power)
        {
            return step * power;
        }
    }
    return 10.0 * power;
}

/// Widens the range to whole steps.
double Round(Diagram& diagram)
{
    diagram.Cover(diagram.least + 1e-3);
    const double step = StepOf(diagram.most - diagram.least);
    diagram.least = std::floor(diagram.least / step) * step;
    diagram.most = std::ceil(diagram.most / step) * step;
    return step;
}

void DrawAxes(const Picture& picture, Diagram& diagram, bool withTimes)
{
    OutputFile& file = picture.file;
    const double step = Round(diagram);
    const double bottom = diagram.top + diagram.height;
    file.Print("<text x=\"%.1f\" y=\"%.1f\" font-weight=\"bold\">", LEFT, diagram.top - 6.0);
    file.Write(diagram.title + "</text>\n");
    for (double value = diagram.least; value < diagram.most + step / 2.0; value += step)
    {
        const double y = diagram.ToY(value);
        file.Print("<path stroke=\"#ddd\" d=\"M%.1f %.1fH%.1f\"/>", LEFT, y, RIGHT);
        file.Print("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\">%g</text>\n", LEFT - 6.0,
                   y + 4.0, std::abs(value) < step / 2.0 ? 0.0 : value);
    }
    const double timeStep = StepOf(picture.endS / 2.0);
    for (double time = 0.0; time <= picture.endS * 1.0001; time += timeStep)
    {
        file.Print("<path stroke=\"#ddd\" d=\"M%.1f %.1fV%.1f\"/>", picture.ToX(time), diagram.top,
                   bottom);
        if (withTimes)
        {
            file.Print("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"middle\">%g s</text>\n",
                       picture.ToX(time), bottom + 16.0, time);
        }
    }
}

void DrawLine(const Picture& picture, const Diagram& diagram, const Value& value,
              const std::string& style)
{
    picture.file.Write("<path fill=\"none\" " + style + " d=\"");
    double last = -1e9;
    for (const ScriptMoment& moment : picture.moments)
    {
        if (const auto here = value(moment))
        {
            picture.file.Print("%c%.1f %.1f", moment.seconds - last > picture.gapS ? 'M' : 'L',
                               picture.ToX(moment.seconds), diagram.ToY(*here));
            last = moment.seconds;
        }
    }
    picture.file.Write("\"/>\n");
}

void DrawLegend(const Picture& picture, const Diagram& diagram,
                const std::vector<const char*>& names)
{
    double x = RIGHT;
    for (std::size_t i = names.size(); i > 0; --i)
    {
        picture.file.Print(
            "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\" fill=\"%s\">%s</text>\n", x,
            diagram.top - 6.0, COLORS[i - 1], names[i - 1]);
        x -= 50.0;
    }
}

/// Draws the times without reports in grey.
void DrawGaps(const Picture& picture, double top, double bottom)
{
    double last = 0.0;
    const auto draw = [&](double until)
    {
        if (until - last > picture.gapS)
        {
            picture.file.Print("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" ",
                               picture.ToX(last), top, picture.ToX(until) - picture.ToX(last),
                               bottom - top);
            picture.file.Write("fill=\"#eee\"/>\n");
        }
        last = until;
    };
    for (const ScriptMoment& moment : picture.moments)
    {
        draw(moment.seconds);
    }
    draw(picture.endS);
}

std::string LabelOf(const HeadsetScript::Event& event)
{
    const long long amount = event.amount;
    switch (event.kind)
    {
    case Kind::Unplug:
        return "unplug";
    case Kind::Plug:
        return "plug";
    case Kind::Stall:
        return OutputFile::Format("stall %g s", event.forS);
    case Kind::ShortRead:
        return OutputFile::Format("short read %lld", amount);
    case Kind::SequenceJump:
        return OutputFile::Format("sequence %+lld", amount);
    case Kind::Repeat:
        return OutputFile::Format("repeat %lld", amount);
    case Kind::Drop:
        return OutputFile::Format("drop %lld", amount);
    case Kind::ClockJump:
        return OutputFile::Format("clock %+lld us", amount);
    case Kind::ClockDrift:
        return OutputFile::Format("drift %g ppm", event.ppm);
    case Kind::Stick:
        return OutputFile::Format("%c sticks %g s", "xyz"[event.axis], event.forS);
    case Kind::ForeignPlug:
        return "foreign device";
    case Kind::ForeignUnplug:
        return "foreign gone";
    }
    return "";
}

/// Draws the events. Their labels stand in rows, so that neighbours do not cover each other.
void DrawEvents(const Picture& picture, double bottom)
{
    std::size_t row = 0;
    for (const HeadsetScript::Event& event : picture.script.events)
    {
        if (event.atS > picture.endS)
        {
            break;
        }
        const double x = picture.ToX(event.atS);
        const double y = picture.Top() - 24.0 - LABEL_HEIGHT * static_cast<double>(row);
        const bool isLate = x > RIGHT - 60.0;
        picture.file.Print("<path stroke=\"#a60\" stroke-dasharray=\"3 3\" d=\"M%.1f %.1fV%.1f\"/>",
                           x, y, bottom);
        picture.file.Print(
            "<text x=\"%.1f\" y=\"%.1f\" fill=\"#a60\" text-anchor=\"%s\">%s</text>\n",
            isLate ? x - 3.0 : x + 3.0, y + 4.0, isLate ? "end" : "start", LabelOf(event).c_str());
        row = (row + 1) % picture.labelRows;
    }
}

void DrawHead(const Picture& picture, Diagram& diagram)
{
    for (const ScriptMoment& moment : picture.moments)
    {
        for (std::size_t i = 0; i < 3; ++i)
        {
            diagram.Cover(moment.trackedDeg[i]);
            diagram.Cover(moment.headDeg ? (*moment.headDeg)[i] : 0.0);
        }
    }
    DrawAxes(picture, diagram, false);
    for (std::size_t i = 0; i < 3; ++i)
    {
        const std::string color = std::string("stroke=\"") + COLORS[i] + "\" ";
        DrawLine(
            picture, diagram,
            [i](const ScriptMoment& moment)
            { return moment.headDeg ? std::optional<double>((*moment.headDeg)[i]) : std::nullopt; },
            color + "stroke-width=\"5\" stroke-opacity=\"0.3\"");
        DrawLine(
            picture, diagram, [i](const ScriptMoment& moment) { return moment.trackedDeg[i]; },
            color + "stroke-width=\"1.2\"");
    }
    DrawLegend(picture, diagram, {"yaw", "pitch", "roll"});
}

void DrawGyroscope(const Picture& picture, Diagram& diagram, bool withTimes)
{
    for (const ScriptMoment& moment : picture.moments)
    {
        for (const double value : moment.gyroscopeDegS)
        {
            diagram.Cover(value);
        }
    }
    DrawAxes(picture, diagram, withTimes);
    for (const std::size_t i : {1U, 0U, 2U}) // each axis has the colour of the turn about it
    {
        DrawLine(
            picture, diagram, [i](const ScriptMoment& moment) { return moment.gyroscopeDegS[i]; },
            std::string("stroke-width=\"1\" stroke=\"") + COLORS[i == 2 ? 2 : 1 - i] + "\"");
    }
    DrawLegend(picture, diagram, {"y", "x", "z"});
}

void DrawTemperature(const Picture& picture, Diagram& diagram)
{
    diagram.least = diagram.most = picture.moments.front().temperatureC;
    for (const ScriptMoment& moment : picture.moments)
    {
        diagram.Cover(moment.temperatureC);
    }
    DrawAxes(picture, diagram, true);
    DrawLine(
        picture, diagram, [](const ScriptMoment& moment) { return moment.temperatureC; },
        "stroke=\"#a0a\" stroke-width=\"1.5\"");
}

} // namespace

void DrawScript(OutputFile& file, const HeadsetScript& script,
                const std::vector<ScriptMoment>& moments, double endS, double gapS)
{
    const Picture picture{file,
                          script,
                          moments,
                          gapS,
                          std::max(endS, moments.back().seconds),
                          std::min(script.events.size(), MAX_LABEL_ROWS)};
    const double top = picture.Top();
    Diagram head{top, 200.0, "head, degrees (pale: truth; thin: by the tracker)"};
    Diagram gyroscope{top + 230.0, 150.0, "gyroscope as reported, degrees a second"};
    Diagram temperature{top + 410.0, 60.0, "temperature, degrees Celsius"};
    const bool withTemperature = script.temperature.has_value();
    const double bottom =
        withTemperature ? temperature.top + temperature.height : gyroscope.top + gyroscope.height;
    file.Print("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %g %g\" ", RIGHT + 20.0,
               bottom + 26.0);
    file.Write("font-family=\"sans-serif\" font-size=\"12\">\n");
    file.Write("<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n");
    DrawGaps(picture, top, bottom);
    DrawHead(picture, head);
    DrawGyroscope(picture, gyroscope, !withTemperature);
    if (withTemperature)
    {
        DrawTemperature(picture, temperature);
    }
    DrawEvents(picture, bottom);
    file.Write("</svg>\n");
}
