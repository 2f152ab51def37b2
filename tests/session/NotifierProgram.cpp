// A program with a StatusNotifierItem and a menu on the bus, well or badly behaved. Prints "registered", and
// "event NAME ID" for whatever it is told.
//   notifier-program lively     a submenu that is filled when it opens; a line that changes, and new ones, while open
//   notifier-program many       a menu of 5,000 lines
//   notifier-program cycle      every submenu contains itself
//   notifier-program mute       never answers anything
//   notifier-program mutemenu   an item whose menu never answers
//   notifier-program bare       knows none of its properties
//   notifier-program huge       a picture that claims to be 100,000 pixels wide and high
//   notifier-program dark       a picture in nearly black (or "light", "colourful")
//   notifier-program fleeting   quits when it is activated

#include "desktops/linux/NotifierTypes.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QTimer>

#include <cstdio>

namespace {

using rb::ExportedItem;
using rb::NotifierPixmap;
using rb::NotifierPixmaps;

constexpr const char* watcherService = "org.kde.StatusNotifierWatcher";
constexpr const char* menuInterface = "com.canonical.dbusmenu";

void tell(const QString& line) {
    std::puts(qUtf8Printable(line));
    std::fflush(stdout);
}

NotifierPixmap disc(int side, const QByteArray& argb) {
    NotifierPixmap pixmap{side, side, {}};
    const double radius = side * 0.36;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double dx = x + 0.5 - side / 2.0;
            const double dy = y + 0.5 - side / 2.0;
            const bool inside = dx * dx + dy * dy < radius * radius;
            pixmap.bytes += inside ? argb : QByteArray(4, '\0');
        }
    }
    return pixmap;
}

ExportedItem row(int id, const QString& label, QVariantMap properties = {}) {
    properties.insert("label", label);
    return {id, properties, {}};
}

void add(ExportedItem& to, const ExportedItem& child) {
    to.children.append(QDBusVariant(QVariant::fromValue(child)));
}

class Item final : public QDBusVirtualObject {
public:
    explicit Item(QString kind)
        : kind_(std::move(kind)) {
        connect(&tick_, &QTimer::timeout, this, [this] { change(); });
    }

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        const QString member = message.member();
        if (kind_ == "mute") {
            return true;
        }
        if (message.path() == "/MenuBar") {
            return kind_ == "mutemenu" || answerMenu(message, bus);
        }
        if (member == "GetAll") {
            return bus.send(message.createReply(QVariant(kind_ == "bare" ? QVariantMap() : properties())));
        }
        tell("event " + member + " 0");
        if (kind_ == "fleeting") {
            QCoreApplication::quit();
        }
        return bus.send(message.createReply());
    }

private:
    QVariantMap properties() const {
        QByteArray color("\xFF\x18\x18\x1A", 4);
        if (kind_ == "light") {
            color = QByteArray("\xFF\xF0\xF0\xF2", 4);
        } else if (kind_ == "colourful") {
            color = QByteArray("\xFF\x10\x30\x90", 4);
        }
        NotifierPixmaps pictures{disc(22, color), disc(44, color)};
        if (kind_ == "huge") {
            pictures = {{100000, 100000, QByteArray(16, 'x')}, {-1, 7, {}}, {65536, 65536, QByteArray()}};
        }
        return {{"Id", kind_},
                {"Title", kind_},
                {"Status", "Active"},
                {"IconPixmap", QVariant::fromValue(pictures)},
                {"Menu", QVariant::fromValue(QDBusObjectPath("/MenuBar"))}};
    }

    ExportedItem layout(int id) const {
        ExportedItem all{id, {{"children-display", "submenu"}}, {}};
        if (kind_ == "many") {
            for (int line = 1; line <= 5000; ++line) {
                add(all, row(line, QString("Line %1").arg(line)));
            }
        } else if (kind_ == "cycle") {
            add(all, row(1, "Again", {{"children-display", "submenu"}}));
        } else if (id == 1) {
            addLate(all);
        } else {
            ExportedItem more = row(1, "_More", {{"children-display", "submenu"}});
            addLate(more);
            add(all, more);
            add(all, row(2, QString("Tick %1").arg(ticks_)));
            add(all, row(3, "Check", {{"toggle-type", "checkmark"}, {"toggle-state", ticks_ % 2}}));
            add(all, row(4, "Radio", {{"toggle-type", "radio"}, {"toggle-state", 1}}));
            add(all, row(5, "Off", {{"enabled", false}}));
            add(all, ExportedItem{6, {{"type", "separator"}}, {}});
            add(all, row(7, "_Quit",
                         {{"shortcut", QVariant::fromValue(QList<QStringList>{{"Control", "q"}})},
                          {"icon-name", "application-exit"}}));
            for (int line = 0; line < ticks_ / 2; ++line) {
                add(all, row(20 + line, QString("New %1").arg(line)));
            }
        }
        return all;
    }
    void addLate(ExportedItem& to) const {
        for (int line = 0; filled_ && line < 4; ++line) {
            add(to, row(10 + line, QString("Late %1").arg(line)));
        }
    }

    bool answerMenu(const QDBusMessage& message, const QDBusConnection& bus) {
        const QString member = message.member();
        const int id = message.arguments().value(0).toInt();
        if (member == "AboutToShow") {
            filled_ = filled_ || id == 1;
            return bus.send(message.createReply(id == 1));
        }
        if (member == "GetLayout") {
            return bus.send(message.createReply({revision_, QVariant::fromValue(layout(id))}));
        }
        if (member == "Event") {
            const QString name = message.arguments().value(1).toString();
            tell("event " + name + " " + QString::number(id));
            if (kind_ == "lively" && id == 0) {
                name == "opened" ? tick_.start(200) : tick_.stop();
            }
            return bus.send(message.createReply());
        }
        return false;
    }

    // By turns a property and a new line.
    void change() {
        ++ticks_;
        ++revision_;
        const bool line = ticks_ % 2 == 0;
        QDBusMessage signal =
            QDBusMessage::createSignal("/MenuBar", menuInterface, line ? "LayoutUpdated" : "ItemsPropertiesUpdated");
        if (line) {
            signal << revision_ << 0;
        } else {
            signal << QVariant::fromValue(rb::ExportedPropertiesList{{2, {{"label", "Tick"}}}})
                   << QVariant::fromValue(rb::ExportedPropertiesList{});
        }
        QDBusConnection::sessionBus().send(signal);
        if (ticks_ >= 6) {
            tick_.stop();
        }
    }

    QString kind_;
    QTimer tick_;
    bool filled_ = false;
    int ticks_ = 0;
    uint revision_ = 1;
};

void registerItem() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    QDBusMessage call = QDBusMessage::createMethodCall(watcherService, "/StatusNotifierWatcher", watcherService,
                                                       "RegisterStatusNotifierItem");
    call << bus.baseService();
    bus.send(call);
    tell("registered");
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    rb::registerNotifierTypes();
    QDBusConnection bus = QDBusConnection::sessionBus();
    Item item(QCoreApplication::arguments().value(1));
    bus.registerVirtualObject("/StatusNotifierItem", &item);
    bus.registerVirtualObject("/MenuBar", &item);
    const QDBusServiceWatcher watcher(watcherService, bus, QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(&watcher, &QDBusServiceWatcher::serviceRegistered, &watcher, [] { registerItem(); });
    registerItem();
    return QCoreApplication::exec();
}
