#include "output/FileNames.h"

#include <sys/stat.h>
#include <unistd.h>

bool IsStandardOutput(const std::filesystem::path& path)
{
    struct stat named
    {
    };
    struct stat standard
    {
    };
    return stat(path.c_str(), &named) == 0 && fstat(STDOUT_FILENO, &standard) == 0 &&
           named.st_dev == standard.st_dev && named.st_ino == standard.st_ino;
}

bool AreSameName(const std::filesystem::path& a, const std::filesystem::path& b) { return a == b; }
