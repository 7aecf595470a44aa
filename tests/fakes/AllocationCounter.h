// Counts every allocation of the process with operator new, the library's included.
#pragma once

/// Since the start of the process.
long AllocationCount();
