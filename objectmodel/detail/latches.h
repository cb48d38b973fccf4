// The answers of the probes.
#pragma once

#include <windows.h>

#include <atomic>

// -1 before the probe, then 1 (the host has the property) or 0 (it lacks it). Written once a process. Threads
// that race for the first probe at most repeat it: the first answer stays.
extern std::atomic<LONG> Formula2Available;  // Range.Formula2 and Range.Formula2Local
extern std::atomic<LONG> HasSpillAvailable;  // Range.HasSpill and its companions
