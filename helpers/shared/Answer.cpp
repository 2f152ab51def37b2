#include "helpers/shared/Answer.h"

#include <cerrno>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace rb {

void guardStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            // The lowest free number is this one, for those below it are taken.
            (void)::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

bool sayLine(const std::string& json) {
    const std::string line = json + "\n";
    std::size_t written = 0;
    while (written < line.size()) {
        const ssize_t length = ::write(STDOUT_FILENO, line.data() + written, line.size() - written);
        if (length < 0 && errno == EINTR) {
            continue;
        }
        if (length <= 0) {
            return false;
        }
        written += static_cast<std::size_t>(length);
    }
    return true;
}

std::string quoted(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

Outcome::Outcome(bool ok)
    : text_(ok ? R"({"ok":true)" : R"({"ok":false)") {}

Outcome& Outcome::flag(const char* name, bool value) {
    text_ += ",\"" + std::string(name) + (value ? "\":true" : "\":false");
    return *this;
}

Outcome& Outcome::message(const std::string& text) {
    text_ += ",\"message\":" + quoted(text);
    return *this;
}

} // namespace rb
