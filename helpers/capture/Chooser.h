#pragma once

#include "helpers/capture/CaptureDisplays.h"
#include "helpers/capture/Region.h"
#include "helpers/capture/ScreenPixels.h"
#include "helpers/capture/WindowPlaces.h"
#include "platform/RunLoop.h"

#include <QImage>

#include <functional>
#include <optional>
#include <vector>
#include <xcb/xcb.h>

namespace rb {

class XConnection;

struct CaptureChoice {
    enum class Kind { Chosen, Cancelled, NoMouse };
    Kind kind = Kind::Cancelled;
    PixelRect area = {};
    std::optional<WindowPlace> window = std::nullopt;
};

// Stops the screen as it is and lets the user choose a part of it with the mouse: one window over all displays that
// shows the picture of them, with less light where nothing is chosen. It is drawn by the X server from pixmaps that it
// has already, so it follows the mouse at once whatever the screen's size. Main thread only.
class Chooser {
public:
    enum class Mode { Region, Window };

    Chooser(XConnection& connection, const ScreenPixels& pixels, RunLoop& loop, Mode mode);
    ~Chooser();
    Chooser(const Chooser&) = delete;
    Chooser& operator=(const Chooser&) = delete;

    // Takes the picture and shows it; needs no application of Qt's yet. False when the server refuses.
    bool freeze();
    const QImage& picture() const { return picture_; }
    const std::vector<WindowPlace>& windows() const { return windows_; }

    // Asks the user; `chosen` is called once, when everything is as before on the screen.
    void ask(const std::vector<CaptureDisplay>& displays, std::function<void(const CaptureChoice&)> chosen);

private:
    void grab();
    void readKeys();
    void handle(const xcb_generic_event_t& event);
    void press(const xcb_button_press_event_t& event);
    void release(const xcb_button_release_event_t& event);
    void key(const xcb_key_press_event_t& event);
    void moved(PixelPoint to);
    void nudge(int dx, int dy, bool far);
    void confirm();
    void toggleMode();
    void useCursor();
    void finish(const CaptureChoice& choice);
    void close();

    struct Label {
        PixelRect place = {};
        QImage picture = {};
    };
    PixelRect brightPart() const;
    Label label(const PixelRect& bright) const;
    Label hint() const;
    void schedulePaint();
    void paint();
    void drawEdge(const PixelRect& bright);
    void drawLabel(const Label& label, const PixelRect& bright);
    void flush();
    void copy(xcb_drawable_t from, xcb_drawable_t to, const PixelRect& part);
    std::uint32_t keysym(xcb_keycode_t code) const;

    XConnection& connection_;
    const ScreenPixels& pixels_;
    RunLoop& loop_;
    Mode mode_;
    RegionDrag drag_;
    PixelPoint pointer_;
    std::vector<CaptureDisplay> displays_;
    std::vector<WindowPlace> windows_;
    std::function<void(const CaptureChoice&)> chosen_;

    QImage picture_;
    QImage dark_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    xcb_pixmap_t frozen_ = XCB_PIXMAP_NONE;
    xcb_pixmap_t darkened_ = XCB_PIXMAP_NONE;
    xcb_pixmap_t canvas_ = XCB_PIXMAP_NONE;
    xcb_gcontext_t context_ = XCB_NONE;
    xcb_cursor_t cursor_ = XCB_CURSOR_NONE;
    PixelRect painted_; // what differs from the darkened picture on the screen
    bool paintScheduled_ = false;

    bool hasMouse_ = false;
    bool hasKeys_ = false;
    int attempts_ = 0;
    std::vector<std::uint32_t> keysyms_; // of the unshifted keys, from the lowest code on
    xcb_keycode_t firstKey_ = 0;
    xcb_timestamp_t spaceReleased_ = XCB_CURRENT_TIME;
    Handle events_;
    Handle retry_;
    Lifetime lifetime_;
};

} // namespace rb
