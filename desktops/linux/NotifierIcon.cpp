#include "desktops/linux/NotifierIcon.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/IconContrast.h"
#include "desktops/linux/MenuBar.h"
#include "desktops/linux/MenuWidget.h"
#include "desktops/linux/ThemeIcons.h"
#include "desktops/linux/ToolTip.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace rb {

namespace {

const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
constexpr int iconSide = 20; // points
constexpr int padding = 5;
constexpr int patience = 5000;    // milliseconds for an answer
constexpr int shortestGap = 100;  // milliseconds between two questions
constexpr int largestFile = 4096; // pixels a side

// Where a program's own folder may have an icon: itself, or laid out as a theme.
QStringList placesIn(const QString& folder) {
    QStringList places{folder};
    for (const char* size : {"scalable", "48x48", "32x32", "24x24", "22x22", "16x16"}) {
        for (const char* context : {"apps", "status"}) {
            places.append(folder + QStringLiteral("/hicolor/") + QLatin1String(size) + QLatin1Char('/') +
                          QLatin1String(context));
        }
    }
    return places;
}

// A file of the program's own: a path, or a name in its folder.
QImage fromFile(const QString& name, const QString& folder, int pixels) {
    QStringList candidates;
    if (QDir::isAbsolutePath(name)) {
        candidates.append(name);
    } else if (!folder.isEmpty()) {
        for (const QString& place : placesIn(folder)) {
            for (const char* suffix : {".svg", ".png", ".xpm"}) {
                candidates.append(place + QLatin1Char('/') + name + QLatin1String(suffix));
            }
        }
    }
    for (const QString& candidate : candidates) {
        if (!QFileInfo(candidate).isFile()) {
            continue;
        }
        QImageReader reader(candidate);
        const QSize size = reader.size();
        if (size.width() > largestFile || size.height() > largestFile) {
            continue;
        }
        if (size.isValid()) {
            reader.setScaledSize(size.scaled(pixels, pixels, Qt::KeepAspectRatio));
        }
        if (QImage image = reader.read(); !image.isNull()) {
            return image;
        }
    }
    return {};
}

QImage named(const QString& name, const QString& folder, int pixels, const QColor& foreground) {
    if (name.isEmpty()) {
        return {};
    }
    QImage image = fromFile(name, folder, pixels);
    if (image.isNull()) {
        image = iconFromTheme(name).pixmap(QSize(pixels, pixels)).toImage();
    }
    if (!image.isNull() && name.endsWith(QLatin1String("-symbolic"))) {
        image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), foreground);
    }
    return image;
}

} // namespace

NotifierIcon::NotifierIcon(NotifierAddress address, MenuBar& bar, const Pictures& pictures,
                           const LinuxAppearance& appearance)
    : QWidget(&bar)
    , address_(std::move(address))
    , bar_(bar)
    , pictures_(pictures)
    , appearance_(appearance)
    , changes_(std::make_unique<BusSignal>(BusSignal::Source{address_.service, address_.path, itemInterface, {}},
                                           [this](const QDBusMessage&) { ask(); })) {
    registerNotifierTypes();
    pause_.setSingleShot(true);
    connect(&pause_, &QTimer::timeout, this, [this] {
        if (std::exchange(askAgain_, false)) {
            ask();
        }
    });
    bar_.addEntry(*this);
    ask();
}

NotifierIcon::~NotifierIcon() {
    bar_.removeEntry(*this);
}

void NotifierIcon::ask() {
    if (asking_ || pause_.isActive()) {
        askAgain_ = true;
        return;
    }
    asking_ = true;
    QDBusMessage question = QDBusMessage::createMethodCall(
        address_.service, address_.path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"));
    question << itemInterface;
    question.setAutoStartService(false);
    auto* pending = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question, patience), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        asking_ = false;
        pause_.start(shortestGap);
        answered(*finished);
    });
}

void NotifierIcon::answered(QDBusPendingCallWatcher& finished) {
    const QDBusMessage reply = finished.reply();
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("a{sv}")) {
        return; // what it said before stays
    }
    facts_ = readNotifierFacts(qdbus_cast<QVariantMap>(reply.arguments().constFirst()));
    known_ = true;
    shown_ = {};
    setToolTip(plainToolTip((facts_.toolTip.isEmpty() ? facts_.title : facts_.toolTip).toStdString()));
    setAccessibleName(facts_.title);
    bar_.layOutEntries();
    update();
}

std::string NotifierIcon::name() const {
    const QString name = facts_.id.isEmpty() ? facts_.title : facts_.id;
    // Before it has answered, it is one of a kind.
    return known_ ? name.toStdString() : (address_.service + address_.path).toStdString();
}

int NotifierIcon::breadth() const {
    return known_ && facts_.status != QLatin1String("Passive") ? iconSide + 2 * padding : 0;
}

void NotifierIcon::placeAt(const QRect& area) {
    setGeometry(area);
    setVisible(!area.isEmpty());
}

void NotifierIcon::themeChanged() {
    shown_ = {};
    update();
}

