#pragma once

#include "tests/macos/Fakes.h"

#include "tests/macos/runtime/Recorder.h"
#include "tests/macos/runtime/Types.h"

#include <deque>
#include <unordered_map>
#include <unordered_set>

// What Recorder.mm, which notes calls, and Answers.mm, which answers them, share.
namespace rb::fake {

// Rows of the generated tables, see tools/macos/rookmac/fakedata.py.
struct MethodRow {
    const char* cls;
    const char* selector; // with + or - in front
    const char* types;
};
struct FunctionRow {
    const char* name;
    const char* types;
    unsigned long owned; // whether the caller releases the result
};

struct WeakObject {
    __weak id object;
};

struct CallData {
    std::string name;
    std::vector<std::string> aliases; // the same name with the receiver's superclasses
    std::string arguments;
    std::string text;
    WeakObject receiver;
    std::vector<Value> values;
    std::map<std::size_t, WeakObject> objects;
    std::map<std::size_t, id> kept; // blocks and values
    std::unique_ptr<Answer> answer;

    bool isNamed(const std::string& wanted) const {
        return name == wanted || std::find(aliases.begin(), aliases.end(), wanted) != aliases.end();
    }
};

// A remembered property: plain bytes or an object.
struct Stored {
    std::vector<unsigned char> bytes;
    id strong = nil;
    WeakObject weak;
    bool isWeak = false;
};
using Properties = std::map<std::string, Stored>;

struct Recorder {
    std::vector<std::shared_ptr<CallData>> calls;
    std::unordered_map<std::string, Answer> answers;
    std::unordered_map<std::string, std::deque<Answer>> onceAnswers;
    std::unordered_map<const objc::Object*, std::map<std::string, Answer>> receiverAnswers;
    std::unordered_map<std::string, std::function<void(Call&)>> hooks;
    std::unordered_map<const objc::Object*, Properties> properties;
    std::map<std::string, id> shared;
    std::vector<std::function<void()>> resets;
    std::unordered_map<std::string, const MethodRow*> rows;
    std::unordered_set<std::string> systemClasses;
};

Recorder& recorder();

inline objc::Object* raw(id object) {
    return (__bridge objc::Object*)object;
}
inline id asId(const void* object) {
    return (__bridge id) const_cast<void*>(object);
}

// Hooks and canned answers, most special first. Returns whether the call has its answer. `owned`: the caller releases
// it.
bool giveCanned(objc::Frame& frame, const TypeCode& type, const std::shared_ptr<CallData>& call,
                const std::string& selector, bool owned);
// What nobody wrote an answer for: remembered properties, and objects made as the declared types demand.
void giveGeneric(objc::Frame& frame, id receiver, const std::string& selector, const std::vector<TypeCode>& types,
                 const std::vector<Value>& values, bool isMeta);
void giveGenericResult(objc::Frame& frame, const FunctionRow& row, const TypeCode& result,
                       const std::vector<Value>& values);
// Methods whose caller owns the result.
bool returnsOwned(const std::string& selector);

} // namespace rb::fake
