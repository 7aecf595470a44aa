// Sentences for people, on standard error. Any thread may call.
#pragma once

#include <string>
#include <vector>

namespace qltxr
{

void Say(const std::string& sentence);

/// The last sentences, oldest first, at most eight.
std::vector<std::string> LastSentences();

} // namespace qltxr
