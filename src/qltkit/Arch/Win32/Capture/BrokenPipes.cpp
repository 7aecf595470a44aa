#include "Capture/BrokenPipes.h"

namespace qltkit
{

void LetWritesToBrokenPipesFail() {} // they always fail on Windows

} // namespace qltkit
