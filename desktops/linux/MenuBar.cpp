#include "desktops/linux/MenuBar.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/BarClock.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/XConnection.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace rb {

namespace {

constexpr std::chrono::seconds whileItMaps{1};
constexpr int mostMappings = 5;
constexpr int endMargin = 8; // between the clock and the screen's edge

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

MenuBar::MenuBar(XConnection& connection, const LinuxAppearance& appearance, BarOrder& order,
                 std::function<void()> arranged)
    : QWidget(nullptr, flagsFor(connection))
    , connection_(connection)
    , appearance_(appearance)
    , order_(order)
    , arranged_(std::move(arranged))
    , clock_(new BarClock(*this, appearance)) {
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
    flushQt(); // the window that is dragged in must be known to the server
    drag_ = std::make_unique<BarDrag>(connection_, static_cast<xcb_window_t>(winId()),
                                      BarDrag::Listener{.began = [this](int x) { dragBegan(x); },
                                                        .moved = [this](int x) { dragMoved(x); },
                                                        .ended = [this] { dragEnded(); }});
    QTimer::singleShot(whileItMaps, this, [this] { makeSureOfMapping(); });
}

MenuBar::~MenuBar() {
    disconnect(screenGeometry_);
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

void MenuBar::addEntry(BarEntry& entry) {
    entries_.push_back({&entry});
    layOutEntries();
}

void MenuBar::removeEntry(BarEntry& entry) {
    if (dragged_ == &entry) {
        dragged_ = nullptr;
    }
    std::erase_if(entries_, [&](const Placed& placed) { return placed.entry == &entry; });
    layOutEntries();
}

// Two windows of one program are told apart by the order in which they came.
void MenuBar::nameEntries() {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].entry->breadth() == 0) {
            entries_[i].key.clear(); // it arrives when it is first seen
            continue;
        }
        const std::string name = BarOrder::usableName(entries_[i].entry->name());
        std::string key = name;
        const auto taken = [&] {
            return std::any_of(entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(i),
                               [&](const Placed& other) { return other.key == key; });
        };
        for (int number = 2; taken(); ++number) {
            key = name + " " + std::to_string(number);
        }
        entries_[i].key = key;
        order_.arrive(key);
    }
}

void MenuBar::layOutEntries() {
    if (!dragged_) {
        nameEntries();
        std::stable_sort(entries_.begin(), entries_.end(), [this](const Placed& a, const Placed& b) {
            return order_.place(a.key) < order_.place(b.key);
        });
    }
    clock_->setGeometry(width() - endMargin - BarClock::breadth, 0, BarClock::breadth, entryHeight);
    int right = width() - endMargin - BarClock::breadth;
    for (Placed& placed : entries_) {
        const int breadth = placed.entry->breadth();
        right -= breadth;
        // Half an icon at the left end would be none; only what is longer than the bar reaches out of it.
        const int left = right < 0 && breadth < width() ? std::min(right, -breadth) : right;
        placed.area = breadth > 0 ? QRect(left, 0, breadth, entryHeight) : QRect();
        // The one under the pointer moves with it; the others make room.
        placed.entry->placeAt(placed.entry == dragged_ ? QRect(dragX_, 0, breadth, entryHeight) : placed.area);
    }
}

void MenuBar::themeChanged() {
    update();
    clock_->update();
    for (const Placed& placed : entries_) {
        placed.entry->themeChanged();
    }
}

void MenuBar::dragBegan(int x) {
    const int place = qRound(x / devicePixelRatioF());
    for (const Placed& placed : entries_) {
        if (placed.area.contains(QPoint(place, 0))) {
            dragged_ = placed.entry;
            grip_ = place - placed.area.left();
            dragX_ = placed.area.left();
        }
    }
}

void MenuBar::dragMoved(int x) {
    const auto isDragged = [this](const Placed& placed) { return placed.entry == dragged_; };
    const auto found = std::find_if(entries_.begin(), entries_.end(), isDragged);
    if (found == entries_.end()) {
        return;
    }
    dragX_ = qRound(x / devicePixelRatioF()) - grip_;
    const int breadth = found->area.width();
    Placed moved = *found;
    entries_.erase(found);
    // It stands left of those whose middle lies right of its own.
    int right = width() - endMargin - BarClock::breadth;
    auto before = entries_.begin();
    for (; before != entries_.end(); ++before) {
        const int other = before->entry->breadth();
        if (other > 0 && right - other / 2 <= dragX_ + breadth / 2) {
            break;
        }
        right -= other;
    }
    entries_.insert(before, moved);
    layOutEntries();
}

void MenuBar::dragEnded() {
    if (!dragged_) {
        return;
    }
    dragged_ = nullptr;
    std::vector<std::string> present;
    for (const Placed& placed : entries_) {
        if (!placed.key.empty()) {
            present.push_back(placed.key);
        }
    }
    order_.arrange(present);
    layOutEntries();
    arranged_();
}

void MenuBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layOutEntries();
}

void MenuBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const Theme& theme = appearance_.theme();
    painter.fillRect(rect(), theme.bar);
    painter.fillRect(QRect(0, height() - 1, width(), 1), theme.separator);
}

} // namespace rb
