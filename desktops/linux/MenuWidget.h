#pragma once

#include "platform/Menu.h"

#include <QMenu>

#include <memory>
#include <optional>
#include <vector>

namespace rb {

class MenuAction;
class Pictures;

// A menu of the product on the screen. It is filled anew each time it is about to open, after the menu has updated
// itself; submenus likewise. Main thread only.
class MenuWidget final : public QMenu {
public:
    static constexpr int padding = 5;
    static constexpr double cornerRadius = 9;
    // Room for the menu's own shadow on each side, under a compositor.
    static constexpr int shadowMargin = 18;

    // Rows of one menu share their columns; 0 where no row has such a thing.
    struct Columns {
        int check = 0;
        int image = 0;
    };

    // The pictures outlive it.
    MenuWidget(std::shared_ptr<Menu> menu, const Pictures& pictures, MenuWidget* parent = nullptr);
    ~MenuWidget() override;
    MenuWidget(const MenuWidget&) = delete;
    MenuWidget& operator=(const MenuWidget&) = delete;

    // Opens below something, or above it where there is no room below, without covering it.
    void openBeside(const QRect& place);
    // The menu's items, or those of its submenus, are others now, or the same with other contents: what is open
    // follows.
    void contentChanged();
    // The widget whose press opens it: another press there only closes it.
    void setOpener(const QWidget* opener) { opener_ = opener; }

    const Columns& columns() const { return columns_; }
    const Pictures& pictures() const { return pictures_; }
    // The visible panel within the window, which holds the shadow too.
    QRect panelRect() const;
    int margin() const { return testAttribute(Qt::WA_TranslucentBackground) ? shadowMargin : 0; }
    // Held while the menu is open; or of ModifierFlags.
    std::uint32_t heldModifiers() const { return heldModifiers_; }

protected:
    void actionEvent(QActionEvent* event) override;
    void initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void prepare();
    void chooseWindowKind();
    // The menu below the shadow that the pointer is on; null when there is none.
    MenuWidget* beneath(const QMouseEvent& event) const;
    void fill();
    void measureColumns();
    bool showsSameItems() const;
    void fitAgain();
    bool chooseByKey(const QKeyEvent& event);
    bool chooseByMnemonic(const QKeyEvent& event);
    void choose(MenuAction& row);
    void holdModifiers(std::uint32_t modifiers);

    std::shared_ptr<Menu> menu_;
    const Pictures& pictures_;
    MenuWidget* parentMenu_;
    const QWidget* opener_ = nullptr;
    std::vector<MenuAction*> rows_;
    Columns columns_;
    std::uint32_t heldModifiers_ = NoModifiers;
    bool prepared_ = false; // ahead of opening
    bool filling_ = false;
    std::optional<QPoint> place_; // where to open instead of where Qt would
};

} // namespace rb
