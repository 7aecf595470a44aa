// What becomes of a thread that writes to a pipe that nobody reads any more.
#pragma once

namespace qltkit
{

/// From now on such a write of the calling thread fails, as on every other device, and does not end
/// the process.
void LetWritesToBrokenPipesFail();

} // namespace qltkit
