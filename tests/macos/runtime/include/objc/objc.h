#pragma once

/* The basic types of the Objective-C language. */
typedef signed char BOOL;
typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef struct objc_selector* SEL;
typedef id (*IMP)(id, SEL, ...);
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr
#define Nil nullptr

extern "C" {
const char* sel_getName(SEL selector);
SEL sel_registerName(const char* name);
const char* object_getClassName(id object);
}
