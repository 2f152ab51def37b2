#include "helpers/capture/Chooser.h"

#include "desktops/linux/XConnection.h"
#include "helpers/capture/ChooserLook.h"

#include <QPainter>

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace rb {

namespace {

// The key that started us may still be held, and its grab with it.
constexpr double untilNextAttempt = 0.02; // seconds
constexpr int mostAttempts = 150;

constexpr double labelGap = 16;  // points
constexpr double hintRaise = 72; // points from the lower edge of the display
constexpr int farNudge = 10;     // pixels

constexpr QRgb edgeColour = qRgb(255, 255, 255);
constexpr QRgb outlineColour = qRgb(0, 0, 0);
constexpr QRgb windowColour = qRgb(10, 132, 255);

int rounded(double value) {
    return static_cast<int>(std::lround(value));
}

} // namespace

Chooser::Chooser(XConnection& connection, const ScreenPixels& pixels, RunLoop& loop, Mode mode)
    : connection_(connection)
    , pixels_(pixels)
    , loop_(loop)
    , mode_(mode)
    , drag_(pixels.bounds()) {}

Chooser::~Chooser() {
    close();
}

bool Chooser::freeze() {
    xcb_connection_t* x = connection_.get();
    const PixelRect& all = pixels_.bounds();
    const auto width = static_cast<std::uint16_t>(all.width);
    const auto height = static_cast<std::uint16_t>(all.height);
    context_ = xcb_generate_id(x);
    const std::uint32_t drawing[] = {XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
    xcb_create_gc(x, context_, connection_.root(), XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, drawing);
    frozen_ = xcb_generate_id(x);
    xcb_create_pixmap(x, pixels_.depth(), frozen_, connection_.root(), width, height);
    copy(connection_.root(), frozen_, all);

    window_ = xcb_generate_id(x);
    constexpr std::uint32_t events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS |
                                     XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION |
                                     XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;
    const std::uint32_t window[] = {frozen_, 1, events};
    xcb_create_window(x, XCB_COPY_FROM_PARENT, window_, connection_.root(), 0, 0, width, height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, window);
    constexpr std::string_view name("rookbay-capture\0Rookbay-capture\0", 32);
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(name.size()), name.data());
    // picom draws a shadow around any window that doesn't say this.
    const std::uint32_t none = 0;
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window_, connection_.atom("_COMPTON_SHADOW"), XCB_ATOM_CARDINAL, 32,
                        1, &none);
    xcb_map_window(x, window_);
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(x, window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    grab();
    xcb_flush(x);
    picture_ = pixels_.read(frozen_, all);
    windows_ = readWindowPlaces(connection_, window_);
    return !picture_.isNull();
}

void Chooser::grab() {
    xcb_connection_t* x = connection_.get();
    if (!hasMouse_) {
        constexpr std::uint16_t events =
            XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
        const XReply<xcb_grab_pointer_reply_t> reply(
            xcb_grab_pointer_reply(x,
                                   xcb_grab_pointer(x, 0, window_, events, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                                                    XCB_WINDOW_NONE, cursor_, XCB_CURRENT_TIME),
                                   nullptr));
        hasMouse_ = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }
    if (!hasKeys_) {
        const XReply<xcb_grab_keyboard_reply_t> reply(xcb_grab_keyboard_reply(
            x, xcb_grab_keyboard(x, 0, window_, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC), nullptr));
        hasKeys_ = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }
    connection_.deliverQueuedEvents();
}

void Chooser::ask(const std::vector<CaptureDisplay>& displays, std::function<void(const CaptureChoice&)> chosen) {
    xcb_connection_t* x = connection_.get();
    displays_ = displays;
    chosen_ = std::move(chosen);
    readKeys();
    const XReply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(x, xcb_query_pointer(x, connection_.root()), nullptr));
    if (pointer) {
        pointer_ = {pointer->root_x, pointer->root_y};
    }
    dark_ = dimmed(picture_);
    const PixelRect& all = pixels_.bounds();
    for (xcb_pixmap_t* pixmap : {&darkened_, &canvas_}) {
        *pixmap = xcb_generate_id(x);
        xcb_create_pixmap(x, pixels_.depth(), *pixmap, connection_.root(), static_cast<std::uint16_t>(all.width),
                          static_cast<std::uint16_t>(all.height));
    }
    pixels_.write(darkened_, context_, {0, 0}, dark_);
    painted_ = all;
    useCursor();
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handle(event); });
    retry_ = loop_.every(untilNextAttempt, 0, [this] {
        grab();
        if (hasMouse_ && hasKeys_) {
            retry_.reset();
        } else if (++attempts_ == mostAttempts && !hasMouse_) {
            // Without the keys the mouse still chooses and cancels.
            finish({.kind = CaptureChoice::Kind::NoMouse});
        }
    });
    paint();
}

