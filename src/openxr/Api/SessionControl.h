// What the runtime does with a session on its own account. All with the runtime's lock held.
#pragma once

#include "Api/Runtime.h"

namespace qltxr
{

/// What the user did to the window: closing it asks the program to exit.
void HandleWindowEvents(Instance& instance);

/// The head's heading becomes the forward one, and the program is told.
void Recentre(Instance& instance);

} // namespace qltxr