QImage NotifierIcon::picture(int pixels) const {
    const QColor foreground = appearance_.theme().label;
    QImage image;
    if (facts_.status == QLatin1String("NeedsAttention")) {
        image = named(facts_.attentionIconName, facts_.themePath, pixels, foreground);
        if (image.isNull()) {
            image = bestPixmap(facts_.attentionIcon, pixels);
        }
    }
    if (image.isNull()) {
        image = named(facts_.iconName, facts_.themePath, pixels, foreground);
    }
    if (image.isNull()) {
        image = bestPixmap(facts_.icon, pixels);
    }
    return image.isNull() ? letter(pixels) : readable(image, appearance_.theme().bar, foreground);
}

// An item without any picture is still there to be clicked.
QImage NotifierIcon::letter(int pixels) const {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const double inset = pixels * 0.1;
    painter.setPen(Qt::NoPen);
    painter.setBrush(appearance_.theme().secondaryLabel);
    painter.drawRoundedRect(QRectF(image.rect()).adjusted(inset, inset, -inset, -inset), pixels * 0.2, pixels * 0.2);
    QFont letterFont = font();
    letterFont.setPixelSize(std::max(1, pixels / 2));
    painter.setFont(letterFont);
    painter.setPen(appearance_.theme().bar);
    const QString name = facts_.title.isEmpty() ? facts_.id : facts_.title;
    painter.drawText(image.rect(), Qt::AlignCenter, name.isEmpty() ? QStringLiteral("?") : name.left(1).toUpper());
    return image;
}

void NotifierIcon::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const double scale = devicePixelRatioF();
    if (shown_.isNull()) {
        const int pixels = qRound(iconSide * scale);
        shown_ =
            QPixmap::fromImage(picture(pixels).scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation));
        shown_.setDevicePixelRatio(scale);
    }
    if (menu_ && menu_->isVisible()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(appearance_.theme().dark ? QColor(255, 255, 255, 44) : QColor(0, 0, 0, 28));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0, 3, 0, -3), 5, 5);
    }
    const QSizeF size = shown_.deviceIndependentSize();
    painter.drawPixmap(QPointF((width() - size.width()) / 2, (height() - size.height()) / 2), shown_);
}

void NotifierIcon::mouseReleaseEvent(QMouseEvent* event) {
    if (!rect().contains(event->pos())) {
        return;
    }
    const QPoint place = event->globalPosition().toPoint();
    if (event->button() == Qt::MiddleButton) {
        call(QStringLiteral("SecondaryActivate"), place);
    } else if (event->button() == Qt::LeftButton && !facts_.itemIsMenu) {
        call(QStringLiteral("Activate"), place);
    } else if (event->button() == Qt::LeftButton || event->button() == Qt::RightButton) {
        if (facts_.menuPath.isEmpty()) {
            call(QStringLiteral("ContextMenu"), place);
        } else {
            openMenu();
        }
    }
}

void NotifierIcon::wheelEvent(QWheelEvent* event) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(address_.service, address_.path, itemInterface, QStringLiteral("Scroll"));
    const QPoint turned = event->angleDelta();
    const bool vertical = turned.y() != 0;
    message << (vertical ? turned.y() : turned.x())
            << (vertical ? QStringLiteral("vertical") : QStringLiteral("horizontal"));
    QDBusConnection::sessionBus().send(message);
}

void NotifierIcon::call(const QString& method, QPoint place) {
    QDBusMessage message = QDBusMessage::createMethodCall(address_.service, address_.path, itemInterface, method);
    message << place.x() << place.y();
    auto* pending = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message, patience), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, method](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        // Items that are only a menu needn't know what activating is.
        const bool unknown = finished->isError() && finished->error().type() != QDBusError::NoReply;
        if (unknown && method == QLatin1String("Activate") && !facts_.menuPath.isEmpty()) {
            openMenu();
        }
    });
}

void NotifierIcon::openMenu() {
    if (menu_ && menu_->isVisible()) {
        return;
    }
    import_ =
        std::make_unique<MenuImport>(MenuImport::Source{address_.service, facts_.menuPath, appearance_.theme().label},
                                     MenuImport::Listener{.read = [this] { showMenu(); },
                                                          .changed =
                                                              [this] {
                                                                  if (menu_) {
                                                                      menu_->contentChanged();
                                                                  }
                                                              }});
}

void NotifierIcon::showMenu() {
    if (import_->menu()->items().empty() || !isVisible()) {
        return;
    }
    menu_ = std::make_unique<MenuWidget>(import_->menu(), pictures_);
    menu_->setOpener(this);
    // In a later turn, because the choice comes after the closing.
    connect(
        menu_.get(), &QMenu::aboutToHide, this,
        [this] {
            update();
            if (!menu_->isVisible()) {
                import_.reset();
            }
        },
        Qt::QueuedConnection);
    menu_->openBeside(QRect(mapToGlobal(QPoint(0, 0)), size()));
    update();
}

} // namespace rb
