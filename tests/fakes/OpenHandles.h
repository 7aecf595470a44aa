// How many handles of the system this process has open. One body for each system.
#pragma once

#include <cstddef>

std::size_t CountOpenHandles();
