#include "desktops/linux/MenuWidget.h"

#include "desktops/linux/ImportedMenu.h"
#include "desktops/linux/KeyEquivalent.h"
#include "desktops/linux/MenuAction.h"
#include "desktops/linux/MenuRow.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/Shadow.h"

#include <QActionEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace rb {

MenuWidget::MenuWidget(std::shared_ptr<Menu> menu, const Pictures& pictures, MenuWidget* parent)
    : QMenu(parent)
    , menu_(std::move(menu))
    , pictures_(pictures)
    , parentMenu_(parent) {
    setToolTipsVisible(true);
    connect(this, &QMenu::aboutToShow, this, [this] {
        if (!std::exchange(prepared_, false)) {
            prepare();
        }
    });
}

MenuWidget::~MenuWidget() = default;

void MenuWidget::chooseWindowKind() {
    // Rounded corners and a shadow need a compositor, and a window keeps the kind that it was created with.
    if (const bool translucent = isComposited(); testAttribute(Qt::WA_TranslucentBackground) != translucent) {
        setAttribute(Qt::WA_TranslucentBackground, translucent);
        if (testAttribute(Qt::WA_WState_Created)) {
            destroy();
        }
    }
}

QRect MenuWidget::panelRect() const {
    return rect().adjusted(margin(), margin(), -margin(), -margin());
}

void MenuWidget::openBeside(const QRect& place) {
    chooseWindowKind();
    // How high it will be is known only once it is filled.
    prepare();
    prepared_ = true;
    const QSize size = sizeHint() - QSize(2 * margin(), 2 * margin());
    const QScreen* screen = QGuiApplication::screenAt(place.center());
    const QRect area = screen ? screen->geometry() : place;
    constexpr int gap = 3;
    const bool below = place.bottom() + gap + size.height() <= area.bottom();
    const int top = below ? place.bottom() + 1 + gap : place.top() - gap - size.height();
    const int left = std::min(place.left(), area.right() - size.width() - gap);
    place_ = QPoint(std::max(left, area.left()), std::max(top, area.top())) - QPoint(margin(), margin());
    setAttribute(Qt::WA_NoMouseReplay, false);
    popup(*place_);
}

void MenuWidget::prepare() {
    chooseWindowKind();
    setWindowClass(*this, "rookbay-menu");
    // Others recognise open menus by their type, and so do we. It goes to the window only when it changes.
    setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu, false);
    setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu);
    heldModifiers_ = modifierFlags(QGuiApplication::keyboardModifiers());
    if (const auto needsUpdate = menu_->needsUpdate) {
        needsUpdate(*menu_);
    }
    fill();
}

void MenuWidget::fill() {
    filling_ = true;
    for (MenuAction* row : std::exchange(rows_, {})) {
        removeAction(row);
        if (row->menu()) {
            row->menu()->deleteLater();
        }
        row->deleteLater();
    }
    for (const auto& item : menu_->items()) {
        if (item->alternate && !rows_.empty()) {
            rows_.back()->addAlternate(item);
            continue;
        }
        auto* row = new MenuAction(item, *menu_, *this);
        if (item->submenu) {
            row->setMenu(new MenuWidget(item->submenu, pictures_, this));
        }
        rows_.push_back(row);
        addAction(row);
    }
    filling_ = false;
    measureColumns();
    if (rows_.empty()) {
        // Nothing to choose from: the menu doesn't stay.
        QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
    }
}

// With every row that comes or goes Qt would measure all of a menu that is visible.
void MenuWidget::actionEvent(QActionEvent* event) {
    const bool visible = isVisible();
    setAttribute(Qt::WA_WState_Visible, visible && !filling_);
    QMenu::actionEvent(event);
    setAttribute(Qt::WA_WState_Visible, visible);
}

bool MenuWidget::showsSameItems() const {
    auto row = rows_.begin();
    for (const auto& item : menu_->items()) {
        if (item->alternate && row != rows_.begin()) {
            continue;
        }
        if (row == rows_.end() || !(*row)->isFor(*item)) {
            return false;
        }
        const auto* submenu = dynamic_cast<const MenuWidget*>((*row)->menu());
        if (item->submenu != (submenu != nullptr ? submenu->menu_ : nullptr)) {
            return false;
        }
        ++row;
    }
    return row == rows_.end();
}

