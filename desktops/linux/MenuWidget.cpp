#include "desktops/linux/MenuWidget.h"

#include "desktops/linux/KeyEquivalent.h"
#include "desktops/linux/MenuAction.h"
#include "desktops/linux/MenuRow.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/Shadow.h"

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
    measureColumns();
    if (rows_.empty()) {
        // Nothing to choose from: the menu doesn't stay.
        QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
    }
}

void MenuWidget::measureColumns() {
    columns_ = {};
    for (const MenuAction* row : rows_) {
        if (row->item().on) {
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
    QMenu::keyPressEvent(event);
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

bool MenuWidget::chooseByKey(const QKeyEvent& event) {
    for (MenuAction* row : rows_) {
        if (row->isEnabled() && row->isVisible() && isKeyEquivalent(event, *row->shown(heldModifiers_))) {
            setActiveAction(row);
            // Return closes all menus and then chooses, in Qt's own order.
            QKeyEvent choose(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
            QMenu::keyPressEvent(&choose);
            return true;
        }
    }
    return false;
}

} // namespace rb