void Chooser::readKeys() {
    xcb_connection_t* x = connection_.get();
    const xcb_setup_t* setup = xcb_get_setup(x);
    firstKey_ = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const XReply<xcb_get_keyboard_mapping_reply_t> mapping(
        xcb_get_keyboard_mapping_reply(x, xcb_get_keyboard_mapping(x, firstKey_, count), nullptr));
    if (!mapping || mapping->keysyms_per_keycode == 0) {
        return;
    }
    const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    const int length = xcb_get_keyboard_mapping_keysyms_length(mapping.get());
    for (int i = 0; i < length; i += mapping->keysyms_per_keycode) {
        keysyms_.push_back(symbols[i]);
    }
}

std::uint32_t Chooser::keysym(xcb_keycode_t code) const {
    const auto index = static_cast<std::size_t>(code - firstKey_);
    return code >= firstKey_ && index < keysyms_.size() ? keysyms_[index] : XKB_KEY_NoSymbol;
}

void Chooser::handle(const xcb_generic_event_t& event) {
    if (!chosen_) {
        return; // the rest of what came in before the end
    }
    switch (event.response_type & 0x7F) {
    case XCB_BUTTON_PRESS:
        press(reinterpret_cast<const xcb_button_press_event_t&>(event));
        break;
    case XCB_BUTTON_RELEASE:
        release(reinterpret_cast<const xcb_button_release_event_t&>(event));
        break;
    case XCB_MOTION_NOTIFY: {
        const auto& motion = reinterpret_cast<const xcb_motion_notify_event_t&>(event);
        moved({motion.root_x, motion.root_y});
        break;
    }
    case XCB_KEY_PRESS:
        key(reinterpret_cast<const xcb_key_press_event_t&>(event));
        break;
    case XCB_KEY_RELEASE: {
        const auto& released = reinterpret_cast<const xcb_key_release_event_t&>(event);
        if (keysym(released.detail) == XKB_KEY_space) {
            spaceReleased_ = released.time;
            drag_.hold(false);
        }
        break;
    }
    case XCB_EXPOSE: {
        const auto& expose = reinterpret_cast<const xcb_expose_event_t&>(event);
        copy(canvas_, window_, {expose.x, expose.y, expose.width, expose.height});
        flush();
        break;
    }
    default:
        break;
    }
}

void Chooser::press(const xcb_button_press_event_t& event) {
    constexpr xcb_button_t left = 1;
    constexpr xcb_button_t right = 3;
    moved({event.root_x, event.root_y});
    if (event.detail == right) {
        finish({.kind = CaptureChoice::Kind::Cancelled});
    } else if (event.detail == left && mode_ == Mode::Window) {
        confirm();
    } else if (event.detail == left) {
        drag_.press(pointer_);
        schedulePaint();
    }
}

void Chooser::release(const xcb_button_release_event_t& event) {
    constexpr xcb_button_t left = 1;
    if (event.detail != left || !drag_.isDragging()) {
        return;
    }
    moved({event.root_x, event.root_y});
    const PixelRect drawn = drag_.release();
    if (isEmpty(drawn)) {
        schedulePaint();
    } else {
        finish({.kind = CaptureChoice::Kind::Chosen, .area = drawn});
    }
}

void Chooser::key(const xcb_key_press_event_t& event) {
    const bool far = (event.state & XCB_MOD_MASK_SHIFT) != 0;
    switch (keysym(event.detail)) {
    case XKB_KEY_Escape:
        finish({.kind = CaptureChoice::Kind::Cancelled});
        break;
    case XKB_KEY_Return:
    case XKB_KEY_KP_Enter:
        confirm();
        break;
    case XKB_KEY_space:
        if (drag_.isDragging()) {
            drag_.hold(true);
        } else if (event.time != spaceReleased_) { // else the key repeats itself
            toggleMode();
        }
        break;
    case XKB_KEY_Left:
        nudge(-1, 0, far);
        break;
    case XKB_KEY_Right:
        nudge(1, 0, far);
        break;
    case XKB_KEY_Up:
        nudge(0, -1, far);
        break;
    case XKB_KEY_Down:
        nudge(0, 1, far);
        break;
    default:
        break;
    }
}

void Chooser::moved(PixelPoint to) {
    pointer_ = to;
    drag_.move(to);
    schedulePaint();
}

