#pragma once

#include "platform/Alerts.h"
#include "platform/Handle.h"
#include "platform/View.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace rb {

struct WindowSpec {
    Size contentSize = {};
    std::string title = {};
    bool closable = true;
    bool resizable = false;
    bool miniaturizable = false;
    // The user can't make the content smaller than this.
    std::optional<Size> minimumSize = std::nullopt;
    // Dark, whatever the system's appearance.
    bool dark = false;
    // The title bar shows what is behind it; the content keeps clear of it.
    bool transparentTitleBar = false;
    // Made of the system's material for windows, where it has one.
    bool translucent = false;
    // The user closed the window; it is off the screen but lives on.
    std::function<void()> willClose = nullptr;
};

// How children come into view one after another: from transparent to opaque and sliding up into their place.
struct Reveal {
    double duration = 0;  // seconds, of each child
    double delay = 0;     // seconds by which each child starts later than the one before it
    std::size_t last = 0; // children behind this index start with it
    double slide = 0;     // points
};

// A titled window of the program. Closing takes it off the screen without destroying it. Main thread only.
class Window {
public:
    virtual ~Window() = default;

    virtual void setContent(View content) = 0;
    virtual void center() = 0;
    virtual void makeKeyAndOrderFront() = 0;
    virtual void orderOut() = 0;
    virtual bool isVisible() const = 0;
    // The view must accept it; an unknown identifier is ignored. Returns whether it is first responder now.
    virtual bool makeFirstResponder(const std::string& identifier) = 0;
    // In screen coordinates, title bar included.
    virtual Rect frame() const = 0;
    virtual void setFrame(const Rect& frame) = 0;
    // In front of the program's other windows, without giving it the keyboard.
    virtual void orderFront() = 0;
    virtual bool isMiniaturized() const = 0;
    // It takes the keyboard now: only while the program is active.
    virtual bool isKeyWindow() const = 0;

    // Asks a question on this window, which waits meanwhile; the rest of the program goes on. The answer comes as that
    // of Alerts::runModal does. Dropping the handle takes the question away without an answer.
    virtual Handle beginSheet(const Alert& alert, std::function<void(std::size_t button)> answer) = 0;

    // How far a scroll view's content is scrolled down, in points; 0 for an unknown identifier. It stays where it is
    // when the content is rendered anew, as far as there is content.
    virtual double scrollOffset(const std::string& identifier) const = 0;
    virtual void setScrollOffset(const std::string& identifier, double offset) = 0;
    // Plays the entrance of a stack's children.
    virtual void reveal(const std::string& stackIdentifier, const Reveal& reveal) = 0;
};

class Windows {
public:
    virtual ~Windows() = default;
    // Created off the screen.
    virtual std::unique_ptr<Window> createWindow(const WindowSpec& spec) = 0;
    // The program is the one that the user works in now.
    virtual bool isApplicationActive() const = 0;
    // One of the program's windows, of whatever kind, takes the keyboard.
    virtual bool hasKeyWindow() const = 0;
};

} // namespace rb
