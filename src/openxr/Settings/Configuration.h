// What the user has set: in a file, and over it in the environment.
#pragma once

#include "Graphics/Graphics.h"

#include <string>
#include <vector>

namespace qltxr
{

struct Configuration
{
    std::string
        source; // as `qlt monitor --source` has it; empty for the headset, or else a still one
    std::string filter; // of the orientation; empty for the default one
    Person person = DefaultPerson();
    OutputSettings output;
    double rateHz = 0.0;      // of a display that does not say its own; 0 for 60
    std::uint64_t frames = 0; // of the program, after which it is asked to exit; 0 for no limit
    std::string pictureFile;  // of the last of these frames, as PPM
    std::vector<std::string> complaints; // sentences about what was not understood
};

/// Reads the file CONFIG_HOME/quelta/openxr.json and the environment. What is not understood leaves
/// its default and a complaint that names the file and the field.
Configuration LoadConfiguration();

/// Of a text as in the file; `name` is for the complaints.
Configuration ParseConfiguration(const std::string& text, const std::string& name);

/// The folder $XDG_CONFIG_HOME, or else $HOME/.config.
std::string ConfigHome();

} // namespace qltxr
