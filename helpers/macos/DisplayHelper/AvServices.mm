#include "helpers/macos/DisplayHelper/AvServices.h"

#import <Foundation/Foundation.h>

#include <array>
#include <dlfcn.h>
#include <thread>

namespace rb {

namespace {

// As the registry of Macs with Apple silicon names them.
constexpr const char* serviceClass = "DCPAVServiceProxy";
NSString* const locationKey = @"Location";
NSString* const externalLocation = @"External";

template <typename Function>
Function named(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_DEFAULT, name));
}

bool isExternal(const IoObject& entry) {
    id location = CFBridgingRelease(
        IORegistryEntryCreateCFProperty(entry.get(), (__bridge CFStringRef)locationKey, kCFAllocatorDefault, 0));
    return [location isKindOfClass:NSString.class] && [location isEqualToString:externalLocation];
}

std::string pathOf(const IoObject& entry) {
    NSString* path = CFBridgingRelease(IORegistryEntryCopyPath(entry.get(), kIOServicePlane));
    return path != nil ? path.UTF8String : "";
}

} // namespace

AvFunctions AvFunctions::lookUp() {
    return {.createWithService = named<CreateWithService>("IOAVServiceCreateWithService"),
            .copyEdid = named<CopyEdid>("IOAVServiceCopyEDID"),
            .readI2c = named<TransferI2c>("IOAVServiceReadI2C"),
            .writeI2c = named<TransferI2c>("IOAVServiceWriteI2C")};
}

AvService::AvService(const AvFunctions& functions, const IoObject& entry)
    : functions_(functions)
    , service_(functions.createWithService(kCFAllocatorDefault, entry.get())) {}

AvService::~AvService() {
    if (service_ != nullptr) {
        CFRelease(service_);
    }
}

std::optional<Edid> AvService::edid() const {
    CFDataRef data = nullptr;
    if (service_ == nullptr || functions_.copyEdid(service_, &data) != KERN_SUCCESS || data == nullptr) {
        return std::nullopt;
    }
    const auto edid = parseEdid({CFDataGetBytePtr(data), static_cast<std::size_t>(CFDataGetLength(data))});
    CFRelease(data);
    return edid;
}

std::optional<Exchange> AvService::write(std::span<const std::uint8_t> bytes) {
    if (service_ == nullptr) {
        return Exchange::NoBus;
    }
    // The first byte goes as the offset. What is written isn't changed, whatever the type says.
    std::vector<std::uint8_t> rest(bytes.begin() + 1, bytes.end());
    const IOReturn result =
        functions_.writeI2c(service_, ddcDevice, bytes.front(), rest.data(), static_cast<std::uint32_t>(rest.size()));
    return result == KERN_SUCCESS ? std::nullopt : std::optional(Exchange::NoReply);
}

std::optional<Exchange> AvService::read(std::span<std::uint8_t> bytes) {
    if (service_ == nullptr) {
        return Exchange::NoBus;
    }
    const IOReturn result =
        functions_.readI2c(service_, ddcDevice, ddcHost, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return result == KERN_SUCCESS ? std::nullopt : std::optional(Exchange::NoReply);
}

void AvService::pause(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

std::string AvService::explainAccess(Exchange /*exchange*/) const {
    return "系统未能打开这块显示器的控制通道。";
}

std::vector<AvEntry> externalServices(const AvFunctions& functions) {
    std::vector<AvEntry> found;
    io_iterator_t list = 0;
    if (!functions.complete() ||
        IOServiceGetMatchingServices(kIOMainPortDefault, IOServiceMatching(serviceClass), &list) != KERN_SUCCESS) {
        return found;
    }
    const IoObject iterator(list);
    for (IoObject entry = iterator.next(); entry; entry = iterator.next()) {
        if (isExternal(entry)) {
            DisplayChannel channel{.path = pathOf(entry), .edid = AvService(functions, entry).edid()};
            found.push_back({std::move(entry), std::move(channel)});
        }
    }
    return found;
}

} // namespace rb
