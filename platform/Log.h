#pragma once

#include <string>

namespace rb {

// Diagnostics that the user needn't see. Callable from any thread. Never given file contents, clipboard
// contents or keys.
class Log {
public:
    virtual ~Log() = default;
    // One line; the desktop puts "Rook Bay: " before it.
    virtual void write(const std::string& line) = 0;
};

} // namespace rb
