// Shows the progress of a long command.
#pragma once

#include <chrono>
#include <string>

/// A line on standard error with a bar. It appears when the work takes longer than a second, and
/// only on a terminal. One thread may use an object.
class Progress
{
public:
    Progress();

    /// Removes the line.
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Shows the done share of the work, from 0 to 1, and a text of at most 40 characters. Without
    /// a known end of the work the share is negative, and there is only the text. Call it as often
    /// as you like: most calls only read the clock.
    void Show(double share, const std::string& text = {});

private:
    const bool mTerminal;
    std::chrono::steady_clock::time_point mDue;
    std::size_t mWidth = 0; // the width of the line on the screen
};
