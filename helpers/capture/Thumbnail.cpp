#include "helpers/capture/Thumbnail.h"

#include "desktops/linux/XConnection.h"
#include "helpers/capture/Arguments.h"
#include "helpers/capture/CaptureLock.h"
#include "helpers/capture/OwnProcess.h"
#include "helpers/capture/WindowPlaces.h"

#include <QDesktopServices>
#include <QDrag>
#include <QEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QRasterWindow>
#include <QScreen>
#include <QStyleHints>
#include <QTimer>
#include <QUrl>
#include <QVariantAnimation>

#include <algorithm>
#include <array>
#include <chrono>
#include <sys/prctl.h>
#include <thread>
#include <utility>

namespace rb {

namespace {

constexpr const char* turn = "_ROOKBAY_CAPTURE_THUMBNAIL"; // the selection that the one that is shown owns

constexpr int shownFor = 5000; // milliseconds
constexpr int fadeTime = 220;

// In points.
constexpr double widest = 184;
constexpr double highest = 136;
constexpr double leastSide = 28;
constexpr double fromEdge = 22;
constexpr double shadowReach = 14;
constexpr double corner = 8;
constexpr double rise = 10; // while it fades in
constexpr double crossSide = 20;

class ThumbnailWindow final : public QRasterWindow {
public:
    ThumbnailWindow(const QImage& picture, QString path, const QScreen& screen, bool translucent)
        : path_(std::move(path))
        , translucent_(translucent) {
        setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus |
                 Qt::BypassWindowManagerHint);
        setTitle(QStringLiteral("截图"));
        if (translucent) {
            QSurfaceFormat format = requestedFormat();
            format.setAlphaBufferSize(8);
            setFormat(format);
        }
        const double ratio = screen.devicePixelRatio();
        const QSizeF points = QSizeF(picture.size()) / ratio;
        const double scale = std::min({1.0, widest / points.width(), highest / points.height()});
        const QSizeF shown(std::max(leastSide, points.width() * scale), std::max(leastSide, points.height() * scale));
        const double margin = translucent ? shadowReach : 0;
        card_ = QRectF(QPointF(margin, margin), shown);
        const QSize whole = (shown + QSizeF(2 * margin, 2 * margin)).toSize();
        const QRect free = screen.availableGeometry();
        place_ = QPoint(free.x() + free.width() - static_cast<int>(fromEdge - margin) - whole.width(),
                        free.y() + free.height() - static_cast<int>(fromEdge - margin) - whole.height());
        setGeometry(QRect(place_, whole));
        small_ = picture.scaled((shown * ratio).toSize(), Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
        rest_.setSingleShot(true);
        QObject::connect(&rest_, &QTimer::timeout, this, [this] { leave(); });
        QObject::connect(&fade_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
            opacity_ = value.toDouble();
            setPosition(place_ + QPoint(0, static_cast<int>((1 - opacity_) * rise)));
            update();
        });
        QObject::connect(&fade_, &QVariantAnimation::finished, this, [this] {
            if (leaving_) {
                QCoreApplication::quit();
            }
        });
    }

    void appear() {
        fadeTo(1);
        show();
        rest_.start(shownFor);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(QRect(QPoint(), size()), translucent_ ? QColor(Qt::transparent) : QColor(Qt::white));
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setOpacity(translucent_ ? opacity_ : 1);
        const double radius = translucent_ ? corner : 0;
        for (double reach = translucent_ ? shadowReach : 0; reach >= 1; reach -= 1) {
            // Many faint sheets, the widest first, lie over one another as a soft shadow.
            painter.setPen(Qt::NoPen);
            painter.setBrush(QColor(0, 0, 0, 4));
            painter.drawRoundedRect(card_.adjusted(-reach, -reach + 3, reach, reach), radius + reach, radius + reach);
        }
        QPainterPath outline;
        outline.addRoundedRect(card_, radius, radius);
        painter.setClipPath(outline);
        painter.fillRect(card_, QColor(250, 250, 250));
        const QSizeF drawn = QSizeF(small_.size()) / devicePixelRatio();
        painter.drawImage(QRectF(card_.center() - QPointF(drawn.width() / 2, drawn.height() / 2), drawn), small_);
        painter.setClipping(false);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(0, 0, 0, 90), 1));
        painter.drawRoundedRect(card_.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
        painter.setPen(QPen(QColor(255, 255, 255, 210), 2));
        painter.drawRoundedRect(card_.adjusted(2, 2, -2, -2), std::max(0.0, radius - 2), std::max(0.0, radius - 2));
        if (hovered_) {
            drawCross(painter);
        }
    }

    bool event(QEvent* event) override {
        if (event->type() == QEvent::Enter || event->type() == QEvent::Leave) {
            hovered_ = event->type() == QEvent::Enter;
            // What is being dragged may take as long as it likes, and what is leaving goes on doing so.
            if (hovered_ || dragging_ || leaving_) {
                rest_.stop();
            } else {
                rest_.start(shownFor);
            }
            update();
        }
        return QRasterWindow::event(event);
    }

    void mousePressEvent(QMouseEvent* event) override { pressed_ = event->position(); }

    void mouseMoveEvent(QMouseEvent* event) override {
        const QPointF way = event->position() - pressed_;
        if (!event->buttons().testFlag(Qt::LeftButton) || dragging_ ||
            way.manhattanLength() < QGuiApplication::styleHints()->startDragDistance()) {
            return;
        }
        dragging_ = true;
        rest_.stop();
        auto* contents = new QMimeData; // the drag owns it
        contents->setUrls({QUrl::fromLocalFile(path_)});
        auto* drag = new QDrag(this);
        drag->setMimeData(contents);
        QPixmap card = QPixmap::fromImage(small_);
        card.setDevicePixelRatio(devicePixelRatio());
        drag->setPixmap(card);
        drag->setHotSpot((pressed_ - card_.topLeft()).toPoint());
        // A copy: the file is where the settings want it.
        drag->exec(Qt::CopyAction);
        leave();
    }

