// The clock of the fakes and all that runs by it: dispatch queues and sources, NSTimer, delayed calls. Nothing runs
// on its own; a test lets it run with runMainQueue() and advance(). There is one thread and one order of things.
#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>

#include "tests/macos/runtime/Recorder.h"
#include "tests/macos/runtime/Runtime.h"

#include <algorithm>
#include <cstdio>
#include <deque>

namespace rb::fake {
namespace {

struct Task {
    double due;
    long order;
    double interval; // 0: once
    long identifier;
    std::function<void()> work;
};

struct Clock {
    double now = 1000;
    long nextOrder = 0;
    long nextIdentifier = 1;
    std::vector<Task> tasks;
};

Clock& clock() {
    static auto* instance = new Clock;
    return *instance;
}

long schedule(double delay, double interval, std::function<void()> work) {
    Clock& state = clock();
    const long identifier = state.nextIdentifier++;
    state.tasks.push_back({state.now + std::max(delay, 0.0), state.nextOrder++, interval, identifier, std::move(work)});
    return identifier;
}

void cancel(long identifier) {
    auto& tasks = clock().tasks;
    tasks.erase(
        std::remove_if(tasks.begin(), tasks.end(), [&](const Task& task) { return task.identifier == identifier; }),
        tasks.end());
}

// Runs the earliest task due by `limit`. Returns whether there was one.
bool runNext(double limit) {
    Clock& state = clock();
    const auto next = std::min_element(state.tasks.begin(), state.tasks.end(), [](const Task& a, const Task& b) {
        return a.due != b.due ? a.due < b.due : a.order < b.order;
    });
    if (next == state.tasks.end() || next->due > limit)
        return false;
    state.now = std::max(state.now, next->due);
    const auto work = next->work;
    if (next->interval > 0) {
        next->due += next->interval;
        next->order = state.nextOrder++;
    } else {
        state.tasks.erase(next);
    }
    @autoreleasepool {
        work();
    }
    return true;
}

// Blocks of the caller live on its stack until they are copied.
dispatch_block_t keep(dispatch_block_t block) {
    return [block copy];
}

// A loop that posts to itself for ever is a fault of the code under test, not a reason to hang.
void runUntil(double limit) {
    for (int count = 0; runNext(limit); ++count) {
        if (count == 100000) {
            std::fputs("100000 tasks ran and more are due: does something post itself again and again?\n", stderr);
            std::abort();
        }
    }
}

__attribute__((constructor(103))) void install() {
    onReset([] {
        clock().tasks.clear();
        clock().now = 1000;
    });
}

} // namespace

double now() {
    return clock().now;
}

void advance(double seconds) {
    const double until = clock().now + seconds;
    runUntil(until);
    clock().now = until;
}

void runMainQueue() {
    runUntil(clock().now);
}

} // namespace rb::fake

using rb::fake::cancel;
using rb::fake::keep;
using rb::fake::schedule;

@interface RBFakeDispatchObject (Told)
- (void)tell;
@end

@implementation RBFakeDispatchObject {
@public
    dispatch_block_t handler_;
    dispatch_block_t cancelHandler_;
    long task_;
    double start_;
    double interval_;
    BOOL resumed_;
    BOOL cancelled_;
    uintptr_t handle_;
    uintptr_t data_;
    dispatch_source_type_t type_;
}
- (void)arm {
    cancel(task_);
    if (!resumed_ || cancelled_ || type_ != DISPATCH_SOURCE_TYPE_TIMER)
        return;
    __weak RBFakeDispatchObject* source = self;
    task_ = schedule(start_ - rb::fake::now(), interval_, [source] {
        RBFakeDispatchObject* fired = source;
        if (fired && fired->handler_)
            fired->handler_();
    });
}
- (void)tell {
    if (!resumed_ || cancelled_ || !handler_)
        return;
    dispatch_block_t handler = handler_; // it may cancel the source
    handler();
}
- (void)dealloc {
    cancel(task_);
}
@end

