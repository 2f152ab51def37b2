#include "helpers/shared/Answer.h"

#include "helpers/shared/WriteAll.h"

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
    return writeAll(STDOUT_FILENO, json + "\n");
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
