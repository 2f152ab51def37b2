#include "desktops/linux/TrayClient.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/MenuBar.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/TrayPlate.h"
#include "desktops/linux/XConnection.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <xcb/damage.h>
#include <xcb/xfixes.h>

namespace rb {

namespace {

constexpr int iconSide = 22; // points
constexpr int padding = 4;   // left and right of it
constexpr int mostCorrections = 20;
constexpr std::uint32_t embeddedNotify = 0;
constexpr std::uint32_t protocolVersion = 0;
constexpr std::uint32_t mappedFlag = 1;
constexpr int firstLook = 300;             // milliseconds after it was asked to draw itself
constexpr int secondLook = 2000;           // slow ones; also how often those are looked at that never rest
constexpr double ownColor = 0.25;          // share of what is seen, with which it can be told from the bar
constexpr double ownBackground = 0.95;     // share of an icon that covers its place
constexpr double contrastWithPlate = 0.55; // smooth edges look lighter or darker there, and nothing may flicker
constexpr std::uint32_t longestClass = 64; // four-byte units

// The window may be gone at any time; its errors are nobody's business.
void quietly(xcb_connection_t* x, xcb_void_cookie_t cookie) {
    xcb_discard_reply(x, cookie.sequence);
}

// The class of WM_CLASS, else its instance.
std::string className(xcb_connection_t* x, xcb_window_t window) {
    const XReply<xcb_get_property_reply_t> property(xcb_get_property_reply(
        x, xcb_get_property(x, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, longestClass), nullptr));
    if (!property || property->format != 8) {
        return {};
    }
    const std::string text(static_cast<const char*>(xcb_get_property_value(property.get())),
                           static_cast<std::size_t>(xcb_get_property_value_length(property.get())));
    const std::size_t end = text.find('\0');
    const std::string instance = text.substr(0, end);
    const std::string name = end == std::string::npos ? "" : text.substr(end + 1, text.find('\0', end + 1) - end - 1);
    return name.empty() ? instance : name;
}

} // namespace

std::unique_ptr<TrayClient> TrayClient::embed(xcb_connection_t* x, xcb_window_t icon, MenuBar& bar,
                                              const LinuxAppearance& appearance) {
    const auto attributesCookie = xcb_get_window_attributes(x, icon);
    const auto treeCookie = xcb_query_tree(x, icon);
    const XReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(x, attributesCookie, nullptr));
    const XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(x, treeCookie, nullptr));
    if (!attributes || !tree || attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT) {
        return nullptr;
    }
    return std::unique_ptr<TrayClient>(new TrayClient(x, icon, tree->root, bar, appearance));
}

TrayClient::TrayClient(xcb_connection_t* x, xcb_window_t icon, xcb_window_t root, MenuBar& bar,
                       const LinuxAppearance& appearance)
    : x_(x)
    , icon_(icon)
    , root_(root)
    , container_(xcb_generate_id(x))
    , bar_(bar)
    , appearance_(appearance)
    , name_(className(x, icon))
    , info_(internAtom("_XEMBED_INFO")) {
    for (QTimer* timer : {&firstLook_, &secondLook_}) {
        timer->setSingleShot(true);
        QObject::connect(timer, &QTimer::timeout, timer,
                         [this, timer] { look(timer == &firstLook_ ? Looking::Soon : Looking::AtRest); });
    }
    takeIn();
    bar_.addEntry(*this);
    readInfo();
}

TrayClient::~TrayClient() {
    bar_.removeEntry(*this);
    if (damage_ != XCB_NONE) {
        quietly(x_, xcb_damage_destroy_checked(x_, damage_));
    }
    if (!gone_) {
        // Nobody may take it away between the question and the answer.
        xcb_grab_server(x_);
        const XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(x_, xcb_query_tree(x_, icon_), nullptr));
        if (tree && tree->parent == container_) {
            quietly(x_, xcb_unmap_window_checked(x_, icon_));
            quietly(x_, xcb_reparent_window_checked(x_, icon_, root_, 0, 0));
        }
        if (tree) {
            const std::uint32_t none = 0;
            quietly(x_, xcb_change_window_attributes_checked(x_, icon_, XCB_CW_EVENT_MASK, &none));
            quietly(x_, xcb_xfixes_change_save_set_checked(x_, XCB_SET_MODE_DELETE, XCB_XFIXES_SAVE_SET_TARGET_ROOT,
                                                           XCB_XFIXES_SAVE_SET_MAPPING_UNMAP, icon_));
        }
        xcb_ungrab_server(x_);
    }
    xcb_destroy_window(x_, container_);
    xcb_flush(x_);
}

int TrayClient::pixels(double points) const {
    return static_cast<int>(std::lround(points * bar_.devicePixelRatioF()));
}

