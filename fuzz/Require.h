#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the run with the reason, so that the fuzzer keeps the input.
#define ROOKBAY_REQUIRE(condition)                                                                                     \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "not kept: %s\n", #condition);                                                        \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)
