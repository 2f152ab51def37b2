#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace rb {

// Where the user is looking: the folder of the front file manager window. Main thread only.
class FrontFolder {
public:
    struct Answer {
        std::string path = {}; // absolute; empty when it couldn't be told
        // Why not, as the system numbers and words it; 0 and empty when it doesn't say.
        std::int64_t errorCode = 0;
        std::string errorText = {};
    };
    // The user hasn't allowed this program to ask the file manager.
    static constexpr std::int64_t notPermitted = -1743;

    virtual ~FrontFolder() = default;
    // Without any window the answer is the Desktop folder, where the system can tell that there is none. The answer
    // comes once, before this returns or in a later turn; within a second or two also when the file manager hangs.
    virtual void ask(std::function<void(const Answer&)> answer) = 0;
};

} // namespace rb
