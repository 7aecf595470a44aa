// The subcommands of qlt, apart from their command lines: each returns the exit code, prints its
// result on standard output and what went wrong as one line on standard error.
#pragma once

#include <cstdint>
#include <string>

/// Version, device, constants, and what is connected.
int RunInfo();

struct MonitorOptions
{
    std::string source = "simulator"; // simulator, headset or a recording
    double seconds = 0.0;             // 0: until interrupted or the recording ends
    std::string csv;                  // empty: none
    bool objects = false;             // show what the host service tracks, too
};

int RunMonitor(const MonitorOptions& options);

struct ReplayOptions
{
    std::string recording;
    std::string truth; // empty: none
    std::string csv;   // empty: none
    bool json = false;
};

int RunReplay(const ReplayOptions& options);

struct SynthesizeOptions
{
    std::string recording;
    std::string truth; // empty: none
    double seconds = 30.0;
    std::uint64_t seed = 1;
    bool ideal = false; // without bias and noise
};

int RunSynthesize(const SynthesizeOptions& options);

struct MeshOptions
{
    bool rightEye = false;
    int resX = 32; // cells
    int resY = 36;
    bool strip = false;
    std::string svg; // empty: none, and so for the others
    std::string obj;
    std::string csv;
};

int RunMesh(const MeshOptions& options);

/// Draws the measured lens into an SVG file.
int RunOptics(const std::string& svg);

struct CameraOptions
{
    double seconds = 5.0;
    std::string png; // empty: none
};

/// Frame rate and statistics of the headset's camera.
int RunCamera(const CameraOptions& options);

struct ViewOptions
{
    std::string source = "simulator"; // simulator, headset or a recording
    double seconds = 0.0;             // 0: until the window is closed; 6 s into it for a picture
    std::string png;                  // empty: a window
};

/// Draws a scene from the tracked head, through the lenses: in a window, or one picture of it.
int RunView(const ViewOptions& options);

struct RecordOptions
{
    std::string recording;
    double seconds = 0.0; // 0: until interrupted
};

/// Writes the headset's reports down as they come.
int RunRecord(const RecordOptions& options);
