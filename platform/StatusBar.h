#pragma once

#include "motion/Geometry.h"
#include "motion/Image.h"
#include "motion/TimingCurve.h"
#include "platform/Handle.h"
#include "platform/Menu.h"
#include "platform/View.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace rb {

// How a user clicked on a status item: which button came up, and the modifiers held then.
struct StatusItemClick {
    bool rightButton = false;
    std::uint32_t modifierFlags = NoModifiers; // or of ModifierFlags
};

// A picture pushed out by the next one that the item is given, which comes from that side.
struct PushTransition {
    enum class From { Left, Right };
    From from = From::Left;
    double duration = 0; // seconds
    TimingCurve timing = TimingCurve::linear();
};

// What hangs below an item in a bubble of its own. It closes by itself when the user presses elsewhere.
struct PopoverSpec {
    View content = {};
    // It has left the screen, whoever closed it; it lives at least until this returns.
    std::function<void()> didClose = nullptr;
};

// Shown from its making on. Destruction takes it off the screen without telling.
class Popover {
public:
    virtual ~Popover() = default;
    // With its closing animation where there is one; didClose comes at its end or, without one, at once.
    virtual void close() = 0;
};

// One item in the system's status bar. Destruction takes it away. Main thread only.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    virtual void setImage(const Image& image) = 0;
    virtual void setToolTip(const std::string& toolTip) = 0;
    // Opens on a click. Shared with the product, which keeps filling it; null takes the menu off.
    virtual void setMenu(std::shared_ptr<Menu> menu) = 0;

    // In points; a new item is as wide as its picture asks. A bar that isn't ours to arrange may keep its own width.
    virtual void setLength(double length) = 0;
    // The user's arrangement is remembered under this name. To be set before the item is first seen.
    virtual void setAutosaveName(const std::string& name) = 0;
    // Items begin visible.
    virtual void setVisible(bool visible) = 0;
    virtual bool isVisible() const = 0;
    // Told when the left or the right button comes up on the item. Not together with a menu of its own.
    virtual void setAction(std::function<void(const StatusItemClick& click)> action) = 0;
    // Opens the menu at the item as a click on an item with a menu would; may return only when it has closed.
    virtual void popUpMenu(std::shared_ptr<Menu> menu) = 0;
    // Makes transitions possible (the system keeps a layer for the item then).
    virtual void setLayerBacked(bool layerBacked) = 0;
    // For a layer-backed item, before its picture is changed. A later transition under the same key replaces the one
    // that runs.
    virtual void addTransition(const std::string& key, const PushTransition& transition) = 0;
    // Where it is, in screen coordinates; nothing while it has no window, or when whoever shows it doesn't tell.
    virtual std::optional<Rect> frame() const = 0;
    // Below the item; the item outlives it. Null while it has no window.
    virtual std::unique_ptr<Popover> showPopover(PopoverSpec spec) = 0;
};

// The system's status bar.
class StatusBar {
public:
    virtual ~StatusBar() = default;

    // A new item of variable length (as wide as its picture asks), to the left of older ones.
    virtual std::unique_ptr<StatusItem> createItem() = 0;
    // Height of the bar in points, also where a menu bar is hidden.
    virtual double thickness() const = 0;
    // Whether a long item pushes what is left of it out of the bar. Not in bars of programs that arrange their items
    // by themselves.
    virtual bool longItemsPushOthersOut() const = 0;
    // Another bar shows the items now.
    virtual Handle onBarChange(std::function<void()> changed) = 0;
};

} // namespace rb