namespace {
RBFakeDispatchObject* namedQueue(const char* name) {
    static auto* queues = new std::map<std::string, RBFakeDispatchObject*>;
    RBFakeDispatchObject* __strong& queue = (*queues)[name];
    if (!queue) {
        queue = [[RBFakeDispatchObject alloc] init];
        rb::fake::onReset([] { queues->clear(); });
    }
    return queue;
}

// By descriptor; sources that are gone leave a nil.
std::multimap<uintptr_t, __weak RBFakeDispatchObject*>& vnodeSources() {
    static auto* sources = [] {
        auto* made = new std::multimap<uintptr_t, __weak RBFakeDispatchObject*>;
        rb::fake::onReset([made] { made->clear(); });
        return made;
    }();
    return *sources;
}

double seconds(dispatch_time_t when) {
    return static_cast<double>(when) / 1e9;
}
} // namespace

void rb::fake::changeVnode(int descriptor) {
    const auto [first, last] = vnodeSources().equal_range(static_cast<uintptr_t>(descriptor));
    for (auto source = first; source != last; ++source) {
        __weak RBFakeDispatchObject* weak = source->second;
        schedule(0, 0, [weak] {
            RBFakeDispatchObject* told = weak;
            [told tell];
        });
    }
}

extern "C" {

dispatch_queue_t dispatch_get_main_queue(void) {
    return namedQueue("main");
}
dispatch_queue_t dispatch_get_global_queue(intptr_t quality, uintptr_t flags) {
    rb::fake::recordFunction("dispatch_get_global_queue", {quality, flags});
    return namedQueue(("global " + std::to_string(quality)).c_str());
}
dispatch_queue_t dispatch_queue_create(const char*, dispatch_queue_attr_t) {
    return [[RBFakeDispatchObject alloc] init];
}
dispatch_queue_attr_t dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t, dispatch_qos_class_t, int) {
    return nil;
}
void dispatch_async(dispatch_queue_t, dispatch_block_t block) {
    schedule(0, 0, [kept = keep(block)] { kept(); });
}
void dispatch_async_f(dispatch_queue_t, void* context, dispatch_function_t work) {
    schedule(0, 0, [context, work] { work(context); });
}
void dispatch_sync(dispatch_queue_t, dispatch_block_t block) {
    block();
}
void dispatch_after(dispatch_time_t when, dispatch_queue_t, dispatch_block_t block) {
    schedule(seconds(when) - rb::fake::now(), 0, [kept = keep(block)] { kept(); });
}
void dispatch_once(dispatch_once_t* once, dispatch_block_t block) {
    if (!*once) {
        *once = 1;
        block();
    }
}
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds) {
    const double base = when == DISPATCH_TIME_NOW ? rb::fake::now() * 1e9 : static_cast<double>(when);
    return static_cast<dispatch_time_t>(base + static_cast<double>(nanoseconds));
}
dispatch_time_t dispatch_walltime(const struct timespec*, int64_t nanoseconds) {
    return dispatch_time(DISPATCH_TIME_NOW, nanoseconds);
}
dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t handle, uintptr_t mask,
                                         dispatch_queue_t queue) {
    rb::fake::recordFunction("dispatch_source_create", {type, handle, mask, (id)queue});
    RBFakeDispatchObject* source = [[RBFakeDispatchObject alloc] init];
    source->type_ = type;
    source->handle_ = handle;
    if (type == DISPATCH_SOURCE_TYPE_VNODE)
        vnodeSources().emplace(handle, source);
    return source;
}
void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, uint64_t interval, uint64_t) {
    source->start_ = start == DISPATCH_TIME_NOW ? rb::fake::now() : seconds(start);
    source->interval_ = interval == DISPATCH_TIME_FOREVER ? 0 : static_cast<double>(interval) / 1e9;
    [source arm];
}
void dispatch_source_set_event_handler(dispatch_source_t source, dispatch_block_t handler) {
    source->handler_ = [handler copy];
}
void dispatch_source_set_cancel_handler(dispatch_source_t source, dispatch_block_t handler) {
    source->cancelHandler_ = [handler copy];
}
void dispatch_source_cancel(dispatch_source_t source) {
    if (source->cancelled_)
        return;
    source->cancelled_ = YES;
    cancel(source->task_);
    source->handler_ = nil;
    if (dispatch_block_t handler = source->cancelHandler_)
        schedule(0, 0, [handler] { handler(); });
    source->cancelHandler_ = nil;
}
long dispatch_source_testcancel(dispatch_source_t source) {
    return source->cancelled_;
}
uintptr_t dispatch_source_get_data(dispatch_source_t source) {
    return source->data_;
}
uintptr_t dispatch_source_get_handle(dispatch_source_t source) {
    return source->handle_;
}
void dispatch_resume(dispatch_object_t object) {
    object->resumed_ = YES;
    [object arm];
}
void dispatch_activate(dispatch_object_t object) {
    dispatch_resume(object);
}
void dispatch_suspend(dispatch_object_t object) {
    object->resumed_ = NO;
    [object arm];
}

