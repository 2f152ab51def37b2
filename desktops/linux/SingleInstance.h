#pragma once

#include "desktops/linux/UniqueFd.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace rb {

class Log;

// One running program per session: who owns the name org.rookbay.RookBay on the session bus is the one; where there
// is no bus, who holds the lock on a file. Asked before anything else is built, so that a second start is quick.
class SingleInstance {
public:
    enum class Outcome {
        First,      // go on and run
        HandedOver, // the running one has taken over; end with success
        Failed,     // another one runs and can't be reached, or it can't be told; end with an error
    };
    using Reopen = std::function<void(const std::vector<std::string>& arguments)>;

    explicit SingleInstance(Log& log);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    // Hands `arguments` over to the running one, if any; waits a few seconds at most.
    Outcome claim(const std::vector<std::string>& arguments);
    // Why it failed, for the person who started the program.
    const std::string& message() const { return message_; }
    // Whom later starts reach, on the main thread once the event loop runs. Later starts that come before are kept.
    void setReopen(Reopen reopen);

private:
    class Door;

    Outcome claimOnBus(const std::vector<std::string>& arguments);
    Outcome claimFile();
    Outcome fail(const std::string& message);

    Log& log_;
    std::string message_;
    std::unique_ptr<Door> door_;
    UniqueFd lock_;
};

} // namespace rb
