// A file that a command writes, with the same bytes on every system.
#pragma once

#include <cstdio>
#include <fstream>
#include <string>

class OutputFile
{
public:
    /// std::runtime_error when it cannot be created. An empty path writes nothing, anywhere.
    explicit OutputFile(const std::string& path);

    /// Text as of std::printf; up to 255 characters at once.
    template <typename... Values>
    void Print(const char* format, Values... values)
    {
        if (mFile.is_open())
        {
            Write(Format(format, values...));
        }
    }

    void Write(const std::string& bytes);

    /// Hands what was written to the system; false when that, or something before, has failed.
    bool Flush();

    /// std::runtime_error when something was not written, on a full disk for one.
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
    std::string mPath;
    std::ofstream mFile;
};
