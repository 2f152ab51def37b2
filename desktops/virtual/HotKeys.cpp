#include "desktops/virtual/HotKeys.h"

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/RunLoop.h"

#include <string>

namespace rb {

namespace {

constexpr std::uint32_t lastKeyCode = 127;

std::string describe(const char* deed, std::uint32_t keyCode, std::uint32_t modifiers) {
    return std::string(deed) + " " + std::to_string(keyCode) + " " + std::to_string(modifiers);
}

} // namespace

Handle VirtualHotKeys::installHandler(std::function<void(HotKeyId)> pressed) {
    loop_.requireMainThread("HotKeys::installHandler");
    journal_.note("installHotKeyHandler");
    return handlers_.add(std::move(pressed));
}

Handle VirtualHotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyId id) {
    loop_.requireMainThread("HotKeys::registerHotKey");
    const Combination combination{keyCode, modifiers};
    if (keyCode > lastKeyCode || elsewhere_.contains(combination) || registered_->contains(combination)) {
        journal_.note(describe("refuseHotKey", keyCode, modifiers));
        return {};
    }
    journal_.note(describe("registerHotKey", keyCode, modifiers));
    registered_->emplace(combination, id);
    return Handle([registered = registered_, combination, &journal = journal_] {
        journal.note(describe("unregisterHotKey", combination.first, combination.second));
        registered->erase(combination);
    });
}

void VirtualHotKeys::holdElsewhere(std::uint32_t keyCode, std::uint32_t modifiers) {
    if (registered_->contains({keyCode, modifiers})) {
        throw ImpossibleAct(describe("this program holds the key", keyCode, modifiers));
    }
    elsewhere_.insert({keyCode, modifiers});
}

void VirtualHotKeys::releaseElsewhere(std::uint32_t keyCode, std::uint32_t modifiers) {
    elsewhere_.erase({keyCode, modifiers});
}

bool VirtualHotKeys::press(std::uint32_t keyCode, std::uint32_t modifiers) {
    const auto found = registered_->find({keyCode, modifiers});
    if (found == registered_->end()) {
        return false;
    }
    handlers_.notify(found->second);
    return true;
}

} // namespace rb
