// Sentences for people, on standard error.
#pragma once

#include <cstdio>
#include <string>

namespace qltxr
{

inline void Say(const std::string& sentence)
{
    std::fprintf(stderr, "quelta openxr: %s\n", sentence.c_str());
}

} // namespace qltxr
