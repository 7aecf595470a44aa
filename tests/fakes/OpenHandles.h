// What this process has of the system. One body for each system.
#pragma once

#include <cstddef>

/// Handles or descriptors that are open.
std::size_t CountOpenHandles();

/// The most handles that the system's runtime may have taken meanwhile and keeps: a lock of the
/// Windows runtime takes one when it is first contended. None elsewhere.
extern const std::size_t RUNTIME_HANDLES;

std::size_t CountThreads();
