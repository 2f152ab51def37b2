// Records system calls, and lets Answers.mm or a fake written by hand answer them.
#include "tests/macos/runtime/RecorderState.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

extern "C" {
extern const rb::fake::MethodRow fake_method_rows[];
extern const char* const fake_class_names[];
void fake_function_called(rb::objc::Frame* frame, const rb::fake::FunctionRow* row);
}

namespace rb::fake {

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

namespace {

bool isSystemClass(const objc::Class* cls) {
    return recorder().systemClasses.count(cls->name()) || std::strncmp(cls->name(), "RBFake", 6) == 0;
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

void functionCalled(objc::Frame& frame, const FunctionRow& row) {
    std::memset(frame.integerResults, 0, sizeof frame.integerResults);
    std::memset(frame.vectorResults, 0, sizeof frame.vectorResults);
    const std::vector<TypeCode>& types = parseSignature(row.types);
    const TypeCode& result = types.front();
    const auto call = makeCall(row.name, nil, readArguments(frame, types, result.inMemory() ? 1 : 0));
    recorder().calls.push_back(call);
    if (giveCanned(frame, result, call, row.name, row.owned))
        return;
    giveGenericResult(frame, row, result, call->values);
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
    // Letting go of objects may send messages that are recorded, make others or erase their answers; hence everything
    // is moved out first.
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

void fake_function_called(rb::objc::Frame* frame, const rb::fake::FunctionRow* row) {
    rb::fake::functionCalled(*frame, *row);
}