void MenuWidget::contentChanged() {
    if (!isVisible()) {
        return; // it is filled when it opens
    }
    if (showsSameItems()) {
        for (MenuAction* row : rows_) {
            row->itemChanged(*menu_);
        }
        measureColumns();
    } else {
        const auto* active = dynamic_cast<const MenuAction*>(activeAction());
        const int tag = active != nullptr ? active->item().tag : 0;
        fill();
        for (MenuAction* row : rows_) {
            if (active != nullptr && row->item().tag == tag && row->isEnabled() && !row->menu()) {
                setActiveAction(row);
                break;
            }
        }
    }
    if (rows_.empty()) {
        return;
    }
    fitAgain();
    for (const MenuAction* row : rows_) {
        if (auto* submenu = dynamic_cast<MenuWidget*>(row->menu())) {
            submenu->contentChanged();
        }
    }
}

// Qt measures the rows, limits the menu to the screen and scrolls it when it opens; so it opens once more where it is.
void MenuWidget::fitAgain() {
    QActionEvent changed(QEvent::ActionChanged, rows_.front());
    filling_ = true; // nothing but a mark that the rows are to be measured
    actionEvent(&changed);
    filling_ = false;
    if (sizeHint() == size()) {
        update();
        return;
    }
    const QPoint place = pos();
    prepared_ = true;
    popup(place);
    const QScreen* screen = QGuiApplication::screenAt(panelRect().center() + place);
    if (screen && place.y() + height() - margin() <= screen->geometry().bottom() &&
        place.x() + width() - margin() <= screen->geometry().right()) {
        move(place); // a shadow may lie on a bar or off the screen
    }
    update();
}

void MenuWidget::measureColumns() {
    columns_ = {};
    for (const MenuAction* row : rows_) {
        const ImportedRow* imported = importedRow(row->item());
        if (row->item().on || (imported && imported->mixed)) {
            columns_.check = MenuRow::checkWidth;
        }
        columns_.image = std::max(columns_.image, MenuRow::imageWidth(row->item(), pictures_));
        for (const auto& alternate : row->alternates()) {
            columns_.image = std::max(columns_.image, MenuRow::imageWidth(*alternate, pictures_));
        }
    }
}

void MenuWidget::initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const {
    QMenu::initStyleOption(option, action);
    // The style measures and draws our rows from their action.
    option->styleObject = const_cast<QAction*>(action);
}

void MenuWidget::keyPressEvent(QKeyEvent* event) {
    holdModifiers(modifierFlags(event->modifiers()));
    // Qt would close the menu at Alt, which here only shows the alternates.
    if (event->key() == Qt::Key_Alt || event->key() == Qt::Key_Meta) {
        return;
    }
    for (MenuWidget* menu = this; menu; menu = menu->parentMenu_) {
        if (menu->chooseByKey(*event)) {
            return;
        }
    }
    if (!chooseByMnemonic(*event)) {
        QMenu::keyPressEvent(event);
    }
}

void MenuWidget::keyReleaseEvent(QKeyEvent* event) {
    holdModifiers(modifierFlags(event->modifiers()));
    QMenu::keyReleaseEvent(event);
}

MenuWidget* MenuWidget::beneath(const QMouseEvent& event) const {
    if (panelRect().contains(event.position().toPoint())) {
        return nullptr;
    }
    const QPoint place = event.globalPosition().toPoint();
    for (MenuWidget* menu = parentMenu_; menu; menu = menu->parentMenu_) {
        if (menu->panelRect().contains(menu->mapFromGlobal(place))) {
            return menu;
        }
    }
    return nullptr;
}

namespace {

QMouseEvent seenFrom(const QWidget& widget, const QMouseEvent& event) {
    return {event.type(),           widget.mapFromGlobal(event.globalPosition()),
            event.globalPosition(), event.button(),
            event.buttons(),        event.modifiers()};
}

} // namespace

