// Answers system calls: canned answers first, then, where nobody wrote a fake by hand, a generic one that remembers
// properties and makes objects as the declared types demand.
#include "tests/macos/runtime/RecorderState.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace rb::fake {

namespace {

bool startsWithWord(const std::string& text, const std::string& word) {
    return text.rfind(word, 0) == 0 && (text.size() == word.size() || !std::islower(text[word.size()]));
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

bool endsWith(const std::string& text, const std::string& ending) {
    return text.size() >= ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

} // namespace

bool returnsOwned(const std::string& selector) {
    for (const char* family : {"alloc", "new", "copy", "mutableCopy", "init"})
        if (startsWithWord(selector, family))
            return true;
    return false;
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

void giveGenericResult(objc::Frame& frame, const FunctionRow& row, const TypeCode& result,
                       const std::vector<Value>& values) {
    const bool oneObject = values.size() == 1 && values.front().type.kind == '&';
    if (oneObject && endsWith(row.name, "Release")) {
        objc::release(values.front().object());
    } else if (oneObject && endsWith(row.name, "Retain")) {
        objc::Object* object = objc::retain(values.front().object());
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

} // namespace rb::fake
