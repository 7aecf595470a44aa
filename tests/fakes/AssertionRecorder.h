// Records failed preconditions instead of printing them, while it lives.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include <qlt/Runtime/Assert.h>

class AssertionRecorder
{
public:
    AssertionRecorder()
    {
        const std::lock_guard<std::mutex> lock(Mutex());
        Reports().clear();
        mPrevious = qlt::SetAssertionHandler(Record);
    }

    ~AssertionRecorder() { qlt::SetAssertionHandler(mPrevious); }

    AssertionRecorder(const AssertionRecorder&) = delete;
    AssertionRecorder& operator=(const AssertionRecorder&) = delete;

    /// What was reported since the last call, in order: "TEXT|FILE|LINE".
    std::vector<std::string> Take()
    {
        const std::lock_guard<std::mutex> lock(Mutex());
        std::vector<std::string> taken;
        taken.swap(Reports());
        return taken;
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
        const std::lock_guard<std::mutex> lock(Mutex());
        std::string& report = Reports().emplace_back();
        for (const wchar_t c : text)
        {
            report.push_back(static_cast<char>(c));
        }
    }

    static std::mutex& Mutex()
    {
        static std::mutex mutex;
        return mutex;
    }

    static std::vector<std::string>& Reports()
    {
        static std::vector<std::string> reports;
        return reports;
    }

    qlt::AssertionHandler mPrevious = nullptr;
};
