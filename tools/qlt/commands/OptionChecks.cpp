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
