#pragma once

#include <objc/objc.h>

extern "C" void objc_msgSend(void);