    void mouseReleaseEvent(QMouseEvent* event) override {
        if (dragging_) {
            return;
        }
        if (event->button() == Qt::LeftButton && !cross().contains(event->position())) {
            QDesktopServices::openUrl(QUrl::fromLocalFile(path_));
        }
        leave();
    }

private:
    QRectF cross() const { return {card_.x() + 7, card_.y() + 7, crossSide, crossSide}; }

    void drawCross(QPainter& painter) const {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(30, 30, 32, 215));
        painter.drawEllipse(cross());
        painter.setPen(QPen(Qt::white, 1.6, Qt::SolidLine, Qt::RoundCap));
        const QRectF arms = cross().adjusted(6.5, 6.5, -6.5, -6.5);
        painter.drawLine(arms.topLeft(), arms.bottomRight());
        painter.drawLine(arms.topRight(), arms.bottomLeft());
    }

    void fadeTo(double opacity) {
        fade_.stop();
        fade_.setDuration(translucent_ ? fadeTime : 0);
        fade_.setEasingCurve(QEasingCurve::OutCubic);
        fade_.setStartValue(opacity_);
        fade_.setEndValue(opacity);
        fade_.start();
    }

    void leave() {
        rest_.stop();
        leaving_ = true;
        fadeTo(0);
    }

    QImage small_;
    QString path_;
    bool translucent_;
    QRectF card_;
    QPoint place_;
    QPointF pressed_;
    double opacity_ = 0;
    bool hovered_ = false;
    bool dragging_ = false;
    bool leaving_ = false;
    QTimer rest_;
    QVariantAnimation fade_;
};

xcb_window_t shownOne(XConnection& connection) {
    const auto cookie = xcb_get_selection_owner(connection.get(), connection.atom(turn));
    const XReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection.get(), cookie, nullptr));
    return owner ? owner->owner : xcb_window_t{XCB_WINDOW_NONE};
}

QImage readPicture(const std::string& path) {
    QImageReader reader(QString::fromStdString(path));
    reader.setDecideFormatFromContent(true);
    return reader.read();
}

} // namespace

void showThumbnail(const std::string& path, PixelPoint place) {
    // Without it nothing is lost: the file is there.
    (void)startAgain({showThumbnailCommand, std::to_string(place.x), std::to_string(place.y), path});
}

int runThumbnail(const std::string& path, PixelPoint place) {
    prctl(PR_SET_NAME, "rookbay-capture"); // else it is called after the way it was started
    const auto connection = XConnection::open();
    if (!connection || CaptureLock(*connection).isTaken()) {
        return CaptureExit::Failed; // it would only be in the way
    }
    qunsetenv("SESSION_MANAGER");
    int count = 3;
    std::array<char, 20> name{"rookbay-thumbnail"};
    std::array<char, 10> option{"-platform"};
    std::array<char, 4> platform{"xcb"};
    std::array<char*, 4> words{name.data(), option.data(), platform.data(), nullptr};
    const QGuiApplication application(count, words.data());
    const QImage picture = readPicture(path);
    QScreen* screen = QGuiApplication::primaryScreen();
    for (QScreen* each : QGuiApplication::screens()) {
        // A screen's corner is the same in pixels and in points.
        const QRect area(each->geometry().topLeft(), each->geometry().size() * each->devicePixelRatio());
        screen = area.contains(place.x, place.y) ? each : screen;
    }
    if (picture.isNull() || screen == nullptr) {
        return CaptureExit::Failed;
    }
    xcb_connection_t* x = connection->get();
    const Handle events = connection->onEvent([](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) == XCB_SELECTION_CLEAR) {
            QCoreApplication::quit(); // another one, or another capture
        }
    });
    const xcb_window_t owner = xcb_generate_id(x);
    xcb_create_window(x, XCB_COPY_FROM_PARENT, owner, connection->root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(x, owner, connection->atom(turn), XCB_CURRENT_TIME);
    xcb_flush(x);
    connection->deliverQueuedEvents();
    ThumbnailWindow window(picture, QFileInfo(QString::fromStdString(path)).absoluteFilePath(), *screen,
                           isComposed(*connection));
    // It draws its own shadow; some compositors give one to any window that doesn't say this.
    const std::uint32_t none = 0;
    window.create();
    QGuiApplication::sync();
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        connection->atom("_COMPTON_SHADOW"), XCB_ATOM_CARDINAL, 32, 1, &none);
    xcb_flush(x);
    window.appear();
    QCoreApplication::exec();
    return CaptureExit::Taken;
}

void putThumbnailAway(XConnection& connection) {
    using std::chrono::milliseconds;
    const xcb_window_t shown = shownOne(connection);
    if (shown == XCB_WINDOW_NONE) {
        return;
    }
    xcb_connection_t* x = connection.get();
    xcb_set_selection_owner(x, XCB_WINDOW_NONE, connection.atom(turn), XCB_CURRENT_TIME);
    constexpr int mostLooks = 60;
    constexpr milliseconds betweenLooks{5};
    for (int look = 0; look < mostLooks; ++look) {
        const XReply<xcb_get_geometry_reply_t> still(xcb_get_geometry_reply(x, xcb_get_geometry(x, shown), nullptr));
        if (!still) {
            break;
        }
        std::this_thread::sleep_for(betweenLooks);
    }
    // What was behind it must be drawn again.
    constexpr milliseconds untilDrawn{60};
    std::this_thread::sleep_for(untilDrawn);
}

} // namespace rb
