// What installing and watching the runtime need of the system. One body for each.
#pragma once

#include <string>
#include <vector>

namespace qltxr
{

/// The folder of the running program's file, links resolved.
std::string ProgramFolder();

/// The name of the running program, without a folder.
std::string ProgramName();

int ProcessId();

/// A text that other programs of the same user can read while this lives. The system takes it away
/// with the process, however that ends.
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

/// The texts of all programs of this user that publish one.
std::vector<std::string> ReadPublishedTexts();

/// Runs a program with the environment of this process and waits for its end: its exit code, 128
/// plus the number of the signal that ended it. std::runtime_error when it cannot be started.
int RunProgram(const std::vector<std::string>& arguments);

} // namespace qltxr
