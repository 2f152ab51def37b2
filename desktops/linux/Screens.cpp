#include "desktops/linux/Screens.h"

#include "desktops/linux/ScreenSpace.h"
#include "helpers/linux/shared/Randr.h"
#include "platform/RunLoop.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace rb {

namespace {

// Strut windows are few; whoever lists more windows than this has other worries.
constexpr std::size_t mostWindows = 4096;
// X identifiers have 29 bits.
constexpr std::uint32_t firstFreeNumber = 0x80000000U;

std::int32_t bounded(std::uint32_t value) {
    constexpr std::uint32_t widestDesktop = 65535;
    return static_cast<std::int32_t>(std::min(value, widestDesktop));
}

bool overlaps(int firstStart, int firstEnd, int secondStart, int secondEnd) {
    return firstStart <= secondEnd && secondStart <= firstEnd;
}

} // namespace

QRect areaWithoutStruts(const QRect& screen, const QSize& desktop, const std::vector<Strut>& struts) {
    int left = screen.left();
    int top = screen.top();
    int right = screen.left() + screen.width();
    int bottom = screen.top() + screen.height();
    const int halfWidth = screen.width() / 2;
    const int halfHeight = screen.height() / 2;
    for (const Strut& strut : struts) {
        if (overlaps(strut.topStart, strut.topEnd, screen.left(), screen.right()) &&
            strut.top < screen.top() + halfHeight) {
            top = std::max(top, strut.top);
        }
        const int lower = desktop.height() - strut.bottom;
        if (overlaps(strut.bottomStart, strut.bottomEnd, screen.left(), screen.right()) &&
            lower > screen.top() + halfHeight) {
            bottom = std::min(bottom, lower);
        }
        if (overlaps(strut.leftStart, strut.leftEnd, screen.top(), screen.bottom()) &&
            strut.left < screen.left() + halfWidth) {
            left = std::max(left, strut.left);
        }
        const int outer = desktop.width() - strut.right;
        if (overlaps(strut.rightStart, strut.rightEnd, screen.top(), screen.bottom()) &&
            outer > screen.left() + halfWidth) {
            right = std::min(right, outer);
        }
    }
    return {left, top, right - left, bottom - top};
}

LinuxScreens::LinuxScreens(XConnection& connection, RunLoop& runLoop)
    : connection_(connection)
    , runLoop_(runLoop) {}

std::vector<Screen> LinuxScreens::all() const {
    std::vector<Screen> screens;
    const QScreen* primary = QGuiApplication::primaryScreen();
    if (primary != nullptr) {
        screens.push_back(describe(*primary));
    }
    for (const QScreen* screen : QGuiApplication::screens()) {
        if (screen != primary) {
            screens.push_back(describe(*screen));
        }
    }
    return screens;
}

// The screen that holds the middle of the active window, whoever owns it.
std::optional<Screen> LinuxScreens::main() const {
    const std::vector<Screen> screens = all();
    if (screens.size() < 2) {
        return screens.empty() ? std::nullopt : std::optional(screens.front());
    }
    const auto active = connection_.cardinals(connection_.root(), connection_.atom("_NET_ACTIVE_WINDOW"));
    if (!active.empty() && active.front() != XCB_WINDOW_NONE) {
        xcb_connection_t* connection = connection_.get();
        const auto geometryCookie = xcb_get_geometry(connection, active.front());
        const auto originCookie = xcb_translate_coordinates(connection, active.front(), connection_.root(), 0, 0);
        const XReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(connection, geometryCookie, nullptr));
        const XReply<xcb_translate_coordinates_reply_t> origin(
            xcb_translate_coordinates_reply(connection, originCookie, nullptr));
        connection_.deliverQueuedEvents();
        if (geometry && origin) {
            const QPoint middle(origin->dst_x + geometry->width / 2, origin->dst_y + geometry->height / 2);
            for (const QScreen* screen : QGuiApplication::screens()) {
                // Qt scales a screen's size but keeps its origin in X11 pixels.
                if (QRect(screen->geometry().topLeft(), screen->geometry().size() * screen->devicePixelRatio())
                        .contains(middle)) {
                    return describe(*screen);
                }
            }
        }
    }
    return screens.front();
}

bool LinuxScreens::showsFullScreenSpace(std::uint32_t id) const {
    const auto active = connection_.cardinals(connection_.root(), connection_.atom("_NET_ACTIVE_WINDOW"));
    if (active.empty() || active.front() == XCB_WINDOW_NONE) {
        return false;
    }
    const auto states = connection_.cardinals(active.front(), connection_.atom("_NET_WM_STATE"));
    if (std::find(states.begin(), states.end(), connection_.atom("_NET_WM_STATE_FULLSCREEN")) == states.end()) {
        return false;
    }
    // The active window is the one that makes a screen the main one.
    const auto screen = main();
    return screen && screen->id == id;
}

Handle LinuxScreens::onChange(std::function<void()> changed) {
    if (!watching_) {
        watching_ = true;
        last_ = all();
        auto* application = qGuiApp;
        QObject::connect(application, &QGuiApplication::screenAdded, &receiver_, [this](QScreen* screen) {
            watch(screen);
            somethingChanged();
        });
        QObject::connect(application, &QGuiApplication::screenRemoved, &receiver_, [this] { somethingChanged(); });
        QObject::connect(application, &QGuiApplication::primaryScreenChanged, &receiver_,
                         [this] { somethingChanged(); });
        for (QScreen* screen : QGuiApplication::screens()) {
            watch(screen);
        }
        followWorkArea();
    }
    return observers_.add(std::move(changed));
}

