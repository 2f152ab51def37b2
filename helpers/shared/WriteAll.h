#pragma once

#include <cerrno>
#include <string_view>
#include <unistd.h>

namespace rb {

// Writes all of the bytes, in as many pieces as it takes; false with errno when the descriptor takes no more.
inline bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(fd, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace rb
