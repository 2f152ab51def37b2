#pragma once

#include <objc/objc.h>

#include <stdint.h>

typedef uintptr_t objc_AssociationPolicy;
enum : objc_AssociationPolicy { OBJC_ASSOCIATION_RETAIN_NONATOMIC = 1, OBJC_ASSOCIATION_COPY_NONATOMIC = 3 };

extern "C" {
Class object_getClass(id object);
const char* class_getName(Class cls);
Class class_getSuperclass(Class cls);
BOOL class_respondsToSelector(Class cls, SEL selector);
Class objc_getClass(const char* name);
Class objc_lookUpClass(const char* name);
id objc_getAssociatedObject(id object, const void* key);
void objc_setAssociatedObject(id object, const void* key, id value, objc_AssociationPolicy policy);
}
