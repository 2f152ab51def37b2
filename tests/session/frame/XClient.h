#pragma once

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace rb {

// An xcb reply or error; both come from malloc.
template <typename Type>
using XAnswer = std::unique_ptr<Type, decltype(&std::free)>;
template <typename Type>
XAnswer<Type> ownReply(Type* reply) {
    return {reply, &std::free};
}

// What a look at a window found. Positions are pixels of the root window, from its top left.
struct WindowFacts {
    xcb_window_t window = 0;
    std::string instance = {}; // of WM_CLASS
    std::string className = {};
    std::string title = {};
    std::vector<std::string> types = {}; // _NET_WM_WINDOW_TYPE
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool viewable = false;
    bool overrideRedirect = false;
};

// A second client of the X server, which looks at what is there and acts as a user with keyboard and mouse (XTEST).
class XClient {
public:
    // Throws std::runtime_error when the server can't be reached.
    explicit XClient(const std::string& display);
    XClient(const XClient&) = delete;
    XClient& operator=(const XClient&) = delete;
    ~XClient();

    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    const xcb_screen_t& screen() const { return *screen_; }
    xcb_atom_t atom(const std::string& name) const;
    // A round trip: the server has dealt with all that was sent.
    void sync() const;
    // A current time of the server, which owning a selection asks for.
    xcb_timestamp_t serverTime() const;

    // Looking.
    std::vector<WindowFacts> windows() const;
    // The viewable windows (top-level or inside a window manager's frame) of this WM_CLASS, instance or class.
    std::vector<WindowFacts> viewableOfClass(const std::string& name) const;
    std::optional<WindowFacts> viewableTitled(const std::string& title) const;
    std::optional<WindowFacts> facts(xcb_window_t window) const;
    // 32-bit values or bytes of a property; empty when it isn't there.
    std::vector<std::uint32_t> cardinals(xcb_window_t window, const std::string& property) const;
    std::string text(xcb_window_t window, const std::string& property) const;
    xcb_window_t selectionOwner(const std::string& selection) const;
    xcb_window_t focus() const;
    // Whether the keyboard belongs to the window or to one inside it.
    bool hasFocus(xcb_window_t window) const;
    // Pressed modifiers and buttons as the server sees them.
    std::uint16_t modifierState() const;
    // The child of the root window that takes the pointer's events where it is now; 0 for the root itself.
    xcb_window_t windowUnderPointer() const;
    // The colour 0xRRGGBB of a pixel of the screen.
    std::uint32_t pixel(int x, int y) const;

    // Acting. Keys are X keysyms; throws std::runtime_error when no key has it.
    void pressKey(std::uint32_t keysym) const;
    void releaseKey(std::uint32_t keysym) const;
    // Holds the modifiers, taps the key, lets go.
    void tapKey(std::uint32_t keysym, const std::vector<std::uint32_t>& modifiers = {}) const;
    void tapKeycode(std::uint8_t keycode) const;
    void movePointer(int x, int y) const;
    void click(int x, int y, std::uint8_t button = 1) const;
    void pressButton(std::uint8_t button = 1) const;
    void releaseButton(std::uint8_t button = 1) const;
    // Presses at the first place and moves to the second at a hand's pace, the button still held: programs begin drags
    // and answer them between two motions.
    void dragTo(int fromX, int fromY, int toX, int toY) const;
    // Asks the window manager to close the window as by its title bar.
    void requestClose(xcb_window_t window) const;

    // Grabs on the root window as another program's hot key; modifiers as a KeyButMask. False when someone holds it.
    // Throws std::runtime_error when no key has the keysym.
    bool grabKey(std::uint32_t keysym, std::uint16_t modifiers = 0) const;
    void ungrabKey(std::uint32_t keysym, std::uint16_t modifiers = 0) const;
    // Whether someone else holds it. The server is grabbed meanwhile, so that asking never takes the key away from a
    // program that is just about to grab it.
    bool isKeyHeld(std::uint32_t keysym, std::uint16_t modifiers = 0) const;
    bool isKeycodeHeld(std::uint8_t keycode, std::uint16_t modifiers = 0) const;
    std::uint8_t keycode(std::uint32_t keysym) const; // 0 when no key has it

private:
    bool grabKeycode(std::uint8_t keycode, std::uint16_t modifiers) const;
    std::uint8_t existingKeycode(std::uint32_t keysym) const;
    void collect(xcb_window_t window, std::vector<WindowFacts>& found) const;
    void fakeInput(std::uint8_t type, std::uint8_t detail, int x, int y) const;
    std::vector<WindowFacts> viewable(const std::function<bool(const WindowFacts&)>& wanted) const;

    xcb_connection_t* connection_ = nullptr;
    const xcb_screen_t* screen_ = nullptr;
};

} // namespace rb
