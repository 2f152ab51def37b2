/* What the cross compiler's C library lacks of the system's: extended attributes. */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C"
#endif
    ssize_t
    getxattr(const char* path, const char* name, void* value, size_t size, uint32_t position, int options);
