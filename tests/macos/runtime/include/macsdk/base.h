#pragma once

/* Stands in for the base of the generated headers where they are used on Linux. */
#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <MacTypes.h>
#include <dispatch/dispatch.h>
#include <mach/mach.h>
#include <objc/NSObject.h>
#include <objc/runtime.h>

typedef unsigned char uuid_t[16];

/* A fake written by hand implements part of a class; the rest is left to the generic fake, accessors included. */
#ifdef RB_FAKE_IMPLEMENTATION
#define MACSDK_CLASS __attribute__((objc_requires_property_definitions))
#else
#define MACSDK_CLASS
#endif
