#include "OutputFile.h"

#include <stdexcept>

OutputFile::OutputFile(const std::string& path)
    : mPath(path)
{
    if (mPath.empty())
    {
        return;
    }
    mFile.open(mPath, std::ios::binary);
    if (!mFile)
    {
        throw std::runtime_error("cannot write " + mPath);
    }
}

void OutputFile::Write(const std::string& bytes)
{
    if (mFile.is_open())
    {
        mFile.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
}

bool OutputFile::Flush() { return static_cast<bool>(mFile.flush()); }

void OutputFile::Close()
{
    if (!mFile.is_open())
    {
        return;
    }
    mFile.close();
    if (!mFile)
    {
        throw std::runtime_error("cannot write all of " + mPath);
    }
}
