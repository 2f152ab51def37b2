#pragma once

#import <Foundation/Foundation.h>

#include "tests/macos/runtime/Recorder.h"

// Shorthands for the properties of faked objects, see Recorder.h.
namespace rb::fake {

// The mutable list behind a property, made on first use.
NSMutableArray* list(id owner, const char* name);
// A reference upwards that doesn't keep its object alive.
void setParent(id child, const char* name, id parent);
id parent(id child, const char* name);
// A view's or a window's frame, and the bounds that go with it.
void setFrame(id owner, NSRect frame);
void setInteger(id owner, const char* name, long value);

} // namespace rb::fake
