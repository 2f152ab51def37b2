// I/O Kit: a registry of devices that tests fill, and its notifications of devices that come and go.
#import <Foundation/Foundation.h>
#import <IOKit/IOKitLib.h>

#include "tests/macos/runtime/Recorder.h"
#include "tests/macos/runtime/Runtime.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

using namespace rb::fake;

namespace {

struct Entry {
    std::string className;
    std::string name;
    NSDictionary* properties;
    io_object_t parent;
};

constexpr io_object_t firstIterator = 100000;

struct Notification {
    IONotificationPortRef port;
    std::string kind;
    std::string className;
    IOServiceMatchingCallback callback;
    void* context;
    io_iterator_t iterator;
    bool armed; // since its iterator was read to the end
};

struct Registry {
    std::vector<Entry> entries; // the first one has the number 1
    std::map<io_object_t, std::vector<io_object_t>> iterators;
    std::map<io_object_t, long> references;
    io_object_t lastIterator = firstIterator;
    std::map<IONotificationPortRef, std::unique_ptr<char>> ports;
    std::vector<Notification> notifications;
};

Registry& registry() {
    static auto* made = [] {
        auto* fresh = new Registry;
        onReset([fresh] { *fresh = Registry(); });
        return fresh;
    }();
    return *made;
}

Entry& entryOf(io_object_t object) {
    if (object == 0 || object > registry().entries.size() || registry().references[object] < 1) {
        std::fprintf(stderr, "I/O Kit was given %u, which is no entry that the caller holds\n", object);
        std::abort();
    }
    return registry().entries[object - 1];
}

io_object_t retained(io_object_t object) {
    ++registry().references[object];
    return object;
}

io_iterator_t iteratorOver(std::vector<io_object_t> objects) {
    const io_object_t iterator = ++registry().lastIterator;
    registry().iterators[iterator] = std::move(objects);
    return retained(iterator);
}

std::vector<io_object_t> entriesThat(const std::function<bool(const Entry&)>& fits) {
    std::vector<io_object_t> found;
    for (std::size_t index = 0; index < registry().entries.size(); ++index)
        if (fits(registry().entries[index]))
            found.push_back(static_cast<io_object_t>(index + 1));
    return found;
}

CFTypeRef retainedValue(id value) {
    return value ? (__bridge_retained CFTypeRef)value : nullptr;
}

} // namespace

namespace rb::fake {

unsigned addRegistryEntry(const std::string& className, const std::string& name, NSDictionary* properties,
                          unsigned parent) {
    registry().entries.push_back({className, name, properties, parent});
    return static_cast<unsigned>(registry().entries.size());
}

std::string registryPath(unsigned entry) {
    const Entry& found = registry().entries.at(entry - 1);
    return (found.parent ? registryPath(found.parent) : std::string("IOService:")) + "/" + found.name;
}

long liveRegistryReferences() {
    long count = static_cast<long>(registry().ports.size());
    for (const auto& [object, references] : registry().references)
        count += references;
    return count;
}

void changeDevice(const std::string& kind, unsigned entry) {
    for (Notification& notification : registry().notifications) {
        if (notification.kind != kind || notification.className != registry().entries.at(entry - 1).className)
            continue;
        registry().iterators[notification.iterator].push_back(entry);
        if (!std::exchange(notification.armed, false))
            continue;
        const auto port = notification.port;
        const auto iterator = notification.iterator;
        dispatch_async(dispatch_get_main_queue(), ^{
            const auto& all = registry().notifications;
            const auto found = std::find_if(all.begin(), all.end(), [&](const Notification& one) {
                return one.port == port && one.iterator == iterator;
            });
            if (found != all.end())
                found->callback(found->context, iterator);
        });
    }
}

} // namespace rb::fake

