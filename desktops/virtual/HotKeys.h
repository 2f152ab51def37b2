#pragma once

#include "desktops/virtual/Journal.h"
#include "platform/HotKeys.h"
#include "platform/Observers.h"

#include <map>
#include <memory>
#include <set>
#include <utility>

namespace rb {

class VirtualRunLoop;

// System-wide keys, shared with other programs. Keys with codes above 127 don't exist on this keyboard.
class VirtualHotKeys final : public HotKeys {
public:
    using Combination = std::pair<std::uint32_t, std::uint32_t>; // key code, or of HotKeyModifiers

    VirtualHotKeys(const VirtualRunLoop& loop, Journal& journal)
        : loop_(loop)
        , journal_(journal) {}

    Handle installHandler(std::function<void(HotKeyId)> pressed) override;
    Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyId id) override;

    // Another program takes the combination, or gives it back.
    void holdElsewhere(std::uint32_t keyCode, std::uint32_t modifiers);
    void releaseElsewhere(std::uint32_t keyCode, std::uint32_t modifiers);
    // The user presses and releases the combination. False when this program hasn't registered it.
    bool press(std::uint32_t keyCode, std::uint32_t modifiers);
    // A press event with an identifier of the test's choice reaches the handlers (of another key, or unreadable).
    void sendPressed(HotKeyId id) { handlers_.notify(id); }

    // What this program holds.
    const std::map<Combination, HotKeyId>& registered() const { return *registered_; }
    std::size_t handlerCount() const { return handlers_.count(); }

private:
    const VirtualRunLoop& loop_;
    Journal& journal_;
    std::shared_ptr<std::map<Combination, HotKeyId>> registered_ = std::make_shared<std::map<Combination, HotKeyId>>();
    std::set<Combination> elsewhere_;
    Observers<HotKeyId> handlers_;
};

} // namespace rb
