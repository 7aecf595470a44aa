// What this process has of the system. One body for each system.
#pragma once

#include <cstddef>

/// Handles or descriptors that are open.
std::size_t CountOpenHandles();

std::size_t CountThreads();
