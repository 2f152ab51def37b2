#pragma once

#import <Foundation/Foundation.h>

#include <cstdarg>
#include <string>

// Shared by the fakes of Foundation values, which work for real. Only what a desktop may reasonably use of them is
// written; any other method falls back to the generic fake and is recorded.
namespace rb::fake {

inline std::string utf8(NSString* text) {
    return text ? text.UTF8String : "";
}
inline NSString* string(const std::string& text) {
    return [[NSString alloc] initWithUTF8String:text.c_str()];
}

// printf with %@ for objects.
std::string formatted(NSString* format, va_list arguments);

// As a test writes it: @"text", @3, @[@1, @2], <NSMenu>.
std::string describeValue(id object);

} // namespace rb::fake
