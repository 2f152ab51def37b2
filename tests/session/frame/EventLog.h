#pragma once

#include "tests/session/frame/XClient.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rb {

enum class SessionEventKind { Mapped, Unmapped, SaverOn, SaverOff };

struct SessionEvent {
    SessionEventKind kind = SessionEventKind::Mapped;
    double time = 0;    // seconds on the monotonic clock, when the server told
    WindowFacts window; // as it was when it was mapped; empty for the others
};

// What happens on a screen, in the server's order: windows of the root that are mapped, and the screen saver. Listens
// on a connection of its own from its creation on.
class EventLog {
public:
    explicit EventLog(const std::string& display);

    // Waits until such an event is there, at most that many seconds, and returns it.
    std::optional<SessionEvent> waitFor(const std::function<bool(const SessionEvent&)>& wanted, double limit = 5);
    // All up to now.
    const std::vector<SessionEvent>& events();
    std::size_t count(const std::function<bool(const SessionEvent&)>& wanted);

private:
    void take(const xcb_generic_event_t& event);

    XClient x_;
    std::uint8_t screenSaverEvent_ = 0;
    std::vector<SessionEvent> events_;
};

} // namespace rb
