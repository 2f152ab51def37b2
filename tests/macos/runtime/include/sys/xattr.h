#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

/* The system's form of the call, under a name of our own: the C library beneath has another one. */
extern "C" ssize_t getxattr(const char* _Nonnull path, const char* _Nonnull name, void* _Nullable value, size_t size,
                            uint32_t position, int options) __asm__("rbfake_getxattr");
