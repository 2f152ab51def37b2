#pragma once

#include "desktops/virtual/Journal.h"
#include "platform/Application.h"
#include "platform/Observers.h"

#include <functional>
#include <map>

namespace rb {

class VirtualRunLoop;

// The running program. run() launches it and then either hands over to the script and quits, or, without a script,
// returns at once: then the test drives and ends with terminate().
class VirtualApplication final : public Application {
public:
    VirtualApplication(const VirtualRunLoop& loop, Journal& journal)
        : loop_(loop)
        , journal_(journal) {}

    int run(ApplicationDelegate& delegate) override;
    void terminate() override;
    void setActivationPolicy(ActivationPolicy policy) override;
    void activateIgnoringOtherApps() override;
    std::vector<std::string> arguments() const override { return arguments_; }
    std::optional<std::string> infoString(const std::string& key) const override;

    // What the user does while run() lasts; for entry points that own their delegate.
    void setScript(std::function<void()> script) { script_ = std::move(script); }
    void setArguments(std::vector<std::string> arguments) { arguments_ = std::move(arguments); }
    void setInfoString(const std::string& key, const std::string& value) { info_[key] = value; }

    // The user opens the running program once more; gives the delegate's answer.
    bool reopen(bool hasVisibleWindows = false);
    // Another program comes to the front.
    void deactivate();
    bool isActive() const { return active_; }
    bool isRunning() const { return delegate_ != nullptr; }
    std::optional<ActivationPolicy> activationPolicy() const { return policy_; }
    ApplicationDelegate* delegate() const { return delegate_; }
    // The program came to the front or left it.
    Handle onActiveChange(std::function<void()> changed) { return activeObservers_.add(std::move(changed)); }

private:
    void setActive(bool active);

    const VirtualRunLoop& loop_;
    Journal& journal_;
    std::function<void()> script_;
    std::vector<std::string> arguments_;
    std::map<std::string, std::string> info_;
    ApplicationDelegate* delegate_ = nullptr;
    std::optional<ActivationPolicy> policy_;
    bool active_ = false;
    Observers<> activeObservers_;
};

} // namespace rb
