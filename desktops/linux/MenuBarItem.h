#pragma once

#include "desktops/linux/StatusBar.h"

#include <QWidget>

#include <memory>

namespace rb {

class MenuBar;
class MenuWidget;

// An item in our own menu bar: its picture, its tool tip, and its menu on a press.
class MenuBarItem final : public QWidget, public StatusItemPresenter {
public:
    MenuBarItem(LinuxStatusItem& item, MenuBar& bar, const Pictures& pictures, const LinuxAppearance& appearance);
    ~MenuBarItem() override;
    MenuBarItem(const MenuBarItem&) = delete;
    MenuBarItem& operator=(const MenuBarItem&) = delete;

    void imageChanged() override;
    void toolTipChanged() override;
    void menuChanged() override;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void openMenu();
    bool menuIsOpen() const;

    LinuxStatusItem& item_;
    MenuBar* bar_;
    const Pictures& pictures_;
    const LinuxAppearance& appearance_;
    std::unique_ptr<MenuWidget> menu_;
};

} // namespace rb
