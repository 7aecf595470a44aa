// A file that a command writes, with the same bytes on every system. It is a qltkit::OutputFile, or
// standard output. A signal that ends the process removes the file's temporary part.
#pragma once

#include <qltkit/Capture/OutputFile.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

class OutputFile
{
public:
    /// Throws std::runtime_error when the file cannot be created. With an empty path, all
    /// operations do nothing.
    explicit OutputFile(const std::string& path);

    /// Removes a file that was not completed.
    ~OutputFile();

    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Writes text in the manner of std::printf, at most 255 characters at once.
    template <typename... Values>
    void Print(const char* format, Values... values)
    {
        if (!mName.empty())
        {
            Write(Format(format, values...));
        }
    }

    void Write(const std::string& bytes);

    /// Hands the written bytes to the system. Returns false when that or an earlier write has
    /// failed.
    bool Flush();

    /// Completes the file. Throws std::runtime_error when a write has failed, for example on a full
    /// disk; the older file and the part that was written are both kept. A reader that closes its
    /// pipe causes no error.
    void Close();

    /// Returns the text that Print would write.
    template <typename... Values>
    static std::string Format(const char* format, Values... values)
    {
        char text[256] = {};
        std::snprintf(text, sizeof text, format, values...);
        return text;
    }

private:
    const std::string mName; // the name as the user wrote it
    std::optional<qltkit::OutputFile> mFile;
    bool mIsStandardOutput = false;
    int mError = 0; // errno of the first failure of standard output
};

/// Returns a sentence when an output is the same file as an input or another output, through any
/// links and spellings. The sentence names the output. The result is empty when all files differ.
/// Empty names are left out.
std::string DescribeClash(const std::vector<std::string>& inputs,
                          const std::vector<std::string>& outputs);