std::uint32_t TrayClient::behind() const {
    return appearance_.theme().bar.rgb() & 0xFFFFFFU;
}

void TrayClient::takeIn() {
    // What the icon asks for as to its size and its mapping comes to us instead of happening.
    const std::array<std::uint32_t, 2> values{behind(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT};
    const auto side = static_cast<std::uint16_t>(pixels(iconSide));
    xcb_create_window(x_, XCB_COPY_FROM_PARENT, container_, static_cast<xcb_window_t>(bar_.winId()), 0, 0, side, side,
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK,
                      values.data());
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    quietly(x_, xcb_change_window_attributes_checked(x_, icon_, XCB_CW_EVENT_MASK, &events));
    quietly(x_, xcb_xfixes_change_save_set_checked(x_, XCB_SET_MODE_INSERT, XCB_XFIXES_SAVE_SET_TARGET_ROOT,
                                                   XCB_XFIXES_SAVE_SET_MAPPING_UNMAP, icon_));
    quietly(x_, xcb_reparent_window_checked(x_, icon_, container_, 0, 0));
    if (const auto* damage = xcb_get_extension_data(x_, &xcb_damage_id); damage != nullptr && damage->present != 0) {
        damage_ = xcb_generate_id(x_);
        damageEvent_ = damage->first_event + XCB_DAMAGE_NOTIFY;
        quietly(x_, xcb_damage_create_checked(x_, damage_, icon_, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY));
    }
    giveSize();

    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = icon_;
    message.type = internAtom("_XEMBED");
    message.data.data32[1] = embeddedNotify;
    message.data.data32[3] = container_;
    message.data.data32[4] = protocolVersion;
    quietly(x_, xcb_send_event_checked(x_, 0, icon_, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&message)));
}

// Icons that say nothing about it want to be seen.
void TrayClient::readInfo() {
    const XReply<xcb_get_property_reply_t> info(
        xcb_get_property_reply(x_, xcb_get_property(x_, 0, icon_, info_, XCB_GET_PROPERTY_TYPE_ANY, 0, 2), nullptr));
    const bool says = info && info->format == 32 && info->value_len == 2;
    setMapped(!says || (static_cast<const std::uint32_t*>(xcb_get_property_value(info.get()))[1] & mappedFlag) != 0);
}

void TrayClient::setMapped(bool mapped) {
    quietly(x_, mapped ? xcb_map_window_checked(x_, icon_) : xcb_unmap_window_checked(x_, icon_));
    xcb_flush(x_);
    if (mapped_ != mapped) {
        mapped_ = mapped;
        bar_.layOutEntries();
    }
}

void TrayClient::giveSize() {
    const auto side = static_cast<std::uint32_t>(pixels(iconSide));
    const std::array<std::uint32_t, 5> geometry{
        static_cast<std::uint32_t>(pixels(padding)),
        static_cast<std::uint32_t>((pixels(MenuBar::entryHeight) - pixels(iconSide)) / 2), side, side, 0};
    quietly(x_, xcb_configure_window_checked(x_, icon_,
                                             XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                                 XCB_CONFIG_WINDOW_HEIGHT | XCB_CONFIG_WINDOW_BORDER_WIDTH,
                                             geometry.data()));
}

// A request that changes nothing makes no event, and some toolkits draw nothing until they have had their answer.
void TrayClient::tellSize() {
    xcb_configure_notify_event_t event{};
    event.response_type = XCB_CONFIGURE_NOTIFY;
    event.event = icon_;
    event.window = icon_;
    event.x = static_cast<std::int16_t>(pixels(area_.left() + padding));
    event.y = static_cast<std::int16_t>((pixels(MenuBar::entryHeight) - pixels(iconSide)) / 2);
    event.width = static_cast<std::uint16_t>(pixels(iconSide));
    event.height = event.width;
    quietly(x_, xcb_send_event_checked(x_, 0, icon_, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                                       reinterpret_cast<const char*>(&event)));
    xcb_flush(x_);
}

