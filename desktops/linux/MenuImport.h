#pragma once

#include "desktops/linux/NotifierTypes.h"
#include "platform/Menu.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace rb {

// Another program's menu on the session bus (com.canonical.dbusmenu), read anew for each opening. Main thread only.
class MenuImport {
public:
    // How much of a menu is shown: nobody reads more.
    static constexpr std::size_t mostRows = 1000; // of one menu
    static constexpr int mostLevels = 8;

    MenuImport(QString service, QString path);
    MenuImport(const MenuImport&) = delete;
    MenuImport& operator=(const MenuImport&) = delete;

    // Called back in a later turn, unless this is gone by then or the program doesn't answer within a few seconds.
    void read(std::function<void(std::shared_ptr<Menu> menu)> done);

private:
    void readLayout(const std::function<void(std::shared_ptr<Menu>)>& done);

    QString service_;
    QString path_;
    QObject receiver_; // its pending calls end with it
};

// The menu that a layout describes. `choose` is told the number of a chosen line. Pure function.
std::shared_ptr<Menu> menuFrom(const ExportedItem& layout, const std::function<void(int id)>& choose);

} // namespace rb
