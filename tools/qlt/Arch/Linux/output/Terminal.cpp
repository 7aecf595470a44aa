#include "output/Terminal.h"

#include <cerrno>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

bool StandardOutputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }

bool StandardErrorIsTerminal() { return isatty(STDERR_FILENO) != 0; }

bool PrepareStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    const bool isOpen = fcntl(STDOUT_FILENO, F_GETFD) != -1;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        if (fcntl(stream, F_GETFD) == -1)
        {
            // `open` returns the lowest free number, which is that of this stream.
            open("/dev/null", O_RDWR);
        }
    }
    return isOpen;
}

bool IsClosedPipe(int error) { return error == EPIPE; }

StandardOutputToError::StandardOutputToError()
{
    std::fflush(stdout);
    mSaved = dup(STDOUT_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

StandardOutputToError::~StandardOutputToError()
{
    std::fflush(stdout);
    dup2(mSaved, STDOUT_FILENO);
    close(mSaved);
}
