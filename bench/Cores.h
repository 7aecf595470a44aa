// Binds threads to cores. Otherwise the scheduler would run one pair of threads on one core and
// split another pair, which costs more than the measured work. Each wing implements these functions
// for its system.
#pragma once

/// Binds the calling thread, and the threads that it creates later, to one core. Cores count from
/// 0; a number past the last core means the last core.
void StayOnCore(unsigned core);
