#pragma once

#include "desktops/linux/NotifierTypes.h"
#include "platform/Menu.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <vector>

namespace rb {

class LinuxAppearance;
class Pictures;

// A menu on the session bus (com.canonical.dbusmenu), for hosts that draw the menus of their items by themselves.
// Such menus have one line an item, so a subtitle stands behind its title; and no alternates, so one is chosen when its
// modifiers are held at the choice. Main thread only.
class MenuExport final : public QDBusVirtualObject {
public:
    MenuExport(std::shared_ptr<Menu> menu, const QDBusConnection& bus, const QString& path, const Pictures& pictures,
               const LinuxAppearance& appearance);
    ~MenuExport() override;
    MenuExport(const MenuExport&) = delete;
    MenuExport& operator=(const MenuExport&) = delete;

    // The menu was changed while it may be shown: hosts that keep a copy read it again.
    void contentMayHaveChanged();

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    struct Line {
        std::shared_ptr<MenuItem> item; // null for the menu itself
        std::shared_ptr<Menu> menu;     // that the item is in; for the menu itself, it
        std::vector<int> children;
        std::vector<std::shared_ptr<MenuItem>> alternates = {};
    };
    // Lists what the menu of that line holds now, after it updated itself if asked to.
    void list(int id, bool updateFirst);
    void forget(const std::vector<int>& ids);
    std::shared_ptr<Menu> menuBelow(const Line& line) const;
    ExportedItem layout(int id, int depth);
    QVariantMap properties(const Line& line) const;
    QByteArray fingerprint(int id) const;
    bool aboutToShow(int id);
    // What is below that line is to be fetched anew.
    void tellOfLayout(int id) const;
    // With these modifiers held; or of ModifierFlags.
    void choose(int id, std::uint32_t modifiers);
    void chooseLater(int id);
    bool answer(const QDBusMessage& message, const QList<QVariant>& results) const;

    QDBusConnection bus_;
    QString path_;
    const Pictures& pictures_;
    const LinuxAppearance& appearance_;
    std::map<int, Line> lines_; // by the number that the host knows them by; 0 is the menu itself
    int nextId_ = 1;
    unsigned revision_ = 1;
};

} // namespace rb
