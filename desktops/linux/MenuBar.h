#pragma once

#include <QWidget>

#include <vector>

namespace rb {

class LinuxAppearance;
class MenuBarItem;
class XConnection;

// Our own menu bar: a strip along the top edge of the primary screen that window managers keep free. Items stand at
// its right end, newer ones to the left of older ones.
class MenuBar final : public QWidget {
public:
    // In points.
    static constexpr int thickness = 28;

    MenuBar(XConnection& connection, const LinuxAppearance& appearance);
    ~MenuBar() override;
    MenuBar(const MenuBar&) = delete;
    MenuBar& operator=(const MenuBar&) = delete;

    void addItem(MenuBarItem& item);
    void removeItem(MenuBarItem& item);
    // An item asks for another width.
    void layOutItems();
    const LinuxAppearance& appearance() const { return appearance_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeOnScreen();
    void makeSureOfMapping();
    void keepSpaceFree();

    XConnection& connection_;
    const LinuxAppearance& appearance_;
    std::vector<MenuBarItem*> items_; // from the right
    QMetaObject::Connection screenGeometry_;
    int mappings_ = 1;
};

} // namespace rb
