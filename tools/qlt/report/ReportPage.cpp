#include "report/ReportPage.h"

#include "report/ReportFiles.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>

namespace
{

using Json = nlohmann::ordered_json;
using qltkit::Comparison;

// The names that the page's script uses, in the order of Comparison::Track and Comparison::Mark.
constexpr const char* TRACK_NAMES[] = {
    "inclinationCore",  "inclinationKit",  "difference", "headingCore", "headingKit",
    "accelerationCore", "accelerationKit", "biasX",      "biasY",       "biasZ",
    "predictionCore",   "predictionKit",
};
constexpr const char* MARK_NAMES[] = {"gyroscope", "accelerometer", "lost"};

static_assert(std::size(TRACK_NAMES) == Comparison::TRACKS);

Json NumberOrNull(double value) { return std::isfinite(value) ? Json(value) : Json(); }

Json FiguresOf(const Comparison::Figures& figures)
{
    return {{"inclinationRms", NumberOrNull(figures.inclinationRms)},
            {"inclinationMost", NumberOrNull(figures.inclinationMost)},
            {"driftPerMinute", NumberOrNull(figures.driftPerMinute)},
            {"predictionRms20", NumberOrNull(figures.predictionRms20)},
            {"predictionRms50", NumberOrNull(figures.predictionRms50)}};
}

double Milliseconds(double seconds) { return std::round(seconds * 1e3) / 1e3; }

Json MarksOf(const Comparison& comparison)
{
    Json marks;
    for (const char* name : MARK_NAMES)
    {
        marks[name] = Json::array();
    }
    for (const Comparison::Stretch& stretch : comparison.stretches)
    {
        marks[MARK_NAMES[static_cast<std::size_t>(stretch.mark)]].push_back(
            {Milliseconds(stretch.fromSeconds), Milliseconds(stretch.toSeconds)});
    }
    return marks;
}

/// Returns everything except the tracks, without the last brace.
std::string Head(const Comparison& comparison, const ReportNames& names, std::size_t reports)
{
    Json worst = Json::array();
    for (const Comparison::Moment& moment : comparison.worst)
    {
        worst.push_back({{"track", TRACK_NAMES[moment.track]},
                         {"seconds", Milliseconds(moment.seconds)},
                         {"value", moment.value}});
    }
    const qltkit::SampleCounts& counts = comparison.counts;
    const Json head = {
        {"version", QLT_VERSION},
        {"name", names.capture},
        {"truthName", comparison.hasTruth ? names.truth : ""},
        {"reports", reports},
        {"seconds", comparison.seconds},
        {"step", comparison.stepSeconds},
        {"core", FiguresOf(comparison.core)},
        {"kit", FiguresOf(comparison.kit)},
        {"differenceRms", NumberOrNull(comparison.differenceRms)},
        {"counts",
         {{"lost", counts.lost},
          {"repeated", counts.repeated},
          {"saturated", counts.saturated},
          {"refused", counts.refused + counts.refusedAccelerometers},
          {"gaps", counts.gaps}}},
        {"marks", MarksOf(comparison)},
        {"worst", worst},
    };
    std::string text = head.dump(-1, ' ', false, Json::error_handler_t::replace);
    text.pop_back();
    // A name must not end the page's script element.
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos;)
    {
        text.replace(at, 1, "\\u003c");
    }
    return text;
}

/// Writes four digits, because a screen shows no more.
void Append(std::string& text, const std::vector<float>& points)
{
    std::array<char, 32> number{};
    for (const float value : points)
    {
        if (std::isfinite(value))
        {
            const double shown = std::fabs(value) < 1e-4f ? 0.0 : static_cast<double>(value);
            std::snprintf(number.data(), number.size(), "%.4g,", shown);
            text += number.data();
        }
        else
        {
            text += "null,";
        }
    }
    text.back() = ']';
}

std::string DataOf(const Comparison& comparison, const ReportNames& names, std::size_t reports)
{
    std::string text = Head(comparison, names, reports) + ",\"tracks\":{";
    for (std::size_t track = 0; track < Comparison::TRACKS; ++track)
    {
        const std::vector<float>& points = comparison.tracks[track];
        const auto isKnown = [](float value) { return std::isfinite(value); };
        if (std::any_of(points.begin(), points.end(), isKnown))
        {
            text += text.back() == '{' ? "\"" : ",\"";
            text += std::string(TRACK_NAMES[track]) + "\":[";
            Append(text, points);
        }
    }
    return text + "}}";
}

} // namespace

std::string MakeReportPage(const Comparison& comparison, const ReportNames& names,
                           std::size_t reports)
{
    const std::map<std::string_view, std::string> parts = {
        {"STYLE", std::string(REPORT_CSS)},
        {"SCRIPT", std::string(REPORT_JS)},
        {"UPLOT", std::string(UPLOT_JS)},
        {"UPLOT_STYLE", std::string(UPLOT_CSS)},
        {"UPLOT_LICENCE", std::string(UPLOT_LICENSE)},
        {"DATA", DataOf(comparison, names, reports)},
    };
    std::string page;
    std::string_view rest = REPORT_HTML;
    for (std::size_t at = 0; (at = rest.find("{{")) != std::string_view::npos;)
    {
        const std::size_t end = rest.find("}}", at);
        page += rest.substr(0, at);
        page += parts.at(rest.substr(at + 2, end - at - 2));
        rest.remove_prefix(end + 2);
    }
    return page += rest;
}
