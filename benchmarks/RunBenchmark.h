#pragma once

#include <cstdio>
#include <cstring>
#include <exception>

namespace rb {

// The main of a benchmark that measures as its plan says: the whole one, or with --quick a rougher one. Returns the
// exit code: 0 measured, 1 it couldn't, with the reason on standard error, 2 other arguments.
template <class Plan>
int runBenchmark(int argc, char** argv, const char* name, const Plan& whole, const Plan& quick,
                 void (*measure)(const Plan&)) {
    const bool isQuick = argc == 2 && std::strcmp(argv[1], "--quick") == 0;
    if (argc != 1 && !isQuick) {
        std::fprintf(stderr, "usage: %s [--quick]\n", name);
        return 2;
    }
    try {
        measure(isQuick ? quick : whole);
        return 0;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
}

} // namespace rb
