// Operations of the system that the installation and the status of the runtime need. Each wing
// implements them for its system.
#pragma once

#include <string>
#include <vector>

namespace qltxr
{

/// The folder of the running program's file, after all links are followed.
std::string ProgramFolder();

/// The name of the running program, without a folder.
std::string ProgramName();

int ProcessId();

/// A text that other programs of the same user can read while this object exists. The system
/// removes the text when the process ends, even after a crash.
class PublishedText
{
public:
    PublishedText();
    ~PublishedText();
    PublishedText(const PublishedText&) = delete;
    PublishedText& operator=(const PublishedText&) = delete;

    /// Replaces the text. One thread at a time.
    void Write(const std::string& text) const;

private:
    int mFile;
};

/// Returns the texts of all programs of this user that publish one.
std::vector<std::string> ReadPublishedTexts();

/// Runs a program with the environment of this process and waits for its end. Returns its exit
/// code, or 128 plus the number of the signal that ended it. Throws std::runtime_error when the
/// program cannot be started.
int RunProgram(const std::vector<std::string>& arguments);

} // namespace qltxr
