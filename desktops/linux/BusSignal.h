#pragma once

#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <functional>

namespace rb {

// Whether this session has a bus, found out without starting one.
bool hasSessionBus();

// Tells of one signal of the session bus while it lives. Main thread only.
class BusSignal final : public QObject {
    Q_OBJECT
public:
    struct Source {
        QString service; // empty for any
        QString path;    // empty for any
        QString interface;
        QString name;
    };
    BusSignal(const Source& source, std::function<void(const QDBusMessage&)> received);

private Q_SLOTS:
    void receive(const QDBusMessage& message);

private:
    std::function<void(const QDBusMessage&)> received_;
};

} // namespace rb
