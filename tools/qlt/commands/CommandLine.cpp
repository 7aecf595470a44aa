#include "commands/CommandLine.h"

#include "output/OutputFile.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <limits>
#include <map>
#include <sstream>

namespace
{

template <typename Value>
Option AddNumber(CLI::App& app, const std::string& name, Value& value, Value least, Value most,
                 const std::string& help)
{
    return Option(app.add_option(name, value, help))
        .Check(
            [least, most](const std::string& text)
            {
                std::ostringstream refusal;
                refusal.precision(std::numeric_limits<double>::digits10);
                refusal << '"' << text << "\" is not a "
                        << (std::numeric_limits<Value>::is_integer ? "whole " : "")
                        << "number from " << least << " to " << most;
                return ParseNumber(text, least, most) ? std::string() : refusal.str();
            });
}

/// Prints why a command line is wrong, or the help that it asks for. Returns the exit code.
int Refuse(const CLI::App& app, const CLI::ParseError& error)
{
    const std::vector<std::string> rest = app.remaining();
    if (app.get_subcommands().empty() && !rest.empty())
    {
        std::cerr << '"' << rest.front() << "\" is not a command of qlt\n"
                  << "Run with --help for more information.\n";
        return 2;
    }
    return app.exit(error) == 0 ? 0 : 2;
}

} // namespace

Option::Option(CLI::Option* option)
    : mOption(option)
{
}

Option Option::Required() const
{
    mOption->required();
    return *this;
}

Option Option::ShowDefault() const
{
    mOption->capture_default_str();
    return *this;
}

Option Option::Check(const std::function<std::string(const std::string&)>& check) const
{
    mOption->check(check);
    return *this;
}

CommandLine::CommandLine(CLI::App& app)
    : mApp(&app)
{
}

void CommandLine::Describe(const std::string& text) { mApp->description(text); }

Option CommandLine::Text(const std::string& name, std::string& value, const std::string& help)
{
    return Option(mApp->add_option(name, value, help));
}

Option CommandLine::Choice(const std::string& name, std::string& value,
                           const std::vector<std::string>& choices, const std::string& help)
{
    return Option(mApp->add_option(name, value, help)->check(CLI::IsMember(choices)));
}

Option CommandLine::File(const std::string& name, std::string& value, const std::string& help)
{
    return Text(name, value, help)
        .Check([](const std::string& file)
               { return std::string(file.empty() ? "the name of the file is missing" : ""); });
}

Option CommandLine::Number(const std::string& name, double& value, double least, double most,
                           const std::string& help)
{
    return AddNumber(*mApp, name, value, least, most, help);
}

Option CommandLine::Number(const std::string& name, int& value, int least, int most,
                           const std::string& help)
{
    return AddNumber(*mApp, name, value, least, most, help);
}

Option CommandLine::Number(const std::string& name, std::uint64_t& value, std::uint64_t least,
                           std::uint64_t most, const std::string& help)
{
    return AddNumber(*mApp, name, value, least, most, help);
}

void CommandLine::Flag(const std::string& name, bool& value, const std::string& help)
{
    mApp->add_flag(name, value, help);
}

void CommandLine::Source(std::string& source)
{
    File(
        "--source", source,
        "simulator, headset, or a file that plays at its own pace: a capture (.mcap), a recording, "
        "or a headset script (.json)")
        .ShowDefault();
}

void CommandLine::Filter(std::string& filter)
{
    Text("--filter", filter,
         "core for the filter of the headset tracker, kit for the kit's estimator")
        .ShowDefault()
        .Check(
            [](const std::string& name)
            {
                return name == "kit" || name == "core"
                           ? std::string()
                           : '"' + name + "\" is no filter; the filters are kit and core";
            });
}

Option CommandLine::Seconds(double& seconds, const std::string& help)
{
    return Number("--seconds", seconds, 0.001, MAX_SECONDS, help);
}

void CommandLine::Rest(const std::string& name, std::vector<std::string>& words,
                       const std::string& help)
{
    mApp->add_option(name, words, help)->required();
    mApp->positionals_at_end();
}

void CommandLine::AfterParsing(const std::function<void()>& check) { mApp->callback(check); }

CommandLine CommandLine::Subcommand(const std::string& name, const std::string& help)
{
    mApp->require_subcommand(1);
    return CommandLine(*mApp->add_subcommand(name, help));
}

bool CommandLine::IsGiven() const { return mApp->parsed(); }

void RequireDistinct(const std::vector<std::string>& inputs,
                     const std::vector<std::string>& outputs)
{
    const std::string clash = DescribeClash(inputs, outputs);
    Require(clash.empty(), clash);
}

void Require(bool isGood, const std::string& refusal)
{
    if (!isGood)
    {
        throw CLI::ValidationError(refusal);
    }
}

std::string FileOfSource(const std::string& source)
{
    return source == "simulator" || source == "headset" ? "" : source;
}

int RunCommand(const std::vector<Command>& commands, int argc, char** argv)
{
    CLI::App app("The command of the QueltaSDK.", "qlt");
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // on Windows a path may begin with a slash, too
    app.set_version_flag("--version", QLT_VERSION);
    std::map<const CLI::App*, CommandBody> bodies;
    for (const Command& command : commands)
    {
        CLI::App* subcommand = app.add_subcommand(command.name);
        bodies[subcommand] = command.add(CommandLine(*subcommand));
    }
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return Refuse(app, error);
    }
    return bodies.at(app.get_subcommands().front())();
}
