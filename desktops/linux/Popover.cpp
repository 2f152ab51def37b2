#include "desktops/linux/Popover.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/ButtonWidget.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/Shadow.h"
#include "desktops/linux/Windows.h"
#include "platform/EventMonitors.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QVariantAnimation>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <utility>

namespace rb {

namespace {

constexpr int shadowReach = 18; // on each side, under a compositor
constexpr int arrowHeight = 9;
constexpr int arrowHalfBreadth = 11;
constexpr double cornerRadius = 9;
constexpr int gapToEdge = 6;
constexpr int closingTime = 150; // milliseconds
constexpr double widest = 600;

} // namespace

class LinuxPopover::Bubble final : public QWidget {
public:
    Bubble(LinuxPopover& popover, View content, const QRect& anchor)
        : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
        , popover_(popover)
        , margin_(isComposited() ? shadowReach : 0) {
        setAttribute(Qt::WA_TranslucentBackground, margin_ > 0); // before the window exists
        setWindowClass(*this, "rookbay-popover");
        setAttribute(Qt::WA_QuitOnClose, false);
        setWindowTitle(QStringLiteral("Rook Bay"));
        setCardinals(*this, "_COMPTON_SHADOW", {0});
        root_ = &realize(nullptr, std::move(content), *this, popover);
        place(anchor);
        show();
        setGeometry(area_); // a window manager may have had its own idea
    }

    // Fades out where it can, then calls back in a turn of the event loop.
    void leave(std::function<void()> gone) {
        if (leaving_) {
            return;
        }
        leaving_ = true;
        auto* fade = new QVariantAnimation(this);
        fade->setDuration(margin_ > 0 ? closingTime : 0);
        fade->setStartValue(1.0);
        fade->setEndValue(0.0);
        connect(fade, &QVariantAnimation::valueChanged, this,
                [this](const QVariant& value) { setWindowOpacity(value.toDouble()); });
        connect(
            fade, &QVariantAnimation::finished, this,
            [this, gone = std::move(gone)] {
                hide();
                gone();
            },
            Qt::QueuedConnection);
        fade->start();
    }

    bool isAt(QPoint place) const { return panel().translated(geometry().topLeft()).contains(place); }
    void themeChanged() {
        visit(*root_, [](RealizedView& view) { view.themeChanged(); });
        update();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Theme& theme = popover_.theme();
        const QRectF body(panel());
        if (margin_ > 0) {
            paintShadow(painter, body, cornerRadius, shadowReach);
        }
        const double tip = std::clamp<double>(arrow_, body.left() + cornerRadius + arrowHalfBreadth,
                                              body.right() - cornerRadius - arrowHalfBreadth);
        QPainterPath outline;
        outline.addRoundedRect(body.adjusted(0.5, 0.5, -0.5, -0.5), margin_ > 0 ? cornerRadius : 0,
                               margin_ > 0 ? cornerRadius : 0);
        QPainterPath arrow;
        arrow.moveTo(tip - arrowHalfBreadth, body.top() + 1);
        arrow.lineTo(tip, body.top() - arrowHeight + 1);
        arrow.lineTo(tip + arrowHalfBreadth, body.top() + 1);
        arrow.closeSubpath();
        if (margin_ == 0) {
            painter.fillRect(rect(), theme.bar); // continues the bar above it
        }
        painter.setPen(QPen(theme.menuBorder, 1));
        painter.setBrush(theme.menu);
        painter.drawPath(outline.united(arrow));
    }
    void keyPressEvent(QKeyEvent* event) override {
        const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
        if (event->key() == Qt::Key_Escape) {
            popover_.close();
            return;
        }
        ButtonWidget* pressed = nullptr;
        visit(*root_, [&](RealizedView& view) {
            auto* button = dynamic_cast<ButtonWidget*>(&view);
            if (button && isReturn && button->keyEquivalent() == "\r") {
                pressed = button;
            }
        });
        if (pressed) {
            pressed->click();
        } else {
            QWidget::keyPressEvent(event);
        }
    }

private:
    static void visit(RealizedView& view, const std::function<void(RealizedView&)>& visitor) {
        visitor(view);
        for (RealizedView* child : view.children()) {
            visit(*child, visitor);
        }
    }

    QRect panel() const { return rect().adjusted(margin_, arrowHeight, -margin_, -margin_); }

    void place(const QRect& anchor) {
        const QSizeF content = root_->fittingSize(widest);
        const QSize size(static_cast<int>(std::ceil(content.width())), static_cast<int>(std::ceil(content.height())));
        const QScreen* screen = QGuiApplication::screenAt(anchor.center());
        const QRect limits = screen ? screen->geometry() : anchor;
        const int middle = anchor.center().x();
        const int rightmost = limits.right() - gapToEdge - size.width() + 1;
        const int left = std::max(std::min(middle - size.width() / 2, rightmost), limits.left() + gapToEdge);
        arrow_ = middle - left + margin_;
        area_ = QRect(left - margin_, anchor.bottom() + 1, size.width() + 2 * margin_,
                      size.height() + arrowHeight + margin_);
        setGeometry(area_);
        root_->place(QRectF(QPointF(margin_, arrowHeight), content));
    }

    LinuxPopover& popover_;
    RealizedView* root_ = nullptr; // a child
    int margin_;
    int arrow_ = 0; // where it points, across the window
    QRect area_;
    bool leaving_ = false;
};

LinuxPopover::LinuxPopover(LinuxWindows& windows, EventMonitors& monitors, PopoverSpec spec, const QRect& anchor)
    : windows_(windows)
    , didClose_(std::move(spec.didClose))
    , bubble_(std::make_unique<Bubble>(*this, std::move(spec.content), anchor))
    , pressesElsewhere_(
          monitors.addGlobalMonitor(LeftMouseDownMask | RightMouseDownMask, [this] { pressedSomewhere(); }))
    , pressesHere_(monitors.addLocalMonitor(LeftMouseDownMask | RightMouseDownMask, [this] { pressedSomewhere(); }))
    , themeChanges_(windows.themeChanges([this] { bubble_->themeChanged(); })) {
    windows_.activate(*bubble_);
}

LinuxPopover::~LinuxPopover() = default;

void LinuxPopover::pressedSomewhere() {
    if (!bubble_->isAt(QCursor::pos())) {
        close();
    }
}

void LinuxPopover::close() {
    bubble_->leave([this] {
        if (const auto didClose = didClose_) { // it may end this
            didClose();
        }
    });
}

LayerTicker& LinuxPopover::ticker() const {
    return windows_.ticker();
}

const Pictures& LinuxPopover::pictures() const {
    return windows_.pictures();
}

const Theme& LinuxPopover::theme() const {
    return windows_.appearance().theme();
}

QWidget& LinuxPopover::canvas() {
    return *bubble_;
}

} // namespace rb