void Chooser::nudge(int dx, int dy, bool far) {
    const int step = far ? farNudge : 1;
    // The motion comes back as an event.
    xcb_warp_pointer(connection_.get(), XCB_WINDOW_NONE, XCB_WINDOW_NONE, 0, 0, 0, 0,
                     static_cast<std::int16_t>(dx * step), static_cast<std::int16_t>(dy * step));
    flush();
}

void Chooser::confirm() {
    if (mode_ == Mode::Window) {
        if (const WindowPlace* place = windowAt(windows_, pointer_)) {
            finish({.kind = CaptureChoice::Kind::Chosen, .area = place->area, .window = *place});
        }
        return;
    }
    const PixelRect drawn = drag_.isDragging() ? drag_.release() : displayAt(displays_, pointer_).pixels;
    if (isEmpty(drawn)) {
        schedulePaint();
    } else {
        finish({.kind = CaptureChoice::Kind::Chosen, .area = drawn});
    }
}

void Chooser::toggleMode() {
    mode_ = mode_ == Mode::Region ? Mode::Window : Mode::Region;
    useCursor();
    schedulePaint();
}

void Chooser::useCursor() {
    xcb_connection_t* x = connection_.get();
    const double ratio = displayAt(displays_, pointer_).ratio;
    const xcb_cursor_t old = std::exchange(
        cursor_, makeCursor(connection_, mode_ == Mode::Region ? crosshairDrawing(ratio) : cameraDrawing(ratio)));
    xcb_change_window_attributes(x, window_, XCB_CW_CURSOR, &cursor_);
    constexpr std::uint16_t events =
        XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
    xcb_change_active_pointer_grab(x, cursor_, XCB_CURRENT_TIME, events);
    if (old != XCB_CURSOR_NONE) {
        xcb_free_cursor(x, old);
    }
    flush();
}

void Chooser::finish(const CaptureChoice& choice) {
    // Out of the event that led here: this object may go.
    const auto call = std::exchange(chosen_, nullptr);
    retry_.reset();
    close();
    loop_.post(lifetime_.guard([call, choice] { call(choice); }));
}

void Chooser::close() {
    xcb_connection_t* x = connection_.get();
    if (window_ == XCB_WINDOW_NONE) {
        return;
    }
    xcb_destroy_window(x, std::exchange(window_, XCB_WINDOW_NONE));
    xcb_ungrab_pointer(x, XCB_CURRENT_TIME);
    xcb_ungrab_keyboard(x, XCB_CURRENT_TIME);
    for (const xcb_pixmap_t pixmap : {frozen_, darkened_, canvas_}) {
        if (pixmap != XCB_PIXMAP_NONE) {
            xcb_free_pixmap(x, pixmap);
        }
    }
    xcb_free_gc(x, context_);
    if (cursor_ != XCB_CURSOR_NONE) {
        xcb_free_cursor(x, cursor_);
    }
    xcb_flush(x);
}

PixelRect Chooser::brightPart() const {
    if (mode_ == Mode::Region) {
        return drag_.selection();
    }
    const WindowPlace* place = windowAt(windows_, pointer_);
    return place != nullptr ? intersection(place->area, pixels_.bounds()) : PixelRect{};
}

Chooser::Label Chooser::label(const PixelRect& bright) const {
    if (isEmpty(bright)) {
        return {};
    }
    const CaptureDisplay& display = displayAt(displays_, pointer_);
    Label made{.picture = labelPicture(sizeText(bright), display.ratio)};
    made.place = labelPlace(bright, made.picture.width(), made.picture.height(), display.pixels,
                            rounded(labelGap * display.ratio));
    return made;
}

Chooser::Label Chooser::hint() const {
    if (drag_.isDragging()) {
        return {};
    }
    const QString space = QStringLiteral("空格");
    const QString escape = QStringLiteral("Esc");
    const CaptureDisplay& display = displayAt(displays_, pointer_);
    std::vector<ChooserHint> words =
        mode_ == Mode::Region ? std::vector<ChooserHint>{{QString(), QStringLiteral("拖动以选择区域")},
                                                         {space, QStringLiteral("选窗口")},
                                                         {QStringLiteral("回车"), QStringLiteral("整个屏幕")},
                                                         {escape, QStringLiteral("取消")}}
                              : std::vector<ChooserHint>{{QString(), QStringLiteral("点按要截取的窗口")},
                                                         {space, QStringLiteral("选区域")},
                                                         {escape, QStringLiteral("取消")}};
    Label made{.picture = hintPicture(words, display.ratio)};
    // A narrow display has the first and the last.
    while (made.picture.width() > display.pixels.width && words.size() > 2) {
        words.erase(words.end() - 2);
        made.picture = hintPicture(words, display.ratio);
    }
    made.place = {display.pixels.x + (display.pixels.width - made.picture.width()) / 2,
                  display.pixels.y + display.pixels.height - rounded(hintRaise * display.ratio) -
                      made.picture.height() / 2,
                  made.picture.width(), made.picture.height()};
    return made;
}

