#include <qlt/Runtime/Assert.h>

#include <qlt/Runtime/Log.h>

#include <atomic>
#include <string>

namespace qlt
{
namespace
{

std::atomic<AssertionHandler> gHandler{nullptr};

/// Condition texts and paths are always ASCII, so one byte for each character loses nothing.
std::string Narrow(const wchar_t* text)
{
    std::string narrow;
    for (; *text != L'\0'; ++text)
    {
        narrow.push_back(static_cast<char>(*text));
    }
    return narrow;
}

void PrintAssertion(const wchar_t* condition, const wchar_t* file, unsigned line)
{
    const std::string text = "Assertion failed: " + Narrow(condition) + ", file " + Narrow(file) +
                             ", line " + std::to_string(line);
    WriteLog(LogLevel::Error, text.c_str());
}

} // namespace

AssertionHandler SetAssertionHandler(AssertionHandler handler) noexcept
{
    return gHandler.exchange(handler);
}

void ReportAssertion(const wchar_t* condition, const wchar_t* file, unsigned line)
{
    const AssertionHandler handler = gHandler.load();
    (handler != nullptr ? handler : PrintAssertion)(condition, file, line);
}

} // namespace qlt
