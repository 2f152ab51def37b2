#include "desktops/virtual/Application.h"

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/RunLoop.h"

#include <utility>

namespace rb {

int VirtualApplication::run(ApplicationDelegate& delegate) {
    loop_.requireMainThread("Application::run");
    if (delegate_) {
        contractViolation("the application runs already");
    }
    delegate_ = &delegate;
    delegate.applicationDidFinishLaunching();
    if (script_) {
        try {
            script_();
        } catch (...) {
            delegate_ = nullptr; // it dies on the way up
            throw;
        }
        terminate();
    }
    return 0;
}

void VirtualApplication::terminate() {
    loop_.requireMainThread("Application::terminate");
    if (auto* delegate = std::exchange(delegate_, nullptr)) {
        journal_.note("terminate");
        delegate->applicationWillTerminate();
        active_ = false;
    }
}

void VirtualApplication::setActivationPolicy(ActivationPolicy policy) {
    loop_.requireMainThread("Application::setActivationPolicy");
    journal_.note(policy == ActivationPolicy::Accessory ? "setActivationPolicy accessory"
                                                        : "setActivationPolicy regular");
    policy_ = policy;
}

void VirtualApplication::activateIgnoringOtherApps() {
    loop_.requireMainThread("Application::activateIgnoringOtherApps");
    setActive(true);
}

void VirtualApplication::deactivate() {
    setActive(false);
}

void VirtualApplication::setActive(bool active) {
    if (std::exchange(active_, active) != active) {
        journal_.note(active ? "activate" : "deactivate");
        activeObservers_.notify();
    }
}

std::optional<std::string> VirtualApplication::infoString(const std::string& key) const {
    const auto found = info_.find(key);
    return found == info_.end() ? std::nullopt : std::optional(found->second);
}

bool VirtualApplication::reopen(bool hasVisibleWindows) {
    if (!delegate_) {
        throw ImpossibleAct("the program doesn't run, so it can't be opened again");
    }
    return delegate_->applicationShouldHandleReopen(hasVisibleWindows);
}

} // namespace rb
