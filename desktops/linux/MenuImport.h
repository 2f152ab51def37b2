#pragma once

#include "desktops/linux/BusSignal.h"
#include "desktops/linux/ImportedMenu.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <set>

class QDBusMessage;

namespace rb {

// Another program's menu on the session bus (com.canonical.dbusmenu) for one opening: read when it opens, its submenus
// when they do, and followed while it is open. Nothing is waited for. Main thread only.
class MenuImport {
public:
    struct Source {
        QString service;
        QString path;
        QColor foreground; // for symbolic icons
    };
    struct Listener {
        // Once, in a later turn; never when the program doesn't answer within a few seconds.
        std::function<void()> read;
        // The menu, or one of its submenus, has other lines now.
        std::function<void()> changed;
    };
    MenuImport(Source source, Listener listener);
    // Tells the program that the menu was closed, if it was opened.
    ~MenuImport();
    MenuImport(const MenuImport&) = delete;
    MenuImport& operator=(const MenuImport&) = delete;

    const std::shared_ptr<Menu>& menu() const { return menu_.root(); }

private:
    void aboutToShow(int id, int patience);
    void want(int id);
    void readNext();
    void took(int id, const QDBusMessage& reply);
    void tell(int id, const QString& event) const;

    Source source_;
    Listener listener_;
    ImportedMenu menu_;
    bool open_ = false;    // it has been read
    bool reading_ = false; // a layout is under way
    std::set<int> wanted_; // submenus to read, 0 for everything
    QTimer pause_;         // between readings, for menus that change many times a second
    QObject receiver_;     // the pending calls end with it
    std::unique_ptr<BusSignal> layoutUpdated_;
    std::unique_ptr<BusSignal> propertiesUpdated_;
};

} // namespace rb
