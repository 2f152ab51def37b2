#include "desktops/linux/TrayIcon.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/ItemClick.h"
#include "desktops/linux/MenuWidget.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/ToolTip.h"
#include "desktops/linux/XConnection.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <string>

namespace rb {

namespace {

constexpr int usualSize = 22;       // until the tray gives another
constexpr double symbolShare = 0.8; // of the square; symbols' squares are larger than their point size
constexpr std::uint32_t requestDock = 0;

} // namespace

TrayIcon::TrayIcon(LinuxStatusItem& item, XConnection& connection, xcb_window_t tray, const Pictures& pictures,
                   const LinuxAppearance& appearance)
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus)
    , item_(item)
    , connection_(connection)
    , pictures_(pictures)
    , appearance_(appearance) {
    setAttribute(Qt::WA_AlwaysShowToolTips);
    setAttribute(Qt::WA_QuitOnClose, false);
    // A tray takes windows with an alpha channel only when it says so; on others the panel's look is painted.
    setAttribute(Qt::WA_TranslucentBackground, traysVisualHasAlpha(tray));
    setWindowTitle(QStringLiteral("Rook Bay"));
    resize(usualSize, usualSize);
    toolTipChanged();
    qApp->installNativeEventFilter(this);
    dock(tray);
}

TrayIcon::~TrayIcon() {
    qApp->removeNativeEventFilter(this);
}

bool TrayIcon::nativeEventFilter(const QByteArray& /*type*/, void* message, qintptr* /*result*/) {
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7F) == XCB_REPARENT_NOTIFY) {
        const auto* moved = reinterpret_cast<const xcb_reparent_notify_event_t*>(event);
        if (moved->window == internalWinId()) {
            // Shown before the tray has it, the window would flash up in the screen's corner.
            setVisible(moved->parent != connection_.root());
        }
    }
    return false;
}

void TrayIcon::dock(xcb_window_t tray) {
    const auto window = static_cast<xcb_window_t>(winId());
    xcb_connection_t* x = qtConnection();
    if (!x) {
        return;
    }
    // Protocol version 0, "please map me".
    const std::uint32_t info[] = {0, 1};
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window, internAtom("_XEMBED_INFO"), internAtom("_XEMBED_INFO"), 32, 2,
                        info);
    xcb_client_message_event_t request{};
    request.response_type = XCB_CLIENT_MESSAGE;
    request.format = 32;
    request.window = tray;
    request.type = internAtom("_NET_SYSTEM_TRAY_OPCODE");
    request.data.data32[0] = connection_.serverTime();
    request.data.data32[1] = requestDock;
    request.data.data32[2] = window;
    xcb_send_event(x, 0, tray, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&request));
    xcb_flush(x);
    connection_.deliverQueuedEvents();
}

void TrayIcon::toolTipChanged() {
    setToolTip(plainToolTip(item_.toolTip()));
}

void TrayIcon::menuChanged() {
    menu_.reset();
}

bool TrayIcon::traysVisualHasAlpha(xcb_window_t tray) const {
    const auto visual = connection_.cardinals(tray, connection_.atom("_NET_SYSTEM_TRAY_VISUAL"));
    if (visual.empty()) {
        return false;
    }
    const xcb_setup_t* setup = xcb_get_setup(connection_.get());
    for (auto screens = xcb_setup_roots_iterator(setup); screens.rem > 0; xcb_screen_next(&screens)) {
        for (auto depths = xcb_screen_allowed_depths_iterator(screens.data); depths.rem > 0; xcb_depth_next(&depths)) {
            const xcb_visualtype_t* visuals = xcb_depth_visuals(depths.data);
            for (int i = 0; i < xcb_depth_visuals_length(depths.data); ++i) {
                if (visuals[i].visual_id == visual.front()) {
                    return depths.data->depth == 32;
                }
            }
        }
    }
    return false;
}

void TrayIcon::showEvent(QShowEvent* event) {
    beside_ = {};
    QWidget::showEvent(event);
}

// Qt doesn't follow where the tray moves its own window.
QPoint TrayIcon::cornerOnScreen() const {
    xcb_connection_t* x = connection_.get();
    const auto window = static_cast<xcb_window_t>(internalWinId());
    const XReply<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(x, xcb_translate_coordinates(x, window, connection_.root(), 0, 0), nullptr));
    connection_.deliverQueuedEvents();
    if (!place) {
        return mapToGlobal(QPoint(0, 0));
    }
    // Pixels count from the screen's own corner, points too.
    const QPoint origin = screen()->geometry().topLeft();
    return origin + (QPoint(place->dst_x, place->dst_y) - origin) / devicePixelRatio();
}

void TrayIcon::lookBeside() {
    if (!beside_.isNull() && beside_.height() >= height()) {
        return;
    }
    // The panel's colour is nobody's setting, so its pixels tell.
    const QPoint corner = cornerOnScreen() - screen()->geometry().topLeft();
    beside_ = screen()->grabWindow(0, corner.x() - 1, corner.y(), 1, height());
    const QImage column = beside_.toImage();
    darkBehind_ = !column.isNull() && column.pixelColor(0, column.height() / 2).lightnessF() < 0.55F;
}

void TrayIcon::paintEvent(QPaintEvent* /*event*/) {
    lookBeside();
    QPainter painter(this);
    if (testAttribute(Qt::WA_TranslucentBackground)) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    } else {
        painter.drawPixmap(rect(), beside_);
    }
    const QColor foreground = darkBehind_ ? QColor(255, 255, 255, 230) : QColor(0, 0, 0, 210);
    const double side = std::min(width(), height());
    pictures_.draw(painter, item_.image(), rect(), side * symbolShare, foreground);
}

void TrayIcon::mousePressEvent(QMouseEvent* /*event*/) {
    if (item_.menu()) {
        popUpMenu(item_.menu());
    }
}

void TrayIcon::mouseReleaseEvent(QMouseEvent* event) {
    const auto click = clickOf(*event);
    if (click && !item_.menu() && rect().contains(event->pos())) {
        item_.clicked(*click);
    }
}

void TrayIcon::popUpMenu(std::shared_ptr<Menu> menu) {
    if (!menu_ || shownMenu_ != menu) {
        shownMenu_ = menu;
        menu_ = std::make_unique<MenuWidget>(std::move(menu), pictures_);
        menu_->setOpener(this);
    }
    menu_->openBeside(QRect(cornerOnScreen(), size()));
}

std::optional<QRect> TrayIcon::areaOnScreen() const {
    return isVisible() ? std::optional(QRect(cornerOnScreen(), size())) : std::nullopt;
}

} // namespace rb
