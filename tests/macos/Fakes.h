#pragma once

#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>

#include <concepts>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

// What a test sees of the recording fakes: which system calls the code under test made, what they answer, and how the
// system calls back. Names of calls are written "-[NSStatusBar statusItemWithLength:]", "+[NSMenu new]" (recorded as
// "-[NSMenu init]") or "CGMainDisplayID"; the class is that of the receiver. README.md shows how a test looks.
namespace rb::fake {

// A value that a faked call returns.
class Answer {
public:
    template <std::integral T>
    Answer(T value)
        : isInteger_(true) {
        const long wide = static_cast<long>(value);
        set(&wide, sizeof wide);
    }
    template <typename T>
    requires std::is_enum_v<T> Answer(T value)
        : Answer(static_cast<long>(value)) {}
    Answer(double value) { set(&value, sizeof value); }
    Answer(CGPoint value) { set(&value, sizeof value); }
    Answer(CGSize value) { set(&value, sizeof value); }
    Answer(CGRect value) { set(&value, sizeof value); }
    Answer(NSRange value) { set(&value, sizeof value); }
    Answer(id object)
        : object_(object)
        , isObject_(true) {}
    Answer(std::nullptr_t)
        : Answer(0L) {}
    // A CoreFoundation object or any other pointer, unretained.
    Answer(const void* pointer) { set(&pointer, sizeof pointer); }

    id object() const { return object_; }
    bool isObject() const { return isObject_; }
    bool isInteger() const { return isInteger_; }
    const std::vector<unsigned char>& bytes() const { return bytes_; }

private:
    void set(const void* bytes, std::size_t size) {
        bytes_.assign(static_cast<const unsigned char*>(bytes), static_cast<const unsigned char*>(bytes) + size);
    }
    id object_ = nil;
    bool isObject_ = false;
    bool isInteger_ = false;
    std::vector<unsigned char> bytes_;
};

struct CallData;

// One recorded call. It keeps blocks and values (strings, numbers, collections, URLs …) until forgetCalls(), but no
// other object: those are nil once they are gone.
class Call {
public:
    explicit Call(std::shared_ptr<CallData> data)
        : data_(std::move(data)) {}

    const std::string& name() const;
    // Name and arguments: -[NSWindow setLevel:] 25
    const std::string& text() const;
    id receiver() const;
    std::size_t count() const;
    // Whether this is a call of that name, or of that name with exactly those arguments ("name arguments").
    bool fits(const std::string& pattern) const;

    // Arguments from 0, without self and _cmd.
    id object(std::size_t index) const;
    long integer(std::size_t index) const;
    double real(std::size_t index) const;
    CGRect rect(std::size_t index) const { return structure<CGRect>(index); }
    CGPoint point(std::size_t index) const { return structure<CGPoint>(index); }
    CGSize size(std::size_t index) const { return structure<CGSize>(index); }
    SEL selector(std::size_t index) const { return reinterpret_cast<SEL>(integer(index)); }
    std::string string(std::size_t index) const; // of an NSString
    template <typename T>
    T pointer(std::size_t index) const {
        return structure<T>(index); // also for pointers to objects, which ARC doesn't let be cast
    }
    // call.block<void (^)(NSEvent*)>(1)(event)
    template <typename Block>
    Block block(std::size_t index) const {
        return (Block)blockObject(index);
    }
    template <typename T>
    T structure(std::size_t index) const {
        T value{};
        copyBytes(index, &value, sizeof value);
        return value;
    }

    // Inside a hook: what this call returns.
    void answer(Answer answer);

private:
    id blockObject(std::size_t index) const;
    void copyBytes(std::size_t index, void* to, std::size_t size) const;
    std::shared_ptr<CallData> data_;
};

// All calls so far, or those of a name; `forgetCalls` starts the record anew and lets go of recorded blocks.
std::vector<Call> calls();
std::vector<Call> calls(const std::string& name);
Call lastCall(const std::string& name); // throws, and so fails the test, when there is none
std::vector<std::string> log();
void forgetCalls();

// From now on the call returns this, for all receivers or for one.
void answer(const std::string& name, Answer answer);
void answer(id receiver, const std::string& selector, Answer answer);
// The next call returns this; several are queued.
void answerOnce(const std::string& name, Answer answer);
// Runs for each such call, after it was recorded; it may fill out-parameters and set the answer.
void onCall(const std::string& name, std::function<void(Call&)> hook);

// What a look-up by name (dlsym) finds from now on; it finds nothing else.
void provideFunction(const std::string& name, void* function);

// Puts an entry into I/O Kit's registry, below another one or (0) below its root; gives its number and its path.
// A reference to an entry or iterator that the code under test doesn't release fails the test.
unsigned addRegistryEntry(const std::string& className, const std::string& name, NSDictionary* properties,
                          unsigned parent = 0);
std::string registryPath(unsigned entry);
// A device came ("IOServiceFirstMatch") or went ("IOServiceTerminate"): those who were promised news and have read
// their iterator to the end are told in the next turn.
void changeDevice(const std::string& kind, unsigned entry);
long liveRegistryReferences();

// Sends the control's or menu item's action to its target, as a click would.
void press(id control);

// The clock behind NSTimer, dispatch_after, CACurrentMediaTime and NSDate. Starts at 1000 s.
double now();
// Runs what was posted to queues, then everything that falls due in the given seconds, in order.
void advance(double seconds);
void runMainQueue();

// What is open there has changed: the handlers of vnode sources run in the next turn, unless they are cancelled first.
void changeVnode(int descriptor);

// How many instances of a class (exactly this one) are alive.
long live(const std::string& className);

// Forgets calls, answers, hooks, shared objects, timers and queued blocks. The fixture does this after each test.
void reset();
// Classes of the code under test: those that neither the system nor the fakes bring.
std::map<std::string, long> liveProductObjects();
std::map<std::string, long> liveObjects();

} // namespace rb::fake
