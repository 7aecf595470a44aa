// Records failed preconditions instead of printing them, while it lives.
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

    /// What was reported since the last call, in order: "TEXT|FILE|LINE".
    std::vector<std::string> Take()
    {
        const std::lock_guard<std::mutex> lock(sMutex);
        return std::exchange(sReports, {});
    }

    /// The same without the lines, for preconditions whose line is nobody's business: "TEXT|FILE".
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

    inline static std::mutex sMutex; // guards what follows
    inline static std::vector<std::string> sReports;
    const qlt::AssertionHandler mPrevious = qlt::SetAssertionHandler(Record);
};
