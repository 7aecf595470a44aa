#include "Capture/BrokenPipes.h"

namespace qltkit
{

void LetWritesToBrokenPipesFail() {} // such writes always fail on Windows

} // namespace qltkit