void MenuWidget::mousePressEvent(QMouseEvent* event) {
    if (MenuWidget* menu = beneath(*event)) {
        QMouseEvent seen = seenFrom(*menu, *event);
        menu->mousePressEvent(&seen);
        return;
    }
    if (!panelRect().contains(event->position().toPoint())) {
        // The shadow belongs to what lies behind it: a press there closes everything, as outside of the window.
        MenuWidget* first = this;
        while (first->parentMenu_) {
            first = first->parentMenu_;
        }
        const QWidget* opener = first->opener_;
        if (opener && opener->rect().contains(opener->mapFromGlobal(event->globalPosition()).toPoint())) {
            setAttribute(Qt::WA_NoMouseReplay);
        }
        first->close();
        return;
    }
    QMenu::mousePressEvent(event);
}

void MenuWidget::mouseMoveEvent(QMouseEvent* event) {
    if (MenuWidget* menu = beneath(*event)) {
        QMouseEvent seen = seenFrom(*menu, *event);
        menu->mouseMoveEvent(&seen);
        return;
    }
    QMenu::mouseMoveEvent(event);
}

void MenuWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (MenuWidget* menu = beneath(*event)) {
        QMouseEvent seen = seenFrom(*menu, *event);
        menu->mouseReleaseEvent(&seen);
        return;
    }
    QMenu::mouseReleaseEvent(event);
}

void MenuWidget::paintEvent(QPaintEvent* event) {
    if (rows_.empty()) {
        return;
    }
    if (margin() > 0 && !panelRect().contains(event->rect())) {
        QPainter painter(this);
        paintShadow(painter, panelRect(), cornerRadius, shadowMargin);
    }
    QMenu::paintEvent(event);
}

void MenuWidget::showEvent(QShowEvent* event) {
    if (place_) {
        // Qt keeps the whole window within the work area, but a shadow may lie on a bar or off the screen.
        move(*std::exchange(place_, std::nullopt));
    } else if (parentMenu_ && parentMenu_->activeAction() && margin() > 0) {
        // Qt puts the window's edge beside the row, and ours begins with a shadow: the first row belongs there. Higher
        // up when there is no room below.
        const QRect row = parentMenu_->actionGeometry(parentMenu_->activeAction());
        const int beside = parentMenu_->mapToGlobal(row.topLeft()).y() - padding - margin();
        move(x(), std::max(std::min(y(), beside), screen()->availableGeometry().top() - margin()));
    }
    if (margin() > 0) {
        // Compositors that shade every window would add a rectangular one to ours.
        setCardinals(*this, "_COMPTON_SHADOW", {0});
    }
    QMenu::showEvent(event);
}

void MenuWidget::holdModifiers(std::uint32_t modifiers) {
    for (MenuWidget* menu = this; menu; menu = menu->parentMenu_) {
        if (std::exchange(menu->heldModifiers_, modifiers) != modifiers) {
            menu->update();
        }
    }
}

void MenuWidget::choose(MenuAction& row) {
    setActiveAction(&row);
    // Return closes all menus and then chooses, in Qt's own order.
    QKeyEvent choose(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QMenu::keyPressEvent(&choose);
}

bool MenuWidget::chooseByKey(const QKeyEvent& event) {
    for (MenuAction* row : rows_) {
        if (row->isEnabled() && row->isVisible() && isKeyEquivalent(event, *row->shown(heldModifiers_))) {
            choose(*row);
            return true;
        }
    }
    return false;
}

// The letter that another program's menu marks; when several lines have it, the next one is only selected.
bool MenuWidget::chooseByMnemonic(const QKeyEvent& event) {
    const QString typed = event.text().toUpper();
    if (typed.size() != 1 || (event.modifiers() & ~(Qt::ShiftModifier | Qt::AltModifier)) != 0) {
        return false;
    }
    std::vector<MenuAction*> marked;
    for (MenuAction* row : rows_) {
        const ImportedRow* imported = importedRow(row->item());
        if (imported && row->isEnabled() && imported->mnemonic == typed[0]) {
            marked.push_back(row);
        }
    }
    if (marked.empty()) {
        return false;
    }
    if (marked.size() == 1) {
        choose(*marked.front());
        return true;
    }
    const auto active = std::find(marked.begin(), marked.end(), activeAction());
    setActiveAction(active == marked.end() || active + 1 == marked.end() ? marked.front() : *(active + 1));
    return true;
}

} // namespace rb
