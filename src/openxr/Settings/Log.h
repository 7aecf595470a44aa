// Prints sentences for people on standard error. Any thread may call.
#pragma once

#include <string>
#include <vector>

namespace qltxr
{

void Say(const std::string& sentence);

/// Returns the last sentences, at most eight, the oldest first.
std::vector<std::string> LastSentences();

} // namespace qltxr
