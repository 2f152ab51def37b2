#include "desktops/macos/RandomSource.h"

#include "desktops/macos/Bridge.h"

#include <cstdlib>

namespace rb {

int MacRandomSource::upTo10000() {
    return static_cast<int>(arc4random_uniform(10001));
}

std::string MacRandomSource::newUUIDString() {
    return utf8String(NSUUID.UUID.UUIDString);
}

} // namespace rb
