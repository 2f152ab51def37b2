#pragma once

#include "desktops/linux/ChildProcess.h"
#include "desktops/linux/LockPlan.h"
#include "platform/Handle.h"
#include "platform/SessionLock.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QDBusMessage;

namespace rb {

class Log;
class RunLoop;
class UserDefaults;

// Locks with the command that the user chose (user default LinuxLockCommand), else with the means of the session, one
// after another until one succeeds. Nothing is prepared and nothing watched in between: a configured command starts
// at once, and the session is looked at only when there is none.
class LinuxSessionLock final : public SessionLock {
public:
    LinuxSessionLock(const UserDefaults& defaults, RunLoop& runLoop, Log& log);

    void startScreenSaver() override;
    void sleepDisplays() override;

private:
    struct Round; // one locking: what is left to try

    void lookAtSession();
    void tryNext(const std::shared_ptr<Round>& round);
    void tryProgram(const std::vector<std::string>& words, const std::function<void()>& otherwise);
    void tryBus(const LockAttempt& attempt, const std::function<void()>& otherwise);
    void failed(const std::string& name, const std::string& reason, const std::function<void()>& otherwise);

    const UserDefaults& defaults_;
    RunLoop& runLoop_;
    Log& log_;
    int lockersRunning_ = 0; // that we started and that haven't ended
    Lifetime lifetime_;
};

} // namespace rb
