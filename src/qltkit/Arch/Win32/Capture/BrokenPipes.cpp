#include "Capture/BrokenPipes.h"

namespace qltkit
{

void LetWritesToBrokenPipesFail() {} // they always do on Windows

} // namespace qltkit
