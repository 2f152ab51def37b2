#pragma once

#include "desktops/linux/BarEntry.h"
#include "desktops/linux/BusSignal.h"
#include "desktops/linux/MenuImport.h"
#include "desktops/linux/NotifierFacts.h"
#include "desktops/linux/NotifierWatcher.h"

#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <memory>

class QDBusPendingCallWatcher;

namespace rb {

class LinuxAppearance;
class MenuBar;
class MenuWidget;
class Pictures;

// One StatusNotifierItem of another program in our own menu bar. It is asked for everything without being waited for;
// until it has answered, and while it is passive, it takes no place. Main thread only.
class NotifierIcon final : public QWidget, public BarEntry {
public:
    NotifierIcon(NotifierAddress address, MenuBar& bar, const Pictures& pictures, const LinuxAppearance& appearance);
    ~NotifierIcon() override;
    NotifierIcon(const NotifierIcon&) = delete;
    NotifierIcon& operator=(const NotifierIcon&) = delete;

    const NotifierAddress& address() const { return address_; }

    std::string name() const override;
    int breadth() const override;
    void placeAt(const QRect& area) override;
    void themeChanged() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void ask();
    void answered(QDBusPendingCallWatcher& finished);
    QImage picture(int pixels) const;
    QImage letter(int pixels) const;
    void call(const QString& method, QPoint place);
    void openMenu();
    void showMenu();

    NotifierAddress address_;
    MenuBar& bar_;
    const Pictures& pictures_;
    const LinuxAppearance& appearance_;
    NotifierFacts facts_;
    bool known_ = false; // it has answered
    bool asking_ = false;
    bool askAgain_ = false;
    QTimer pause_; // between questions, for items that change many times a second
    QPixmap shown_;
    std::unique_ptr<BusSignal> changes_;
    std::unique_ptr<MenuImport> import_;
    std::unique_ptr<MenuWidget> menu_;
};

} // namespace rb
