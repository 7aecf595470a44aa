// The settings of the user. They come from a file, and the environment replaces some of them.
#pragma once

#include "Graphics/Graphics.h"
#include "Tracking/TrackerSource.h"

#include <string>
#include <vector>

namespace qltxr
{

struct Configuration
{
    SourceSettings source;
    Person person = DefaultPerson();
    OutputSettings output;
    double rateHz = 0.0; // the rate of a display that does not report one; 0 means 60 Hz
    // The program is asked to exit after this number of frames; 0 means no limit.
    std::uint64_t frames = 0;
    std::string pictureFile;             // the PPM file of the last of these frames
    std::vector<std::string> complaints; // sentences about settings that were not understood
};

/// Reads the file CONFIG_HOME/quelta/openxr.json and the environment. A setting that is not
/// understood keeps its default, and a complaint names the file and the field.
Configuration LoadConfiguration();

/// Reads the settings from the text of such a file. `name` stands for the file in the complaints.
Configuration ParseConfiguration(const std::string& text, const std::string& name);

/// Returns the folder $XDG_CONFIG_HOME, or $HOME/.config when that is not set.
std::string ConfigHome();

} // namespace qltxr