TrayClient::Outcome TrayClient::handle(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) == damageEvent_) {
        if (reinterpret_cast<const xcb_damage_notify_event_t&>(event).damage == damage_) {
            changed();
        }
        return Outcome::Stays;
    }
    switch (event.response_type & 0x7F) {
    case XCB_DESTROY_NOTIFY:
        gone_ = gone_ || reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == icon_;
        break;
    case XCB_REPARENT_NOTIFY: {
        const auto& moved = reinterpret_cast<const xcb_reparent_notify_event_t&>(event);
        gone_ = gone_ || (moved.window == icon_ && moved.parent != container_);
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto& changed = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (changed.window == icon_ && changed.atom == info_) {
            readInfo();
        }
        break;
    }
    case XCB_MAP_REQUEST:
        if (reinterpret_cast<const xcb_map_request_event_t&>(event).window == icon_) {
            readInfo();
        }
        break;
    case XCB_CONFIGURE_REQUEST:
        if (reinterpret_cast<const xcb_configure_request_event_t&>(event).window == icon_) {
            giveSize();
            tellSize();
        }
        break;
    case XCB_CONFIGURE_NOTIFY: {
        // Only windows that bypass their parents come here with another size.
        const auto& changed = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        const int side = pixels(iconSide);
        if (changed.window == icon_ && (changed.width != side || changed.height != side) &&
            corrections_ < mostCorrections) {
            ++corrections_;
            giveSize();
            xcb_flush(x_);
        }
        break;
    }
    default:
        break;
    }
    return gone_ ? Outcome::Gone : Outcome::Stays;
}

int TrayClient::breadth() const {
    return mapped_ ? iconSide + 2 * padding : 0;
}

void TrayClient::placeAt(const QRect& area) {
    if (area == area_) {
        return;
    }
    const bool resized = area.size() != area_.size();
    area_ = area;
    if (area.isEmpty()) {
        if (std::exchange(shown_, false)) {
            xcb_unmap_window(x_, container_);
        }
        xcb_flush(x_);
        return;
    }
    const std::array<std::uint32_t, 4> geometry{
        static_cast<std::uint32_t>(pixels(area.left())), static_cast<std::uint32_t>(pixels(area.top())),
        static_cast<std::uint32_t>(pixels(area.width())), static_cast<std::uint32_t>(pixels(area.height()))};
    xcb_configure_window(x_, container_,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         geometry.data());
    if (resized) {
        giveSize();
    }
    if (!std::exchange(shown_, true)) {
        xcb_map_window(x_, container_);
    }
    redraw();
}

// Icons of older toolkits don't notice by themselves that they were moved or that what lies behind them changed.
void TrayClient::redraw() {
    firstLook_.start(firstLook);
    secondLook_.start(secondLook);
    xcb_clear_area(x_, 0, container_, 0, 0, 0, 0);
    quietly(x_, xcb_clear_area_checked(x_, 1, icon_, 0, 0, 0, 0));
    xcb_flush(x_);
}

void TrayClient::drawBehind() {
    if (!plated_) {
        const std::uint32_t color = behind();
        xcb_change_window_attributes(x_, container_, XCB_CW_BACK_PIXEL, &color);
        return;
    }
    const int side = pixels(iconSide + 2);
    const QSize size(pixels(area_.width()), pixels(area_.height()));
    setBackground(x_, container_, depth_,
                  plate({.size = size,
                         .plate = QRect((size.width() - side) / 2, (size.height() - side) / 2, side, side),
                         .ground = appearance_.theme().bar,
                         .color = appearance_.theme().iconPlate}));
}

// It has drawn something by itself. One that never stops must not cost more than a look now and then.
void TrayClient::changed() {
    const auto pause = lastLook_.isValid() ? std::max<qint64>(secondLook - lastLook_.elapsed(), firstLook) : firstLook;
    if (!firstLook_.isActive()) {
        firstLook_.start(static_cast<int>(pause));
    }
    secondLook_.start(static_cast<int>(pause) + secondLook);
}

// An icon that is as dark or as light as the bar gets a plate, which goes again when the icon has become another: one
// that blinks keeps it.
void TrayClient::look(Looking looking) {
    if (damage_ != XCB_NONE) {
        quietly(x_, xcb_damage_subtract_checked(x_, damage_, XCB_NONE, XCB_NONE)); // tell of the next change
    }
    lastLook_.start();
    if (!shown_ || area_.left() < 0) {
        xcb_flush(x_);
        return;
    }
    const QRect place(pixels(padding), (pixels(MenuBar::entryHeight) - pixels(iconSide)) / 2, pixels(iconSide),
                      pixels(iconSide));
    const Theme& theme = appearance_.theme();
    const auto seen =
        lookAtIcon(x_, container_, place, {theme.bar.rgb(), (plated_ ? theme.iconPlate : theme.bar).rgb()});
    if (!seen || seen->tone.covered == 0) {
        return;
    }
    const bool needsPlate = seen->tone.covered < ownBackground && seen->tone.colorful < ownColor &&
                            isHardToSee(seen->tone, theme.bar, plated_ ? contrastWithPlate : leastContrast);
    if (needsPlate != plated_ && (needsPlate || looking == Looking::AtRest)) {
        plated_ = needsPlate;
        depth_ = seen->depth;
        drawBehind();
        redraw();
        firstLook_.stop(); // one change at a time
    }
}

void TrayClient::themeChanged() {
    plated_ = false;
    drawBehind();
    redraw();
}

} // namespace rb
