#include <qlt/Runtime/Assert.h>

#include <atomic>
#include <cstdio>
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
    // One call prints the whole line, so that the lines of several threads do not mix. The text is
    // narrow, because a stream that has printed narrow characters drops wide characters.
    std::fprintf(stderr, "Assertion failed: %s, file %s, line %u\n", Narrow(condition).c_str(),
                 Narrow(file).c_str(), line);
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
