#include "output/Progress.h"

#include "output/OutputFile.h"
#include "output/Terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::seconds PATIENCE(1); // shorter work shows no bar
constexpr std::chrono::milliseconds PERIOD(100);

std::string Bar(double share)
{
    constexpr std::size_t WIDTH = 30;
    const double whole = std::clamp(share, 0.0, 1.0);
    const auto filled = static_cast<std::size_t>(std::lround(whole * WIDTH));
    return '[' + std::string(filled, '#') + std::string(WIDTH - filled, '.') +
           OutputFile::Format("] %3.0f %%  ", std::floor(whole * 100.0));
}

} // namespace

Progress::Progress()
    : mTerminal(StandardErrorIsTerminal())
    , mDue(SteadyClock::now() + PATIENCE)
{
}

Progress::~Progress()
{
    if (mWidth != 0)
    {
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(mWidth), "");
        std::fflush(stderr);
    }
}

void Progress::Show(double share, const std::string& text)
{
    if (!mTerminal || SteadyClock::now() < mDue)
    {
        return;
    }
    const std::string line = (share < 0.0 ? "" : Bar(share)) + text;
    // Overwrite the old text with spaces, because not every console knows the escape sequence for
    // that.
    std::fprintf(stderr, "\r%-*s", static_cast<int>(mWidth), line.c_str());
    std::fflush(stderr);
    mWidth = line.size();
    mDue = SteadyClock::now() + PERIOD;
}
