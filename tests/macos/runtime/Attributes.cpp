#include <cerrno>
#include <cstdint>
#include <map>
#include <string>
#include <sys/types.h>

#include "tests/macos/runtime/Attributes.h"

namespace rb::fake {

std::map<std::string, std::string>& attributes() {
    static std::map<std::string, std::string> all;
    return all;
}

} // namespace rb::fake

extern "C" ssize_t getxattrOfFake(const char* path, const char* name, void* value, size_t size, std::uint32_t,
                                  int) __asm__("rbfake_getxattr");

ssize_t getxattrOfFake(const char* path, const char* name, void* value, size_t size, std::uint32_t /*position*/,
                       int /*options*/) {
    const auto found = rb::fake::attributes().find(std::string(path) + " " + name);
    if (found == rb::fake::attributes().end()) {
        errno = ENODATA;
        return -1;
    }
    if (value != nullptr) {
        found->second.copy(static_cast<char*>(value), size);
    }
    return static_cast<ssize_t>(found->second.size());
}