double CACurrentMediaTime(void) {
    return rb::fake::now();
}
CFAbsoluteTime CFAbsoluteTimeGetCurrent(void) {
    return rb::fake::now();
}
}

// A scheduled timer is owned by the run loop until it is invalidated or, without repeats, has fired; it owns its block
// or its target.
@implementation NSTimer {
    void (^block_)(NSTimer*);
    id target_;
    SEL action_;
    id info_;
    double interval_;
    BOOL repeats_;
    BOOL valid_;
    long task_;
}
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval repeats:(BOOL)repeats block:(void (^)(NSTimer*))block {
    NSTimer* timer = [[self alloc] init];
    timer->interval_ = interval;
    timer->repeats_ = repeats;
    timer->block_ = [block copy];
    timer->valid_ = YES;
    return timer;
}
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                           target:(id)target
                         selector:(SEL)action
                         userInfo:(id)info
                          repeats:(BOOL)repeats {
    NSTimer* timer = [self timerWithTimeInterval:interval repeats:repeats block:nil];
    timer->target_ = target;
    timer->action_ = action;
    timer->info_ = info;
    return timer;
}
+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)interval
                                   repeats:(BOOL)repeats
                                     block:(void (^)(NSTimer*))block {
    NSTimer* timer = [self timerWithTimeInterval:interval repeats:repeats block:block];
    [timer startInRunLoop];
    return timer;
}
+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)interval
                                    target:(id)target
                                  selector:(SEL)action
                                  userInfo:(id)info
                                   repeats:(BOOL)repeats {
    NSTimer* timer = [self timerWithTimeInterval:interval target:target selector:action userInfo:info repeats:repeats];
    [timer startInRunLoop];
    return timer;
}
- (void)startInRunLoop {
    if (!task_ && valid_)
        task_ = schedule(interval_, repeats_ ? std::max(interval_, 1e-4) : 0, [self] { [self fire]; });
}
- (void)fire {
    if (!valid_)
        return;
    if (block_)
        block_(self);
    else
        [target_ performSelector:action_ withObject:self];
    if (!repeats_)
        [self invalidate];
}
- (void)invalidate {
    valid_ = NO;
    block_ = nil;
    target_ = nil;
    info_ = nil;
    const long task = task_;
    task_ = 0;
    cancel(task); // last: it may hold the only reference to this timer
}
- (BOOL)isValid {
    return valid_;
}
- (NSTimeInterval)timeInterval {
    return repeats_ ? interval_ : 0;
}
- (id)userInfo {
    return info_;
}
@end

@implementation NSRunLoop
- (void)addTimer:(NSTimer*)timer forMode:(NSString*)mode {
    [timer startInRunLoop];
}
@end

@implementation NSThread
+ (BOOL)isMainThread {
    return YES;
}
@end

@implementation NSOperationQueue
- (void)addOperationWithBlock:(void (^)(void))block {
    schedule(0, 0, [kept = keep(block)] { kept(); });
}
@end

@interface NSObject (RBFakeDelayed)
@end
@implementation NSObject (RBFakeDelayed)
- (void)performSelector:(SEL)selector withObject:(id)object afterDelay:(NSTimeInterval)delay {
    schedule(delay, 0, [self, selector, object] { [self performSelector:selector withObject:object]; });
}
- (void)performSelectorOnMainThread:(SEL)selector withObject:(id)object waitUntilDone:(BOOL)wait {
    if (wait)
        [self performSelector:selector withObject:object];
    else
        schedule(0, 0, [self, selector, object] { [self performSelector:selector withObject:object]; });
}
@end
