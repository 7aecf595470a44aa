// A file that a command writes, with the same bytes on every system.
//
// A regular file is written under a temporary name beside it and takes its name at Close, so that
// an older file is replaced only by a complete one. Pipes and devices are written directly.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

class OutputFile
{
public:
    /// std::runtime_error when it cannot be created. An empty path writes nothing, anywhere.
    explicit OutputFile(const std::string& path);

    /// Removes what was not completed.
    ~OutputFile();

    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Text as of std::printf; up to 255 characters at once.
    template <typename... Values>
    void Print(const char* format, Values... values)
    {
        if (mFile != nullptr)
        {
            Write(Format(format, values...));
        }
    }

    void Write(const std::string& bytes);

    /// Hands what was written to the system; false when that, or something before, has failed.
    bool Flush();

    /// Completes the file. std::runtime_error when something was not written, on a full disk for
    /// one; the older file and the part that was written are both kept. A reader that has closed
    /// its pipe is no error.
    void Close();

    /// The text by itself.
    template <typename... Values>
    static std::string Format(const char* format, Values... values)
    {
        char text[256] = {};
        std::snprintf(text, sizeof text, format, values...);
        return text;
    }

private:
    void Open();
    void OpenTemporary();

    const std::string mName; // as the user calls it
    std::filesystem::path mPath;
    std::string mTemporary; // empty for a pipe or a device
    std::FILE* mFile = nullptr;
    int mError = 0; // errno of the first failure
};

/// A sentence that says which output has the name of an input or of another output, through
/// whatever links and spellings; empty when there is none. Empty names are left out.
std::string DescribeClash(const std::vector<std::string>& inputs,
                          const std::vector<std::string>& outputs);
