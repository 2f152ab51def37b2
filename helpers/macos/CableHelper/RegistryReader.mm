#include "helpers/macos/CableHelper/RegistryReader.h"

#include "helpers/macos/shared/IoObject.h"

#import <Foundation/Foundation.h>
#import <IOKit/ps/IOPSKeys.h>
#import <IOKit/ps/IOPowerSources.h>

#include <algorithm>

namespace rb {

namespace {

using Json = nlohmann::json;

constexpr int deepest = 12;               // of the entries below a port
constexpr int deepestValue = 16;          // of what a property holds
constexpr std::size_t mostEntries = 4096; // below a port
constexpr std::size_t mostDevices = 512;

std::string stringFrom(id text) {
    const char* utf8 = [text isKindOfClass:NSString.class] ? [text UTF8String] : nullptr;
    return utf8 != nullptr ? utf8 : "";
}

NSString* nsText(const char* text) {
    return [NSString stringWithUTF8String:text];
}

Json jsonFrom(id value, int depth = 0);

Json jsonFromNumber(NSNumber* number) {
    if (CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID()) {
        return number.boolValue != NO;
    }
    if (CFNumberIsFloatType((__bridge CFNumberRef)number)) {
        return number.doubleValue;
    }
    return number.longLongValue;
}

// Strings, numbers, data, arrays and dictionaries; null for anything else.
Json jsonFrom(id value, int depth) {
    if (depth > deepestValue) {
        return nullptr;
    }
    if ([value isKindOfClass:NSString.class]) {
        return stringFrom(value);
    }
    if ([value isKindOfClass:NSNumber.class]) {
        return jsonFromNumber(value);
    }
    if ([value isKindOfClass:NSData.class]) {
        NSData* data = value;
        const auto* bytes = static_cast<const std::uint8_t*>(data.bytes);
        return Json::binary(std::vector<std::uint8_t>(bytes, bytes + data.length));
    }
    if ([value isKindOfClass:NSArray.class]) {
        Json array = Json::array();
        for (id item in (NSArray*)value) {
            array.push_back(jsonFrom(item, depth + 1));
        }
        return array;
    }
    if ([value isKindOfClass:NSDictionary.class]) {
        Json object = Json::object();
        for (id key in (NSDictionary*)value) {
            object[stringFrom(key)] = jsonFrom([(NSDictionary*)value objectForKey:key], depth + 1);
        }
        return object;
    }
    return nullptr;
}

id property(const IoObject& entry, const char* key) {
    return CFBridgingRelease(
        IORegistryEntryCreateCFProperty(entry.get(), (__bridge CFStringRef)nsText(key), kCFAllocatorDefault, 0));
}

std::string pathOf(const IoObject& entry) {
    return stringFrom(CFBridgingRelease(IORegistryEntryCopyPath(entry.get(), kIOServicePlane)));
}

RegistryEntry describe(const IoObject& entry) {
    RegistryEntry described;
    io_name_t name = {};
    if (IORegistryEntryGetName(entry.get(), name) == KERN_SUCCESS) {
        described.name = name;
    }
    described.className = stringFrom(CFBridgingRelease(IOObjectCopyClass(entry.get())));
    CFMutableDictionaryRef properties = nullptr;
    if (IORegistryEntryCreateCFProperties(entry.get(), &properties, kCFAllocatorDefault, 0) == KERN_SUCCESS) {
        described.properties = jsonFrom(CFBridgingRelease(properties));
    }
    return described;
}

void describeChildren(const IoObject& parent, RegistryEntry& described, int depth, std::size_t& left) {
    io_iterator_t list = 0;
    if (depth == 0 || IORegistryEntryGetChildIterator(parent.get(), kIOServicePlane, &list) != KERN_SUCCESS) {
        return;
    }
    const IoObject iterator(list);
    for (IoObject child = iterator.next(); child && left > 0; child = iterator.next()) {
        --left;
        described.children.push_back(describe(child));
        describeChildren(child, described.children.back(), depth - 1, left);
    }
}

// Ports are whatever tells which transports it carries.
std::vector<RegistryEntry> readPorts() {
    std::vector<RegistryEntry> ports;
    io_iterator_t list = 0;
    if (IORegistryCreateIterator(kIOMainPortDefault, kIOServicePlane, kIORegistryIterateRecursively, &list) !=
        KERN_SUCCESS) {
        return ports;
    }
    const IoObject iterator(list);
    for (IoObject entry = iterator.next(); entry; entry = iterator.next()) {
        if (property(entry, RegistryName::TransportsActive) == nil) {
            continue;
        }
        RegistryEntry port = describe(entry);
        port.path = pathOf(entry);
        std::size_t left = mostEntries;
        describeChildren(entry, port, deepest, left);
        // The same entry may be reached on two ways.
        if (std::none_of(ports.begin(), ports.end(),
                         [&](const RegistryEntry& known) { return known.path == port.path; })) {
            ports.push_back(std::move(port));
        }
    }
    return ports;
}

std::vector<RegistryEntry> readUsbDevices() {
    std::vector<RegistryEntry> devices;
    io_iterator_t list = 0;
    if (IOServiceGetMatchingServices(kIOMainPortDefault, IOServiceMatching("IOUSBHostDevice"), &list) != KERN_SUCCESS) {
        return devices;
    }
    const IoObject iterator(list);
    for (IoObject entry = iterator.next(); entry && devices.size() < mostDevices; entry = iterator.next()) {
        RegistryEntry device = describe(entry);
        device.path = pathOf(entry);
        id port = CFBridgingRelease(IORegistryEntrySearchCFProperty(
            entry.get(), kIOServicePlane, (__bridge CFStringRef)nsText(RegistryName::UsbPort), kCFAllocatorDefault,
            kIORegistryIterateRecursively | kIORegistryIterateParents));
        if (std::string path = stringFrom(port); !path.empty()) {
            device.usbPort = std::move(path);
        }
        devices.push_back(std::move(device));
    }
    // A hub's path begins the paths of what hangs on it.
    std::sort(devices.begin(), devices.end(),
              [](const RegistryEntry& a, const RegistryEntry& b) { return a.path < b.path; });
    return devices;
}

std::optional<BatteryFacts> readBattery() {
    id info = CFBridgingRelease(IOPSCopyPowerSourcesInfo());
    NSArray* sources = info != nil ? CFBridgingRelease(IOPSCopyPowerSourcesList((__bridge CFTypeRef)info)) : nil;
    for (id source in sources) {
        NSDictionary* told =
            (__bridge NSDictionary*)IOPSGetPowerSourceDescription((__bridge CFTypeRef)info, (__bridge CFTypeRef)source);
        if (![told[nsText(kIOPSTypeKey)] isEqual:nsText(kIOPSInternalBatteryType)]) {
            continue; // that of another device
        }
        return BatteryFacts {
            .onExternalPower = [told[nsText(kIOPSPowerSourceStateKey)] isEqual:nsText(kIOPSACPowerValue)] != NO,
            .charging = [told[nsText(kIOPSIsChargingKey)] isEqual:@YES] != NO,
            .charged = [told[nsText(kIOPSIsChargedKey)] isEqual:@YES] != NO
        };
    }
    return std::nullopt;
}

} // namespace

ConnectionFacts readConnectionFacts() {
    return {.ports = readPorts(), .usbDevices = readUsbDevices(), .battery = readBattery()};
}

} // namespace rb
