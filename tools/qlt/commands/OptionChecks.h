// Options that several commands share, and checks of their values. Each refusal is a sentence that
// names the accepted values.
#pragma once

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

/// The longest duration of a command in seconds, about eleven days.
constexpr double MAX_SECONDS = 1e6;

/// Parses the whole text as a decimal number in [least, most]. Empty when the text is anything
/// else.
template <typename Number>
std::optional<Number> ParseNumber(const std::string& text, Number least, Number most)
{
    Number value{};
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    // A comparison with NaN is false.
    const bool isInRange = error == std::errc() && rest == end && value >= least && value <= most;
    return isInRange ? std::optional<Number>(value) : std::nullopt;
}

/// Accepts only numbers in [least, most]. When `Number` is an integer type, only integers are
/// accepted.
template <typename Number>
CLI::Option* RequireNumber(CLI::Option* option, Number least, Number most)
{
    return option->check(
        [least, most](const std::string& text)
        {
            std::ostringstream refusal;
            refusal.precision(std::numeric_limits<double>::digits10);
            refusal << '"' << text << "\" is not a "
                    << (std::numeric_limits<Number>::is_integer ? "whole " : "") << "number from "
                    << least << " to " << most;
            return ParseNumber(text, least, most) ? std::string() : refusal.str();
        });
}

/// Accepts only the name of a file. An empty text is refused.
CLI::Option* RequireName(CLI::Option* option);

/// Throws CLI::ValidationError when an output is the same file as an input or another output,
/// through any links and spellings. Empty names are ignored.
void RequireDistinct(const std::vector<std::string>& inputs,
                     const std::vector<std::string>& outputs);

/// Returns the file name of a source. Empty for the simulator and the headset.
std::string FileOfSource(const std::string& source);

/// Adds --source, which names the tracker.
void AddSource(CLI::App& command, std::string& source);

/// Adds --filter, which says whose filter makes the orientations: "kit" or "core".
void AddFilter(CLI::App& command, std::string& filter);

/// Adds --seconds, a time from a millisecond to MAX_SECONDS, with `text` as its help.
CLI::Option* AddSeconds(CLI::App& command, double& seconds, const std::string& text);
