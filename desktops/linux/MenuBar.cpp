#include "desktops/linux/MenuBar.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/MenuBarItem.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/XConnection.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace rb {

namespace {

constexpr std::chrono::seconds whileItMaps{1};
constexpr int mostMappings = 5;
constexpr int endMargin = 8; // between the last item and the screen's edge

bool hasWindowManager(XConnection& connection) {
    return !connection.cardinals(connection.root(), connection.atom("_NET_SUPPORTING_WM_CHECK")).empty();
}

// With a window manager a dock that it keeps in its place; without one a window that nobody manages.
Qt::WindowFlags flagsFor(XConnection& connection) {
    Qt::WindowFlags flags = Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus | Qt::WindowStaysOnTopHint;
    flags.setFlag(Qt::BypassWindowManagerHint, !hasWindowManager(connection));
    return flags;
}

} // namespace

MenuBar::MenuBar(XConnection& connection, const LinuxAppearance& appearance)
    : QWidget(nullptr, flagsFor(connection))
    , connection_(connection)
    , appearance_(appearance) {
    setWindowClass(*this, "rookbay-menubar");
    setAttribute(Qt::WA_X11NetWmWindowTypeDock); // without effect on a window that doesn't exist yet
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_AlwaysShowToolTips);
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QStringLiteral("Rook Bay"));
    setCardinals(*this, "_COMPTON_SHADOW", {0}); // a hairline ends it
    placeOnScreen();
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this] { placeOnScreen(); });
    show();
    QTimer::singleShot(whileItMaps, this, [this] { makeSureOfMapping(); });
}

MenuBar::~MenuBar() {
    disconnect(screenGeometry_);
    for (MenuBarItem* item : items_) {
        item->setParent(nullptr); // their owners end them
    }
}

void MenuBar::placeOnScreen() {
    QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) {
        return;
    }
    disconnect(screenGeometry_);
    screenGeometry_ = connect(screen, &QScreen::geometryChanged, this, [this] { placeOnScreen(); });
    const QRect area = screen->geometry();
    setGeometry(area.left(), area.top(), area.width(), thickness);
    keepSpaceFree();
}

// Started together with the session, we may meet a window manager that takes requests but isn't ready to carry them
// out. It never answers those.
void MenuBar::makeSureOfMapping() {
    if (!isVisible() || mappings_ == mostMappings || connection_.isMapped(static_cast<xcb_window_t>(winId()))) {
        return;
    }
    ++mappings_;
    hide();
    placeOnScreen();
    show();
    QTimer::singleShot(whileItMaps, this, [this] { makeSureOfMapping(); });
}

void MenuBar::keepSpaceFree() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double scale = screen->devicePixelRatio();
    const QRect area = screen->geometry();
    const auto pixels = [scale](double points) { return static_cast<std::uint32_t>(std::lround(points * scale)); };
    // A strut counts from the edge of the whole desktop: on a screen that lies below another one it would take that
    // one's room.
    const bool atTop = area.top() == 0;
    std::vector<std::uint32_t> strut(12);
    if (atTop) {
        strut[2] = pixels(thickness);
        strut[8] = pixels(area.left());
        strut[9] = pixels(area.left() + area.width()) - 1;
    }
    setCardinals(*this, "_NET_WM_STRUT_PARTIAL", strut);
    setCardinals(*this, "_NET_WM_STRUT", {strut.begin(), strut.begin() + 4});
}

void MenuBar::addItem(MenuBarItem& item) {
    items_.push_back(&item);
    item.setParent(this);
    item.show();
    layOutItems();
}

void MenuBar::removeItem(MenuBarItem& item) {
    std::erase(items_, &item);
    layOutItems();
}

void MenuBar::layOutItems() {
    int right = width() - endMargin;
    for (MenuBarItem* item : items_) {
        const int itemWidth = item->sizeHint().width();
        item->setGeometry(right - itemWidth, 0, itemWidth, height());
        right -= itemWidth;
    }
}

void MenuBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layOutItems();
}

void MenuBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const Theme& theme = appearance_.theme();
    painter.fillRect(rect(), theme.bar);
    painter.fillRect(QRect(0, height() - 1, width(), 1), theme.separator);
}

} // namespace rb
