// Options that several commands have, and checks of what an option may be. Each refusal says in a
// sentence what is accepted.
#pragma once

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

/// The longest time that a command can be told to go on for, about eleven days.
constexpr double MAX_SECONDS = 1e6;

/// The whole text as a decimal number in [least, most]; nothing when it is anything else.
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

/// The option takes a number in [least, most], whole numbers only when `Number` is an integer.
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

/// The option takes the name of a file, which is not empty.
CLI::Option* RequireName(CLI::Option* option);

/// CLI::ValidationError when an output has the name of an input or of another output, through
/// whatever links and spellings. Names that are empty do not count.
void RequireDistinct(const std::vector<std::string>& inputs,
                     const std::vector<std::string>& outputs);

/// The file that a source is; empty when it is the simulator or the headset.
std::string FileOfSource(const std::string& source);

/// Adds --source, which says what is tracked.
void AddSource(CLI::App& command, std::string& source);

/// Adds --seconds, a time from a millisecond to MAX_SECONDS, with `text` as its help.
CLI::Option* AddSeconds(CLI::App& command, double& seconds, const std::string& text);
