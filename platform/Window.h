#pragma once

#include "platform/View.h"

#include <functional>
#include <memory>
#include <string>

namespace rb {

struct WindowSpec {
    Size contentSize = {};
    std::string title = {};
    bool closable = true;
    bool resizable = false;
    bool miniaturizable = false;
    // The user closed the window; it is off the screen but lives on.
    std::function<void()> willClose = nullptr;
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
};

class Windows {
public:
    virtual ~Windows() = default;
    // Created off the screen.
    virtual std::unique_ptr<Window> createWindow(const WindowSpec& spec) = 0;
};

} // namespace rb
