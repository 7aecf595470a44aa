// Changes that the runtime itself makes to a session. The caller holds the runtime's lock.
#pragma once

#include "Api/Runtime.h"

namespace qltxr
{

/// Handles the user's actions on the window. When the user closes the window, the program is asked
/// to exit.
void HandleWindowEvents(Instance& instance);

/// Makes the current heading the forward direction and tells the program.
void Recentre(Instance& instance);

} // namespace qltxr
