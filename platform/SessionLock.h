#pragma once

namespace rb {

// Locking the session and darkening the displays, through the session's own means. Both only start something and
// return at once; what can't be started is logged with the reason.
class SessionLock {
public:
    virtual ~SessionLock() = default;
    // Starts the screen saver, which locks the screen. Main thread.
    virtual void startScreenSaver() = 0;
    // Any thread.
    virtual void sleepDisplays() = 0;
};

} // namespace rb