// With several screens Qt doesn't follow the work area; window managers change this property with it. With one screen
// the root window's properties need not wake us.
void LinuxScreens::followWorkArea() {
    if (rootEvents_ || QGuiApplication::screens().size() < 2) {
        return;
    }
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_.get(), connection_.root(), XCB_CW_EVENT_MASK, &events);
    const xcb_atom_t workArea = connection_.atom("_NET_WORKAREA");
    rootEvents_ = connection_.onEvent([this, workArea](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) == XCB_PROPERTY_NOTIFY &&
            reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == workArea) {
            somethingChanged();
        }
    });
    xcb_flush(connection_.get());
}

void LinuxScreens::setOwnMenuBarHeight(double height) {
    ownMenuBarHeight_ = height;
    somethingChanged();
}

void LinuxScreens::watch(QScreen* screen) {
    const auto changed = [this] { somethingChanged(); };
    QObject::connect(screen, &QScreen::geometryChanged, &receiver_, changed);
    QObject::connect(screen, &QScreen::availableGeometryChanged, &receiver_, changed);
    QObject::connect(screen, &QScreen::physicalDotsPerInchChanged, &receiver_, changed);
    QObject::connect(screen, &QScreen::logicalDotsPerInchChanged, &receiver_, changed);
}

void LinuxScreens::somethingChanged() {
    if (watching_ && !std::exchange(comparing_, true)) {
        runLoop_.post(lifetime_.guard([this] { compare(); }));
    }
}

void LinuxScreens::compare() {
    comparing_ = false;
    followWorkArea();
    std::vector<Screen> now = all();
    if (now == last_) {
        return;
    }
    last_ = std::move(now);
    observers_.notify();
}

QRect LinuxScreens::visibleArea(const QScreen& screen) const {
    // On a single screen Qt has the window manager's work area; with several it gives back whole screens.
    QRect area = screen.availableGeometry();
    if (QGuiApplication::screens().size() > 1) {
        const double ratio = screen.devicePixelRatio();
        const QRect frame = screen.geometry();
        const QRect pixels(frame.topLeft(), frame.size() * ratio);
        const xcb_setup_t* setup = xcb_get_setup(connection_.get());
        const xcb_screen_t* first = xcb_setup_roots_iterator(setup).data;
        QSize desktop(first->width_in_pixels, first->height_in_pixels);
        for (const QScreen* other : QGuiApplication::screens()) {
            const QRect geometry = other->geometry();
            desktop = desktop.expandedTo({geometry.left() + qRound(geometry.width() * other->devicePixelRatio()),
                                          geometry.top() + qRound(geometry.height() * other->devicePixelRatio())});
        }
        const QRect left = areaWithoutStruts(pixels, desktop, struts());
        area = QRect(frame.left() + qRound((left.left() - pixels.left()) / ratio),
                     frame.top() + qRound((left.top() - pixels.top()) / ratio), qRound(left.width() / ratio),
                     qRound(left.height() / ratio));
    }
    if (&screen == QGuiApplication::primaryScreen()) {
        area.setTop(std::max(area.top(), screen.geometry().top() + static_cast<int>(std::lround(ownMenuBarHeight_))));
    }
    return area;
}

// All at once: the requests for every window go out before the first answer is read.
std::vector<Strut> LinuxScreens::struts() const {
    xcb_connection_t* connection = connection_.get();
    auto windows = connection_.cardinals(connection_.root(), connection_.atom("_NET_CLIENT_LIST"));
    windows.resize(std::min(windows.size(), mostWindows));
    const xcb_atom_t partial = connection_.atom("_NET_WM_STRUT_PARTIAL");
    constexpr std::uint32_t values = 12;
    std::vector<xcb_get_property_cookie_t> cookies;
    cookies.reserve(windows.size());
    for (const std::uint32_t window : windows) {
        cookies.push_back(xcb_get_property(connection, 0, window, partial, XCB_ATOM_CARDINAL, 0, values));
    }
    std::vector<Strut> found;
    for (const xcb_get_property_cookie_t cookie : cookies) {
        const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr));
        if (!reply || reply->format != 32 || reply->value_len != values) {
            continue;
        }
        const auto* v = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        found.push_back({bounded(v[0]), bounded(v[1]), bounded(v[2]), bounded(v[3]), bounded(v[4]), bounded(v[5]),
                         bounded(v[6]), bounded(v[7]), bounded(v[8]), bounded(v[9]), bounded(v[10]), bounded(v[11])});
    }
    connection_.deliverQueuedEvents();
    return found;
}

std::uint32_t LinuxScreens::idOf(const QScreen& screen) const {
    const std::string name = screen.name().toStdString();
    if (const auto known = ids_.find(name); known != ids_.end()) {
        return known->second;
    }
    // The number of its output; a screen that is none, such as a monitor made by hand, gets one that no output has.
    std::uint32_t number = firstFreeNumber + static_cast<std::uint32_t>(ids_.size());
    if (const auto state = readRandr(connection_.get(), connection_.root())) {
        for (const RandrOutput& output : state->outputs) {
            number = output.name == name ? output.id : number;
        }
    }
    connection_.deliverQueuedEvents();
    return ids_.emplace(name, number).first->second;
}

Screen LinuxScreens::describe(const QScreen& screen) const {
    const ScreenSpace space = ScreenSpace::current();
    return {.id = idOf(screen),
            .frame = space.fromQt(QRectF(screen.geometry())),
            .visibleFrame = space.fromQt(QRectF(visibleArea(screen))),
            .backingScaleFactor = screen.devicePixelRatio(),
            .safeAreaTop = 0,
            .localizedName = (screen.model().isEmpty() ? screen.name() : screen.model()).toStdString()};
}

} // namespace rb
