#pragma once

#include <objc/NSObject.h>

#include <stdint.h>
#include <time.h>

/* libdispatch as the fakes give it: queues run on the test's thread, when the test lets them. */
@interface RBFakeDispatchObject : NSObject
@end

typedef RBFakeDispatchObject* dispatch_object_t;
typedef RBFakeDispatchObject* dispatch_queue_t;
typedef RBFakeDispatchObject* dispatch_source_t;
typedef RBFakeDispatchObject* dispatch_group_t;
typedef RBFakeDispatchObject* dispatch_data_t;
typedef RBFakeDispatchObject* dispatch_semaphore_t;
typedef RBFakeDispatchObject* dispatch_queue_attr_t;
typedef void (^dispatch_block_t)(void);
typedef void (*dispatch_function_t)(void*);
typedef uint64_t dispatch_time_t;
typedef long dispatch_once_t;
typedef unsigned int dispatch_qos_class_t;
typedef unsigned int qos_class_t;
typedef int dispatch_source_type_t;

#define DISPATCH_SOURCE_TYPE_TIMER 1
#define DISPATCH_SOURCE_TYPE_VNODE 2
#define DISPATCH_SOURCE_TYPE_READ 3
#define DISPATCH_SOURCE_TYPE_PROC 4
#define DISPATCH_SOURCE_TYPE_SIGNAL 5
#define DISPATCH_VNODE_DELETE 0x1UL
#define DISPATCH_VNODE_WRITE 0x2UL
#define DISPATCH_VNODE_EXTEND 0x4UL
#define DISPATCH_VNODE_ATTRIB 0x8UL
#define DISPATCH_VNODE_LINK 0x10UL
#define DISPATCH_VNODE_RENAME 0x20UL
#define DISPATCH_VNODE_REVOKE 0x40UL
#define DISPATCH_PROC_EXIT 0x80000000UL
#define DISPATCH_TIME_NOW 0ull
#define DISPATCH_TIME_FOREVER (~0ull)
#define DISPATCH_QUEUE_SERIAL nullptr
#define DISPATCH_QUEUE_CONCURRENT nullptr
#define NSEC_PER_SEC 1000000000ull
#define NSEC_PER_MSEC 1000000ull
#define NSEC_PER_USEC 1000ull
#define USEC_PER_SEC 1000000ull
#define QOS_CLASS_USER_INTERACTIVE 0x21u
#define QOS_CLASS_USER_INITIATED 0x19u
#define QOS_CLASS_DEFAULT 0x15u
#define QOS_CLASS_UTILITY 0x11u
#define QOS_CLASS_BACKGROUND 0x09u

extern "C" {
dispatch_queue_t _Nonnull dispatch_get_main_queue(void);
dispatch_queue_t _Nonnull dispatch_get_global_queue(intptr_t quality, uintptr_t flags);
dispatch_queue_t _Nonnull dispatch_queue_create(const char* _Nullable label,
                                                dispatch_queue_attr_t _Nullable attributes);
dispatch_queue_attr_t _Nullable dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t _Nullable attributes,
                                                                        dispatch_qos_class_t quality, int priority);
void dispatch_async(dispatch_queue_t _Nonnull queue, dispatch_block_t _Nonnull block);
void dispatch_async_f(dispatch_queue_t _Nonnull queue, void* _Nullable context, dispatch_function_t _Nonnull work);
void dispatch_sync(dispatch_queue_t _Nonnull queue, dispatch_block_t _Nonnull block);
void dispatch_after(dispatch_time_t when, dispatch_queue_t _Nonnull queue, dispatch_block_t _Nonnull block);
void dispatch_once(dispatch_once_t* _Nonnull once, dispatch_block_t _Nonnull block);
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds);
dispatch_time_t dispatch_walltime(const struct timespec* _Nullable when, int64_t nanoseconds);
dispatch_source_t _Nonnull dispatch_source_create(dispatch_source_type_t type, uintptr_t handle, uintptr_t mask,
                                                  dispatch_queue_t _Nullable queue);
void dispatch_source_set_timer(dispatch_source_t _Nonnull source, dispatch_time_t start, uint64_t interval,
                               uint64_t leeway);
void dispatch_source_set_event_handler(dispatch_source_t _Nonnull source, dispatch_block_t _Nullable handler);
void dispatch_source_set_cancel_handler(dispatch_source_t _Nonnull source, dispatch_block_t _Nullable handler);
void dispatch_source_cancel(dispatch_source_t _Nonnull source);
long dispatch_source_testcancel(dispatch_source_t _Nonnull source);
uintptr_t dispatch_source_get_data(dispatch_source_t _Nonnull source);
uintptr_t dispatch_source_get_handle(dispatch_source_t _Nonnull source);
void dispatch_resume(dispatch_object_t _Nonnull object);
void dispatch_activate(dispatch_object_t _Nonnull object);
void dispatch_suspend(dispatch_object_t _Nonnull object);
}
