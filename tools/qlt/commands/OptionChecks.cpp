#include "commands/OptionChecks.h"

#include "output/OutputFile.h"

CLI::Option* RequireName(CLI::Option* option)
{
    return option->check(
        [](const std::string& name)
        { return std::string(name.empty() ? "the name of the file is missing" : ""); });
}

void RequireDistinct(const std::vector<std::string>& inputs,
                     const std::vector<std::string>& outputs)
{
    const std::string clash = DescribeClash(inputs, outputs);
    if (!clash.empty())
    {
        throw CLI::ValidationError(clash);
    }
}

std::string FileOfSource(const std::string& source)
{
    return source == "simulator" || source == "headset" ? "" : source;
}

void AddSource(CLI::App& command, std::string& source)
{
    RequireName(
        command.add_option("--source", source,
                           "simulator, headset, or a recording, which plays at its own pace"))
        ->capture_default_str();
}

void AddFilter(CLI::App& command, std::string& filter)
{
    command
        .add_option("--filter", filter,
                    "core, the filter of the headset tracker, or kit, the kit's estimator")
        ->check(
            [](const std::string& name)
            {
                return name == "kit" || name == "core"
                           ? std::string()
                           : '"' + name + "\" is no filter; the filters are kit and core";
            })
        ->capture_default_str();
}

CLI::Option* AddSeconds(CLI::App& command, double& seconds, const std::string& text)
{
    return RequireNumber(command.add_option("--seconds", seconds, text), 0.001, MAX_SECONDS);
}
