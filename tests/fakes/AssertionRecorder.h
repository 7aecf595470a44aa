// Records failed preconditions while it exists. They are not printed.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <qlt/Runtime/Assert.h>

class AssertionRecorder
{
public:
    AssertionRecorder() { Take(); }
    ~AssertionRecorder() { qlt::SetAssertionHandler(mPrevious); }

    /// The reports since the last call, in their order, as "TEXT|FILE|LINE".
    std::vector<std::string> Take()
    {
        const std::lock_guard<std::mutex> lock(sMutex);
        return std::exchange(sReports, {});
    }

    /// The same without the lines, for preconditions whose line is not part of the interface:
    /// "TEXT|FILE".
    std::vector<std::string> TakeTexts()
    {
        std::vector<std::string> taken = Take();
        for (std::string& report : taken)
        {
            report.erase(report.rfind('|'));
        }
        return taken;
    }

private:
    static void Record(const wchar_t* condition, const wchar_t* file, unsigned line)
    {
        const std::wstring text =
            std::wstring(condition) + L"|" + file + L"|" + std::to_wstring(line);
        const std::lock_guard<std::mutex> lock(sMutex);
        sReports.emplace_back(text.begin(), text.end());
    }

    inline static std::mutex sMutex; // guards the members below
    inline static std::vector<std::string> sReports;
    const qlt::AssertionHandler mPrevious = qlt::SetAssertionHandler(Record);
};
