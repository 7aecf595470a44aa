#include "Settings/Log.h"

#include <cstdio>
#include <deque>
#include <mutex>

namespace qltxr
{

namespace
{

constexpr std::size_t KEPT = 8;

std::mutex gMutex; // guards the sentences
std::deque<std::string> gSentences;

} // namespace

void Say(const std::string& sentence)
{
    std::fprintf(stderr, "quelta openxr: %s\n", sentence.c_str());
    const std::lock_guard lock(gMutex);
    gSentences.push_back(sentence);
    if (gSentences.size() > KEPT)
    {
        gSentences.pop_front();
    }
}

std::vector<std::string> LastSentences()
{
    const std::lock_guard lock(gMutex);
    return {gSentences.begin(), gSentences.end()};
}

} // namespace qltxr
