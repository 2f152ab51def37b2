#pragma once

#include "desktops/linux/StatusBar.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QPoint>

#include <memory>

namespace rb {

class MenuExport;
class MenuWidget;

// An item shown by a StatusNotifierItem host: an object on the session bus that the host reads. The host draws the
// menu by itself when it can (MenuExport), else it tells us to open ours.
class NotifierItem final : public QDBusVirtualObject, public StatusItemPresenter {
public:
    // `number` tells the program's items apart.
    NotifierItem(LinuxStatusItem& item, unsigned number, const Pictures& pictures, const LinuxAppearance& appearance);
    ~NotifierItem() override;
    NotifierItem(const NotifierItem&) = delete;
    NotifierItem& operator=(const NotifierItem&) = delete;

    void imageChanged() override;
    void toolTipChanged() override;
    void menuChanged() override;
    void popUpMenu(std::shared_ptr<Menu> menu) override;
    std::optional<QRect> areaOnScreen() const override { return std::nullopt; }

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    void registerWithWatcher();
    void emitSignal(const QString& name);
    QVariant property(const QString& name) const;
    void openMenu(const std::shared_ptr<Menu>& menu);
    void clicked(const QString& method, QPoint place);

    LinuxStatusItem& item_;
    unsigned number_;
    const Pictures& pictures_;
    const LinuxAppearance& appearance_;
    QDBusConnection bus_;
    QString name_;
    std::unique_ptr<MenuExport> export_;
    std::shared_ptr<Menu> shownMenu_;
    std::unique_ptr<MenuWidget> menu_;
    QPoint lastClick_; // where hosts said the icon is
};

} // namespace rb
