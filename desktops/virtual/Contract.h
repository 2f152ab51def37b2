#pragma once

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

// How the virtual desktop says that something is wrong.
namespace rb {

// The product broke a rule of the seam (wrong thread, a timer left behind): ends the process with the reason, also
// where no exception may pass.
[[noreturn]] inline void contractViolation(const std::string& reason) {
    std::fprintf(stderr, "Virtual desktop: %s\n", reason.c_str());
    std::fflush(stderr);
    std::abort();
}

// The test asked for something that a user couldn't do (a missing button, a disabled menu item).
class ImpossibleAct : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

} // namespace rb
