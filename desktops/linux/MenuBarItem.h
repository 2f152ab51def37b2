#pragma once

#include "desktops/linux/BarEntry.h"
#include "desktops/linux/StatusBar.h"

#include <QPixmap>
#include <QVariantAnimation>
#include <QWidget>

#include <memory>

namespace rb {

class MenuBar;
class MenuWidget;

// An item in our own menu bar: its picture, its tool tip, its menu on a press, and its clicks.
class MenuBarItem final : public QWidget, public BarEntry, public StatusItemPresenter {
public:
    MenuBarItem(LinuxStatusItem& item, MenuBar& bar, const Pictures& pictures, const LinuxAppearance& appearance);
    ~MenuBarItem() override;
    MenuBarItem(const MenuBarItem&) = delete;
    MenuBarItem& operator=(const MenuBarItem&) = delete;

    void imageChanged() override;
    void toolTipChanged() override;
    void menuChanged() override;
    void lengthChanged() override;
    void popUpMenu(std::shared_ptr<Menu> menu) override;
    void addTransition(const PushTransition& transition) override;
    std::optional<QRect> areaOnScreen() const override;

    std::string name() const override { return item_.name(); }
    int breadth() const override;
    void placeAt(const QRect& area) override;
    void themeChanged() override { update(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void openMenu(const std::shared_ptr<Menu>& menu);
    bool menuIsOpen() const;
    void drawPicture(QPainter& painter, double shift) const;

    LinuxStatusItem& item_;
    MenuBar* bar_;
    const Pictures& pictures_;
    const LinuxAppearance& appearance_;
    std::shared_ptr<Menu> shownMenu_;
    std::unique_ptr<MenuWidget> menu_;
    QPixmap pushedOut_; // the picture before, while the next one pushes it out
    double pushSide_ = 1;
    QVariantAnimation push_;
};

} // namespace rb
