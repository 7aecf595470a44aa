#include "Capture/BrokenPipes.h"

#include <csignal>

#include <pthread.h>

namespace qltkit
{

void LetWritesToBrokenPipesFail()
{
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace qltkit
