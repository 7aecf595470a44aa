// The command line of qlt: the options of its subcommands and the checks of their values. Each
// refusal is a sentence that names the accepted values. Only CommandLine.cpp includes the parser,
// because the parser's header takes longer to compile than a subcommand.
#pragma once

#include <charconv>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace CLI
{
class App;
class Option;
} // namespace CLI

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

/// One option or positional argument of a subcommand. Copies stand for the same option.
class Option
{
public:
    explicit Option(CLI::Option* option);

    /// Refuses a command line without this option.
    Option Required() const;

    /// Shows the present value as the default in the help text.
    Option ShowDefault() const;

    /// Adds a check. `check` returns an error sentence, or an empty text for a good value.
    Option Check(const std::function<std::string(const std::string&)>& check) const;

private:
    CLI::Option* mOption;
};

/// The options of one subcommand. A name such as "--csv" adds an option; a name without dashes adds
/// a positional argument. Each value must live until the command line has been parsed. An option
/// that is not given leaves its value as it is.
class CommandLine
{
public:
    explicit CommandLine(CLI::App& app);

    /// Sets the sentence that the help text shows for this subcommand.
    void Describe(const std::string& text);

    Option Text(const std::string& name, std::string& value, const std::string& help);

    /// Accepts one of `choices` only.
    Option Choice(const std::string& name, std::string& value,
                  const std::vector<std::string>& choices, const std::string& help);

    /// Accepts the name of a file. An empty name is refused.
    Option File(const std::string& name, std::string& value, const std::string& help);

    /// Accepts numbers in [least, most] only.
    Option Number(const std::string& name, double& value, double least, double most,
                  const std::string& help);

    /// Accepts whole numbers in [least, most] only.
    Option Number(const std::string& name, int& value, int least, int most,
                  const std::string& help);
    Option Number(const std::string& name, std::uint64_t& value, std::uint64_t least,
                  std::uint64_t most, const std::string& help);

    /// Adds an option without a value. It sets `value` to true.
    void Flag(const std::string& name, bool& value, const std::string& help);

    /// Adds --source, which names the tracker.
    void Source(std::string& source);

    /// Adds --filter, which says whose filter makes the orientations: "kit" or "core".
    void Filter(std::string& filter);

    /// Adds --seconds, a time from a millisecond to MAX_SECONDS.
    Option Seconds(double& seconds, const std::string& help);

    /// Adds a required positional argument that takes all words that are left, options included.
    void Rest(const std::string& name, std::vector<std::string>& words, const std::string& help);

    /// Calls `check` after the command line of this subcommand has been parsed. RequireDistinct may
    /// be called there.
    void AfterParsing(const std::function<void()>& check);

    /// Adds a subcommand of this subcommand. One of them must then be given.
    CommandLine Subcommand(const std::string& name, const std::string& help);

    /// True when this subcommand was given.
    bool IsGiven() const;

private:
    CLI::App* mApp;
};

/// Refuses the command line when an output is the same file as an input or another output, through
/// any links and spellings. Empty names are ignored. Call it from a check of AfterParsing.
void RequireDistinct(const std::vector<std::string>& inputs,
                     const std::vector<std::string>& outputs);

/// Refuses the command line with this sentence unless `isGood`. Call it from a check of
/// AfterParsing.
void Require(bool isGood, const std::string& refusal);

/// Returns the file name of a source. Empty for the simulator and the headset.
std::string FileOfSource(const std::string& source);

/// Runs a subcommand with its parsed options and returns the exit code.
using CommandBody = std::function<int()>;

/// One subcommand of the program.
struct Command
{
    const char* name;
    CommandBody (*add)(CommandLine line); ///< adds the options and returns the body
};

/// Parses the program's command line and runs the subcommand that it names. Returns the exit code:
/// that of the subcommand, or 2 for a wrong command line, which is explained on standard error.
int RunCommand(const std::vector<Command>& commands, int argc, char** argv);
