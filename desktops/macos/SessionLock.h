#pragma once

#include "platform/Log.h"
#include "platform/SessionLock.h"

namespace rb {

// The screen saver, which locks the screen as the user's security settings say, and the display sleep of pmset.
class MacSessionLock final : public SessionLock {
public:
    explicit MacSessionLock(Log& log)
        : log_(log) {}
    void startScreenSaver() override;
    void sleepDisplays() override;

private:
    Log& log_;
};

} // namespace rb
