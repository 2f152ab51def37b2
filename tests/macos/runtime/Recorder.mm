// Records system calls and answers them: canned answers first, then fakes written by hand, then a generic one that
// remembers properties and makes objects as the declared types demand.
#include "tests/macos/Fakes.h"

#include "tests/macos/runtime/Recorder.h"
#include "tests/macos/runtime/Types.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

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

} // namespace

extern "C" {
extern const MethodRow fake_method_rows[];
extern const char* const fake_class_names[];
void fake_function_called(rb::objc::Frame* frame, const FunctionRow* row);
}

namespace rb::fake {

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

namespace {

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

// Never destroyed: messages are still sent while the program ends.
Recorder& recorder() {
    static auto* instance = [] {
        auto* made = new Recorder;
        for (const MethodRow* row = fake_method_rows; row->cls; ++row)
            made->rows.emplace(std::string(row->selector) + " " + row->cls, row);
        for (const char* const* name = fake_class_names; *name; ++name)
            made->systemClasses.insert(*name);
        made->systemClasses.insert("NSObject");
        // Taken out before they are destroyed: their objects may be freed then, which comes back here.
        objc::onFree([made](objc::Object* object) {
            const auto properties = made->properties.extract(object);
            const auto answers = made->receiverAnswers.extract(object);
        });
        return made;
    }();
    return *instance;
}

objc::Object* raw(id object) {
    return (__bridge objc::Object*)object;
}
id asId(const void* object) {
    return (__bridge id) const_cast<void*>(object);
}

bool isSystemClass(const objc::Class* cls) {
    return recorder().systemClasses.count(cls->name()) || std::strncmp(cls->name(), "RBFake", 6) == 0;
}

bool startsWithWord(const std::string& text, const std::string& word) {
    return text.rfind(word, 0) == 0 && (text.size() == word.size() || !std::islower(text[word.size()]));
}

// Methods whose caller owns the result.
bool returnsOwned(const std::string& selector) {
    for (const char* family : {"alloc", "new", "copy", "mutableCopy", "init"})
        if (startsWithWord(selector, family))
            return true;
    return false;
}

// Values such as strings and arrays work for real and make no entries.
bool isValueClass(const objc::Class* start) {
    static const std::unordered_set<std::string> values = {
        "NSString", "NSNumber", "NSValue", "NSArray", "NSDictionary",       "NSSet",          "NSData",    "NSURL",
        "NSNull",   "NSError",  "NSDate",  "NSLock",  "NSAttributedString", "NSNotification", "NSIndexSet"};
    for (const objc::Class* cls = start; cls; cls = cls->super)
        if (values.count(cls->name()))
            return true;
    return false;
}

// What every object can do says nothing about the system.
bool isPlumbing(const std::string& selector) {
    static const std::unordered_set<std::string> plumbing = {"alloc",
                                                             "dealloc",
                                                             "class",
                                                             "self",
                                                             "superclass",
                                                             "hash",
                                                             "isEqual:",
                                                             "description",
                                                             "debugDescription",
                                                             "respondsToSelector:",
                                                             "isKindOfClass:",
                                                             "isMemberOfClass:",
                                                             "conformsToProtocol:",
                                                             "copy",
                                                             "mutableCopy",
                                                             "allocWithZone:",
                                                             "new",
                                                             "copyWithZone:",
                                                             "initialize",
                                                             "load",
                                                             "methodSignatureForSelector:"};
    return plumbing.count(selector) != 0;
}

const MethodRow* rowFor(const objc::Class* start, bool isMeta, const char* selector) {
    const std::string key = (isMeta ? "+" : "-") + std::string(selector) + " ";
    for (const objc::Class* cls = start; cls; cls = cls->super) {
        const auto found = recorder().rows.find(key + cls->name());
        if (found != recorder().rows.end())
            return found->second;
    }
    return nullptr;
}

// setFrame: and frame, setVisible: and isVisible, setZPosition: and zPosition, setURL: and URL share one property.
std::string propertyName(std::string selector) {
    if (selector.rfind("set", 0) == 0 && selector.back() == ':' && selector.size() > 4) {
        selector.pop_back();
        selector.erase(0, 3);
    } else if (selector.rfind("is", 0) == 0 && selector.size() > 2 && std::isupper(selector[2])) {
        selector.erase(0, 2);
    }
    selector[0] = static_cast<char>(std::tolower(selector[0]));
    return selector;
}

bool isUnretainedProperty(const std::string& name) {
    for (const char* ending : {"delegate", "Delegate", "dataSource", "DataSource", "target"}) {
        const std::size_t length = std::strlen(ending);
        if (name.size() >= length && name.compare(name.size() - length, length, ending) == 0)
            return true;
    }
    return false;
}

// What a call said is still to be read when the caller has let go of it.
bool isValue(const Value& value) {
    objc::Object* object = value.type.isObject() ? value.object() : nullptr;
    return object && !objc::isClass(object) && !objc::isBlock(object) && isValueClass(object->isa);
}

std::shared_ptr<CallData> makeCall(std::string name, id receiver, std::vector<Value> values) {
    auto call = std::make_shared<CallData>();
    call->name = std::move(name);
    call->receiver.object = receiver;
    call->values = std::move(values);
    for (std::size_t i = 0; i < call->values.size(); ++i) {
        const Value& value = call->values[i];
        call->arguments += (i ? ", " : "") + describe(value);
        if (value.type.isObject() || value.type.kind == '#')
            call->objects[i].object = asId(value.object());
        if (value.type.kind == '?' || isValue(value))
            call->kept[i] = asId(value.object());
    }
    call->text = call->name + (call->arguments.empty() ? "" : " ") + call->arguments;
    return call;
}

void give(objc::Frame& frame, const TypeCode& type, id object, bool owned) {
    // The record keeps nothing: the caller's share is autoreleased or handed over.
    objc::Object* result = objc::retain(raw(object));
    if (!owned)
        objc::autorelease(result);
    writeResult(frame, type, &result, sizeof result);
}

void give(objc::Frame& frame, const TypeCode& type, const Answer& answer, bool owned) {
    if (answer.isObject()) {
        give(frame, type, answer.object(), owned);
        return;
    }
    if (type.isVector()) {
        double real = 0;
        long integer = 0;
        std::memcpy(answer.isInteger() ? static_cast<void*>(&integer) : &real, answer.bytes().data(), sizeof real);
        if (answer.isInteger())
            real = static_cast<double>(integer);
        const auto single = static_cast<float>(real);
        writeResult(frame, type, type.kind == 'f' ? static_cast<const void*>(&single) : &real, type.size());
        return;
    }
    writeResult(frame, type, answer.bytes().data(), answer.bytes().size());
}

id make(const char* className) {
    objc::Class* cls = objc::classNamed(className);
    return cls ? [[(__bridge Class)(void*)cls alloc] init] : [[NSObject alloc] init];
}

// The object that stands for a CoreFoundation value; those with a Foundation twin are that.
id makeCore(const std::string& type) {
    static const std::map<std::string, const char*> twins = {{"CFString", "NSString"},
                                                             {"CFMutableString", "NSMutableString"},
                                                             {"CFArray", "NSArray"},
                                                             {"CFMutableArray", "NSMutableArray"},
                                                             {"CFDictionary", "NSDictionary"},
                                                             {"CFMutableDictionary", "NSMutableDictionary"},
                                                             {"CFNumber", "NSNumber"},
                                                             {"CFBoolean", "NSNumber"},
                                                             {"CFData", "NSData"},
                                                             {"CFMutableData", "NSMutableData"},
                                                             {"CFURL", "NSURL"},
                                                             {"CFError", "NSError"}};
    const auto twin = twins.find(type);
    return twin != twins.end() ? make(twin->second) : makeCoreObject(type);
}

id makeFor(const TypeCode& type) {
    return type.kind == '&' ? makeCore(type.detail) : make(type.detail.c_str());
}

bool hasBlock(const std::vector<Value>& values) {
    return std::any_of(values.begin(), values.end(), [](const Value& value) { return value.type.kind == '?'; });
}

// The old value goes last: what is freed with it may store properties in turn.
void replaceProperty(id receiver, const std::string& name, Stored stored) {
    std::swap(recorder().properties[raw(receiver)][name], stored);
}

void storeProperty(id receiver, const std::string& name, const Value& value) {
    Stored stored;
    if (!value.type.isObject() && value.type.kind != '?') {
        stored.bytes = value.bytes;
    } else if (isUnretainedProperty(name)) {
        stored.isWeak = true;
        stored.weak.object = asId(value.object());
    } else {
        stored.strong = asId(value.object());
    }
    replaceProperty(receiver, name, std::move(stored));
}

// A property's value, made on first use where the facts say that it is never nil.
void giveProperty(objc::Frame& frame, id receiver, const std::string& name, const TypeCode& type) {
    Properties& properties = recorder().properties[raw(receiver)];
    const auto found = properties.find(name);
    if (!type.isObject() && type.kind != '?') {
        if (found != properties.end())
            writeResult(frame, type, found->second.bytes.data(), found->second.bytes.size());
        else if (type.inMemory())
            writeResult(frame, type, "", 0);
        return;
    }
    id object = nil;
    if (found != properties.end()) {
        object = found->second.isWeak ? found->second.weak.object : found->second.strong;
    } else if (type.nonnull && (type.kind == '&' || !type.detail.empty())) {
        object = makeFor(type);
        recorder().properties[raw(receiver)][name].strong = object;
    }
    give(frame, type, object, false);
}

// The class's name without its prefix and with a small first letter: +[NSBezierPath bezierPath] makes new objects.
bool isNamedAfterClass(const std::string& selector, const std::string& cls) {
    std::string name = cls.size() > 2 ? cls.substr(2) : cls;
    name[0] = static_cast<char>(std::tolower(name[0]));
    return selector == name;
}

void giveGeneric(objc::Frame& frame, id receiver, const std::string& selector, const std::vector<TypeCode>& types,
                 const std::vector<Value>& values, bool isMeta) {
    TypeCode result = types.front();
    const objc::Class* cls = isMeta ? reinterpret_cast<objc::Class*>(raw(receiver)) : raw(receiver)->isa;
    if (!isMeta && startsWithWord(selector, "init")) {
        const auto self = raw(receiver); // init consumes its receiver and gives it back
        writeResult(frame, result, &self, sizeof self);
        return;
    }
    if (result.kind == 'v') {
        if (values.size() == 1 && selector.rfind("set", 0) == 0)
            storeProperty(receiver, propertyName(selector), values.front());
        return;
    }
    if (result.kind == '=' && isMeta) {
        give(frame, result, make(cls->name()), returnsOwned(selector));
        return;
    }
    if (values.empty() && isMeta && result.isObject() && !result.detail.empty()) {
        __strong id& shared = recorder().shared[std::string(cls->name()) + " " + selector];
        if (isNamedAfterClass(selector, cls->name()))
            give(frame, result, makeFor(result), false);
        else
            give(frame, result, shared ? shared : shared = makeFor(result), false);
        return;
    }
    if (values.empty()) {
        giveProperty(frame, receiver, propertyName(selector), result);
        return;
    }
    if (result.isObject() && (result.nonnull || hasBlock(values))) {
        id object = makeFor(result);
        // A token for a handler owns it, as the system's does: cycles through handlers show as leaks.
        for (std::size_t i = 0; i < values.size(); ++i)
            if (values[i].type.kind == '?')
                recorder().properties[raw(object)]["block" + std::to_string(i)].strong = asId(values[i].object());
        give(frame, result, object, returnsOwned(selector));
        return;
    }
    if (result.inMemory())
        writeResult(frame, result, "", 0);
}

// Hooks and canned answers, most special first. Returns whether the call has its answer.
bool giveCanned(objc::Frame& frame, const TypeCode& type, const std::shared_ptr<CallData>& call,
                const std::string& selector, bool owned) {
    Recorder& state = recorder();
    std::vector<std::string> names = {call->name};
    names.insert(names.end(), call->aliases.begin(), call->aliases.end());
    for (const std::string& name : names) {
        const auto hook = state.hooks.find(name);
        if (hook == state.hooks.end())
            continue;
        const auto run = hook->second; // the hook may install another
        Call seen(call);
        run(seen);
        if (call->answer) {
            give(frame, type, *call->answer, owned);
            return true;
        }
    }
    const auto receiver = state.receiverAnswers.find(raw(call->receiver.object));
    if (receiver != state.receiverAnswers.end()) {
        const auto found = receiver->second.find(selector);
        if (found != receiver->second.end()) {
            give(frame, type, found->second, owned);
            return true;
        }
    }
    for (const std::string& name : names) {
        if (auto once = state.onceAnswers.find(name); once != state.onceAnswers.end() && !once->second.empty()) {
            const Answer next = once->second.front();
            once->second.pop_front();
            give(frame, type, next, owned);
            return true;
        }
        if (const auto found = state.answers.find(name); found != state.answers.end()) {
            give(frame, type, found->second, owned);
            return true;
        }
    }
    return false;
}

std::vector<std::string> superclassNames(const objc::Class* cls, bool isMeta, const char* selector) {
    std::vector<std::string> names;
    for (const objc::Class* super = cls->super; super && std::strcmp(super->name(), "NSObject"); super = super->super)
        names.push_back((isMeta ? "+[" : "-[") + std::string(super->name()) + " " + selector + "]");
    return names;
}

bool messageSent(objc::Frame& frame, objc::Object* receiver, objc::Class* start, objc::Selector selector,
                 std::uint64_t flags, const objc::Found& found) {
    if (found.implementation && !isSystemClass(found.owner))
        return false; // the product's or the test's own method
    const bool isMeta = objc::isClass(receiver);
    const MethodRow* row = rowFor(start, isMeta, selector);
    if (!row)
        return false;
    const objc::Class* cls = isMeta ? reinterpret_cast<objc::Class*>(receiver) : receiver->isa;
    const bool isSystem = isSystemClass(cls);
    if (isPlumbing(selector) || (!isSystem && !std::strcmp(selector, "init")))
        return false;
    if (isValueClass(cls) && found.implementation)
        return false;

    const std::vector<TypeCode>& types = parseSignature(row->types);
    std::vector<Value> values = readArguments(frame, types, flags & objc::StructReturn ? 3 : 2);
    const std::string name = (isMeta ? "+[" : "-[") + std::string(cls->name()) + " " + selector + "]";
    const auto call = makeCall(name, asId(receiver), std::move(values));
    call->aliases = superclassNames(cls, isMeta, selector);
    if (flags & objc::Recorded)
        recorder().calls.push_back(call);
    if (giveCanned(frame, types.front(), call, selector, returnsOwned(selector)))
        return true;
    if (found.implementation)
        return false;
    giveGeneric(frame, asId(receiver), selector, types, call->values, isMeta);
    return true;
}

__attribute__((constructor(102))) void install() {
    objc::setMessageFilter(messageSent);
}

bool endsWith(const std::string& text, const std::string& ending) {
    return text.size() >= ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

void functionCalled(objc::Frame& frame, const FunctionRow& row) {
    std::memset(frame.integerResults, 0, sizeof frame.integerResults);
    std::memset(frame.vectorResults, 0, sizeof frame.vectorResults);
    const std::vector<TypeCode>& types = parseSignature(row.types);
    const TypeCode& result = types.front();
    const auto call = makeCall(row.name, nil, readArguments(frame, types, result.inMemory() ? 1 : 0));
    recorder().calls.push_back(call);
    if (giveCanned(frame, result, call, row.name, row.owned))
        return;
    const bool oneObject = call->values.size() == 1 && call->values.front().type.kind == '&';
    if (oneObject && endsWith(row.name, "Release")) {
        objc::release(call->values.front().object());
    } else if (oneObject && endsWith(row.name, "Retain")) {
        objc::Object* object = objc::retain(call->values.front().object());
        writeResult(frame, result, &object, sizeof object);
    } else if (result.kind == '&' && row.owned) {
        give(frame, result, makeFor(result), true);
    } else if (result.kind == '&' && result.nonnull) {
        __strong id& shared = recorder().shared[row.name];
        give(frame, result, shared ? shared : shared = makeFor(result), false);
    } else if (result.inMemory()) {
        writeResult(frame, result, "", 0);
    }
}

} // namespace

std::string describeObject(objc::Object* object) {
    if (!object)
        return "nil";
    if (objc::isClass(object))
        return reinterpret_cast<objc::Class*>(object)->name();
    if (objc::isBlock(object))
        return "^block";
    return describeValue(asId(object));
}

void setProperty(id receiver, const std::string& name, id value) {
    Stored stored;
    stored.strong = value;
    replaceProperty(receiver, name, std::move(stored));
}

void setPropertyBytes(id receiver, const std::string& name, const void* bytes, std::size_t size) {
    Stored stored;
    stored.bytes.assign(static_cast<const unsigned char*>(bytes), static_cast<const unsigned char*>(bytes) + size);
    stored.bytes.resize((size + 7) / 8 * 8);
    replaceProperty(receiver, name, std::move(stored));
}

id property(id receiver, const std::string& name) {
    const auto owner = recorder().properties.find(raw(receiver));
    if (owner == recorder().properties.end())
        return nil;
    const auto found = owner->second.find(name);
    if (found == owner->second.end())
        return nil;
    return found->second.isWeak ? found->second.weak.object : found->second.strong;
}

long integerProperty(id receiver, const std::string& name) {
    long value = 0;
    const auto owner = recorder().properties.find(raw(receiver));
    if (owner != recorder().properties.end())
        if (const auto found = owner->second.find(name); found != owner->second.end())
            std::memcpy(&value, found->second.bytes.data(), std::min(found->second.bytes.size(), sizeof value));
    return value;
}

void onReset(std::function<void()> work) {
    recorder().resets.push_back(std::move(work));
}

void recordFunction(const std::string& name, const std::vector<Recorded>& arguments) {
    std::vector<Value> values;
    for (const Recorded& argument : arguments) {
        Value value{{argument.isObject() ? '@' : 'q', {}, {}, false}, std::vector<unsigned char>(sizeof(long))};
        const long integer = argument.integer();
        std::memcpy(value.bytes.data(), &integer, sizeof integer);
        values.push_back(std::move(value));
    }
    recorder().calls.push_back(makeCall(name, nil, std::move(values)));
}

const std::string& Call::name() const {
    return data_->name;
}
const std::string& Call::text() const {
    return data_->text;
}
id Call::receiver() const {
    return data_->receiver.object;
}
std::size_t Call::count() const {
    return data_->values.size();
}
id Call::object(std::size_t index) const {
    return data_->objects.at(index).object;
}
long Call::integer(std::size_t index) const {
    return data_->values.at(index).integer();
}
double Call::real(std::size_t index) const {
    return data_->values.at(index).real();
}
id Call::blockObject(std::size_t index) const {
    return data_->kept.at(index);
}
std::string Call::string(std::size_t index) const {
    NSString* text = object(index);
    return text ? text.UTF8String : "";
}
void Call::copyBytes(std::size_t index, void* to, std::size_t size) const {
    const auto& bytes = data_->values.at(index).bytes;
    std::memcpy(to, bytes.data(), std::min(size, bytes.size()));
}
void Call::answer(Answer answer) {
    data_->answer = std::make_unique<Answer>(std::move(answer));
}

std::vector<Call> calls() {
    std::vector<Call> result;
    for (const auto& call : recorder().calls)
        result.emplace_back(call);
    return result;
}

std::vector<Call> calls(const std::string& name) {
    std::vector<Call> result;
    for (const auto& call : recorder().calls)
        if (call->isNamed(name))
            result.emplace_back(call);
    return result;
}

Call lastCall(const std::string& name) {
    const std::vector<Call> found = calls(name);
    if (found.empty()) {
        std::string text = name + " was never called; these were:";
        for (const std::string& line : log())
            text += "\n    " + line;
        throw std::logic_error(text);
    }
    return found.back();
}

std::vector<std::string> log() {
    std::vector<std::string> texts;
    for (const auto& call : recorder().calls)
        texts.push_back(call->text);
    return texts;
}

bool Call::fits(const std::string& pattern) const {
    const std::size_t bracket = pattern.find(']');
    const std::string name = pattern.substr(0, pattern.find(' ', bracket == std::string::npos ? 0 : bracket));
    return data_->isNamed(name) && (name == pattern || pattern == name + " " + data_->arguments);
}

void forgetCalls() {
    const auto forgotten = std::exchange(recorder().calls, {});
}
void answer(const std::string& name, Answer answer) {
    const auto replaced = recorder().answers.extract(name);
    recorder().answers.emplace(name, std::move(answer));
}
void answer(id receiver, const std::string& selector, Answer answer) {
    auto& answers = recorder().receiverAnswers[raw(receiver)];
    const auto replaced = answers.extract(selector);
    answers.emplace(selector, std::move(answer));
}
void answerOnce(const std::string& name, Answer answer) {
    recorder().onceAnswers[name].push_back(std::move(answer));
}
void onCall(const std::string& name, std::function<void(Call&)> hook) {
    std::swap(recorder().hooks[name], hook);
}

void press(id control) {
    const SEL action = [control action];
    id target = [control target];
    const std::string who = describeObject(raw(control));
    if (!action || !target)
        throw std::logic_error("the pressed " + who + " has no " + (action ? "target" : "action"));
    const objc::Found method = objc::find(raw(target)->isa, reinterpret_cast<objc::Selector>(action));
    if (!method.implementation)
        throw std::logic_error(describeObject(raw(target)) + " doesn't implement the action of " + who);
    reinterpret_cast<void (*)(id, SEL, id)>(method.implementation)(target, action, control);
}

std::map<std::string, long> liveObjects() {
    return objc::liveInstances();
}

std::map<std::string, long> liveProductObjects() {
    std::map<std::string, long> product;
    for (const auto& [name, count] : objc::liveInstances())
        if (!recorder().systemClasses.count(name) && name.rfind("RBFake", 0) != 0 && name.rfind("Test", 0) != 0)
            product[name] = count;
    return product;
}

long live(const std::string& className) {
    const auto all = objc::liveInstances();
    const auto found = all.find(className);
    return found == all.end() ? 0 : found->second;
}

void reset() {
    // Letting go of objects may send messages that are recorded, make others or erase their answers; hence everything is
    // moved out first.
    Recorder& state = recorder();
    {
        const auto hooks = std::exchange(state.hooks, {});
        const auto answers = std::exchange(state.answers, {});
        const auto onceAnswers = std::exchange(state.onceAnswers, {});
        const auto receiverAnswers = std::exchange(state.receiverAnswers, {});
    }
    for (const auto& work : state.resets)
        work();
    while (!state.calls.empty() || !state.shared.empty()) {
        const auto calls = std::exchange(state.calls, {});
        const auto shared = std::exchange(state.shared, {});
    }
}

} // namespace rb::fake

void fake_function_called(rb::objc::Frame* frame, const FunctionRow* row) {
    rb::fake::functionCalled(*frame, *row);
}
