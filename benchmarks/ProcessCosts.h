#pragma once

#include <cstdint>
#include <sys/types.h>

namespace rb {

// What a process has used up to now, over all its threads.
struct ProcessCosts {
    double cpuSeconds = 0;
    std::uint64_t wakeUps = 0; // times that a thread went to sleep by itself, and so was woken
};
ProcessCosts costsOf(pid_t pid);

// Its proportional share of memory, and what nobody shares with it, in MiB.
struct ProcessMemory {
    double proportional = 0;
    double unshared = 0;
};
ProcessMemory memoryOf(pid_t pid);

} // namespace rb
