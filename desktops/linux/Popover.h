#pragma once

#include "desktops/linux/RealizedView.h"
#include "platform/Handle.h"
#include "platform/StatusBar.h"

#include <QRect>

#include <memory>

namespace rb {

class EventMonitors;
class LinuxWindows;

// A bubble with an arrow that points at an item. Under a compositor it is round with a soft shadow, without one a
// plain rectangle with a border. It takes the keyboard when it appears, without keeping it from anybody.
class LinuxPopover final : public Popover, private ContentSurroundings {
public:
    // `anchor` is the item's area in Qt's coordinates; the others outlive it.
    LinuxPopover(LinuxWindows& windows, EventMonitors& monitors, PopoverSpec spec, const QRect& anchor);
    ~LinuxPopover() override;
    LinuxPopover(const LinuxPopover&) = delete;
    LinuxPopover& operator=(const LinuxPopover&) = delete;

    void close() override;

private:
    class Bubble;

    LayerTicker& ticker() const override;
    const Pictures& pictures() const override;
    const Theme& theme() const override;
    QWidget& canvas() override;
    void makeFirstResponder(BoxWidget& /*box*/) override {}
    bool isFirstResponder(const BoxWidget& /*box*/) const override { return false; }
    void boxGone(BoxWidget& /*box*/) override {}

    void pressedSomewhere();

    LinuxWindows& windows_;
    std::function<void()> didClose_;
    std::unique_ptr<Bubble> bubble_;
    Handle pressesElsewhere_;
    Handle pressesHere_;
    Handle themeChanges_;
};

} // namespace rb
