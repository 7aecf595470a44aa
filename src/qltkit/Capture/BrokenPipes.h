#pragma once

namespace qltkit
{

/// After this call a write of the calling thread to a pipe without a reader fails, as on every
/// other device. It does not end the process.
void LetWritesToBrokenPipesFail();

} // namespace qltkit
