#include "desktops/virtual/Windows.h"

#include "desktops/virtual/Contract.h"

#include <algorithm>

namespace rb {

VirtualWindows::VirtualWindows(const Surroundings& surroundings)
    : surroundings_(surroundings)
    , pointerMoves_(surroundings.pointer.onMove([this] { updateHover(); }))
    , activeChanges_(surroundings.application.onActiveChange([this] { updateHover(); }))
    , appearanceChanges_(surroundings.appearance.onChange([this] {
        const auto windows = all_;
        for (VirtualWindow* window : windows) {
            window->appearanceChanged();
        }
    })) {}

std::unique_ptr<Window> VirtualWindows::createWindow(const WindowSpec& spec) {
    surroundings_.loop.requireMainThread("Windows::createWindow");
    return std::make_unique<VirtualWindow>(*this, spec);
}

VirtualWindow* VirtualWindows::keyWindow() const {
    return surroundings_.application.isActive() ? key_ : nullptr;
}

VirtualWindow& VirtualWindows::titled(const std::string& title) const {
    const auto found = std::find_if(all_.begin(), all_.end(),
                                    [&title](const VirtualWindow* window) { return window->spec().title == title; });
    if (found == all_.end()) {
        throw ImpossibleAct("there is no window \"" + title + "\"");
    }
    return **found;
}

VirtualWindow* VirtualWindows::underPointer() const {
    const Point pointer = surroundings_.pointer.location();
    const auto found = std::find_if(ordered_.rbegin(), ordered_.rend(), [pointer](const VirtualWindow* window) {
        return window->frame().containsPointer(pointer);
    });
    return found == ordered_.rend() ? nullptr : *found;
}

void VirtualWindows::updateHover() {
    const auto windows = all_;
    for (VirtualWindow* window : windows) {
        if (std::find(all_.begin(), all_.end(), window) != all_.end()) {
            window->updateHover();
        }
    }
}

} // namespace rb
