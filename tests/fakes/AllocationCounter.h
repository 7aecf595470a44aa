// Counts every allocation of the process with operator new, the library's included.
#pragma once

/// Since the start of the process.
long AllocationCount();

/// Since the start of the calling thread, by that thread alone.
long ThreadAllocationCount();
