// Counts every allocation of the process with operator new, including those of the library.
#pragma once

/// The number of allocations since the start of the process.
long AllocationCount();

/// The number of allocations by the calling thread since its start.
long ThreadAllocationCount();
