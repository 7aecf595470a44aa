// On which core a thread runs: the scheduler would leave one pair of threads on one core and split
// another, which costs more than all that is measured. One body for each system.
#pragma once

/// The calling thread, and those that it makes from now on, run on this core only; counted from 0,
/// the last one when there are fewer.
void StayOnCore(unsigned core);
