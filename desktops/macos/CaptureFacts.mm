#include "desktops/macos/CaptureFacts.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/PropertyLists.h"

#include <sys/xattr.h>

#include <vector>

namespace rb {

namespace {

constexpr const char* markAttribute = "com.apple.metadata:kMDItemIsScreenCapture";
constexpr const char* rectAttribute = "com.apple.metadata:kMDItemScreenCaptureGlobalRect";

} // namespace

bool MacCaptureFacts::isMarkedAsCapture(const std::string& path) const {
    return getxattr(path.c_str(), markAttribute, nullptr, 0, 0, 0) >= 0;
}

std::optional<PropertyValue> MacCaptureFacts::captureRectangle(const std::string& path) const {
    const ssize_t size = getxattr(path.c_str(), rectAttribute, nullptr, 0, 0, 0);
    if (size < 1) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    if (getxattr(path.c_str(), rectAttribute, bytes.data(), bytes.size(), 0, 0) != size) {
        return std::nullopt;
    }
    NSData* data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
    return propertyValue([NSPropertyListSerialization propertyListWithData:data
                                                                   options:NSPropertyListImmutable
                                                                    format:nullptr
                                                                     error:nil]);
}

} // namespace rb