extern "C" {

IONotificationPortRef IONotificationPortCreate(mach_port_t) {
    auto made = std::make_unique<char>();
    auto port = reinterpret_cast<IONotificationPortRef>(made.get());
    registry().ports.emplace(port, std::move(made));
    recordFunction("IONotificationPortCreate", {});
    return port;
}
void IONotificationPortDestroy(IONotificationPortRef port) {
    recordFunction("IONotificationPortDestroy", {});
    std::erase_if(registry().notifications, [&](const Notification& one) { return one.port == port; });
    if (registry().ports.erase(port) == 0) {
        std::fprintf(stderr, "IONotificationPortDestroy was given a port that isn't there\n");
        std::abort();
    }
}

CFMutableDictionaryRef IOServiceMatching(const char* name) {
    return (__bridge_retained CFMutableDictionaryRef)[NSMutableDictionary dictionaryWithObject:@(name)
                                                                                        forKey:@"IOProviderClass"];
}
kern_return_t IOServiceGetMatchingServices(mach_port_t, CFDictionaryRef matching, io_iterator_t* iterator) {
    NSDictionary* wanted = CFBridgingRelease(matching); // the call consumes it
    const std::string className = [wanted[@"IOProviderClass"] UTF8String];
    recordFunction("IOServiceGetMatchingServices", {wanted[@"IOProviderClass"]});
    *iterator = iteratorOver(entriesThat([&](const Entry& entry) { return entry.className == className; }));
    return KERN_SUCCESS;
}
kern_return_t IOServiceAddMatchingNotification(IONotificationPortRef port, const io_name_t kind,
                                               CFDictionaryRef matching, IOServiceMatchingCallback callback,
                                               void* context, io_iterator_t* iterator) {
    NSDictionary* wanted = CFBridgingRelease(matching); // the call consumes it
    const std::string className = [wanted[@"IOProviderClass"] UTF8String];
    recordFunction("IOServiceAddMatchingNotification", { @(kind), wanted[@"IOProviderClass"] });
    const bool present = std::strcmp(kind, kIOFirstMatchNotification) == 0;
    *iterator = iteratorOver(entriesThat([&](const Entry& entry) { return present && entry.className == className; }));
    registry().notifications.push_back({port, kind, className, callback, context, *iterator, false});
    return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
    auto& left = registry().iterators[iterator];
    if (left.empty()) {
        for (Notification& notification : registry().notifications)
            notification.armed = notification.armed || notification.iterator == iterator;
        return 0;
    }
    const io_object_t next = left.front();
    left.erase(left.begin());
    return retained(next);
}
kern_return_t IOObjectRelease(io_object_t object) {
    if (object == 0 || --registry().references[object] < 0) {
        std::fprintf(stderr, "IOObjectRelease was given %u, which the caller doesn't hold\n", object);
        std::abort();
    }
    return KERN_SUCCESS;
}
CFStringRef IOObjectCopyClass(io_object_t object) {
    return (__bridge_retained CFStringRef) @(entryOf(object).className.c_str());
}

kern_return_t IORegistryCreateIterator(mach_port_t, const char*, IOOptionBits, io_iterator_t* iterator) {
    *iterator = iteratorOver(entriesThat([](const Entry&) { return true; }));
    return KERN_SUCCESS;
}
kern_return_t IORegistryEntryGetChildIterator(io_registry_entry_t parent, const char*, io_iterator_t* iterator) {
    (void)entryOf(parent);
    *iterator = iteratorOver(entriesThat([&](const Entry& entry) { return entry.parent == parent; }));
    return KERN_SUCCESS;
}
kern_return_t IORegistryEntryGetName(io_registry_entry_t entry, char* name) {
    std::snprintf(name, sizeof(io_name_t), "%s", entryOf(entry).name.c_str());
    return KERN_SUCCESS;
}
CFStringRef IORegistryEntryCopyPath(io_registry_entry_t entry, const char*) {
    (void)entryOf(entry);
    return (__bridge_retained CFStringRef) @(registryPath(entry).c_str());
}
kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry, CFMutableDictionaryRef* properties,
                                                CFAllocatorRef, IOOptionBits) {
    *properties = (__bridge_retained CFMutableDictionaryRef)[entryOf(entry).properties mutableCopy];
    return KERN_SUCCESS;
}
CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key, CFAllocatorRef, IOOptionBits) {
    return retainedValue(entryOf(entry).properties[(__bridge NSString*)key]);
}
CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const char*, CFStringRef key, CFAllocatorRef,
                                          IOOptionBits options) {
    const bool upwards = (options & kIORegistryIterateParents) && (options & kIORegistryIterateRecursively);
    const Entry* at = &entryOf(entry);
    id found = at->properties[(__bridge NSString*)key];
    while (!found && upwards && at->parent) {
        at = &registry().entries.at(at->parent - 1);
        found = at->properties[(__bridge NSString*)key];
    }
    return retainedValue(found);
}
}
