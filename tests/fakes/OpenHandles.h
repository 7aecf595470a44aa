// Counts the system's objects that this process holds. Each system has its own implementation.
#pragma once

#include <cstddef>

/// The number of open handles or descriptors.
std::size_t CountOpenHandles();

/// The largest number of handles that the system's runtime may have opened meanwhile and keeps. A
/// lock of the Windows runtime opens one when two threads first compete for it. Elsewhere the
/// number is 0.
extern const std::size_t RUNTIME_HANDLES;

std::size_t CountThreads();
