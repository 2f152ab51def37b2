#pragma once

#include_next <fcntl.h>

/* The system's command, which the C library beneath doesn't know and refuses. */
#define F_SETNOSIGPIPE 73