void Chooser::schedulePaint() {
    // Once for all motions that have come in.
    if (!std::exchange(paintScheduled_, true)) {
        loop_.post(lifetime_.guard([this] {
            paintScheduled_ = false;
            if (chosen_) {
                paint();
            }
        }));
    }
}

void Chooser::paint() {
    const PixelRect bright = brightPart();
    const Label size = label(bright);
    const Label words = hint();
    const int reach = rounded(4 * displayAt(displays_, pointer_).ratio) + 2;
    const PixelRect fresh = united(united(isEmpty(bright) ? bright : grown(bright, reach), size.place), words.place);
    const PixelRect part = intersection(united(painted_, fresh), pixels_.bounds());
    painted_ = fresh;
    if (isEmpty(part)) {
        return;
    }
    copy(darkened_, canvas_, part);
    if (!isEmpty(bright)) {
        copy(frozen_, canvas_, bright);
        drawEdge(bright);
        drawLabel(size, bright);
    }
    drawLabel(words, bright);
    copy(canvas_, window_, part);
    flush();
}

// While requests are written, events may be read that nothing tells of.
void Chooser::flush() {
    xcb_flush(connection_.get());
    connection_.deliverQueuedEvents();
}

// A white line around the region with a dark one around that, inside the screen.
void Chooser::drawEdge(const PixelRect& bright) {
    xcb_connection_t* x = connection_.get();
    const int unit = std::max(1, rounded(displayAt(displays_, pointer_).ratio));
    const PixelRect& all = pixels_.bounds();
    const auto frame = [&](const PixelRect& outer, int width, QRgb colour) {
        // What would be beyond the screen's edge lies just inside it.
        const PixelRect shown = intersection(outer, all);
        const auto rectangle = [](int left, int top, int wide, int high) {
            return xcb_rectangle_t{static_cast<std::int16_t>(left), static_cast<std::int16_t>(top),
                                   static_cast<std::uint16_t>(wide), static_cast<std::uint16_t>(high)};
        };
        const int wide = std::min(width, shown.width);
        const int high = std::min(width, shown.height);
        const xcb_rectangle_t sides[] = {
            rectangle(shown.x, shown.y, shown.width, high),
            rectangle(shown.x, shown.y + shown.height - high, shown.width, high),
            rectangle(shown.x, shown.y, wide, shown.height),
            rectangle(shown.x + shown.width - wide, shown.y, wide, shown.height),
        };
        const std::uint32_t value = pixels_.pixel(colour);
        xcb_change_gc(x, context_, XCB_GC_FOREGROUND, &value);
        xcb_poly_fill_rectangle(x, canvas_, context_, 4, sides);
    };
    if (mode_ == Mode::Window) {
        frame(grown(bright, 3 * unit), 3 * unit, windowColour);
        return;
    }
    frame(grown(bright, 2 * unit), unit, outlineColour);
    frame(grown(bright, unit), unit, edgeColour);
}

void Chooser::drawLabel(const Label& label, const PixelRect& bright) {
    const PixelRect shown = intersection(label.place, pixels_.bounds());
    if (isEmpty(shown)) {
        return;
    }
    const auto copyOf = [](const QImage& from, const PixelRect& part) {
        return from.copy(part.x, part.y, part.width, part.height);
    };
    QImage tile = copyOf(dark_, shown);
    QPainter painter(&tile);
    if (const PixelRect lit = intersection(shown, bright); !isEmpty(lit)) {
        painter.drawImage(lit.x - shown.x, lit.y - shown.y, copyOf(picture_, lit));
    }
    painter.drawImage(label.place.x - shown.x, label.place.y - shown.y, label.picture);
    painter.end();
    pixels_.write(canvas_, context_, {shown.x, shown.y}, tile);
}

void Chooser::copy(xcb_drawable_t from, xcb_drawable_t to, const PixelRect& part) {
    const auto x = static_cast<std::int16_t>(part.x);
    const auto y = static_cast<std::int16_t>(part.y);
    xcb_copy_area(connection_.get(), from, to, context_, x, y, x, y, static_cast<std::uint16_t>(part.width),
                  static_cast<std::uint16_t>(part.height));
}

} // namespace rb
