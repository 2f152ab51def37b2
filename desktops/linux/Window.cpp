#include "desktops/linux/Window.h"

#include "desktops/linux/AlertDialog.h"
#include "desktops/linux/Appearance.h"
#include "desktops/linux/BoxWidget.h"
#include "desktops/linux/ButtonWidget.h"
#include "desktops/linux/KeyEquivalent.h"
#include "desktops/linux/ProgramIcon.h"
#include "desktops/linux/ScreenSpace.h"
#include "desktops/linux/ScrollWidget.h"
#include "desktops/linux/StackWidget.h"
#include "desktops/linux/Style.h"
#include "desktops/linux/Windows.h"
#include "desktops/linux/XConnection.h"

#include <QCloseEvent>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPointer>
#include <QScreen>

#include <functional>
#include <utility>

namespace rb {

namespace {

void visit(RealizedView* view, const std::function<void(RealizedView&)>& visitor) {
    if (view) {
        visitor(*view);
        for (RealizedView* child : view->children()) {
            visit(child, visitor);
        }
    }
}

Qt::WindowFlags flagsOf(const WindowSpec& spec) {
    // A window of fixed size is a dialog: tiling window managers let it float, others leave out the zoom button.
    Qt::WindowFlags flags = (spec.resizable ? Qt::Window : Qt::Dialog) | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                            Qt::WindowSystemMenuHint;
    flags.setFlag(Qt::WindowCloseButtonHint, spec.closable);
    flags.setFlag(Qt::WindowMinimizeButtonHint, spec.miniaturizable);
    flags.setFlag(Qt::WindowMaximizeButtonHint, spec.resizable);
    return flags;
}

} // namespace

// The widget that the window manager frames; its whole area is the content.
class LinuxWindow::TopLevel final : public QWidget {
public:
    TopLevel(LinuxWindow& window, const WindowSpec& spec)
        : QWidget(nullptr, flagsOf(spec))
        , window_(window) {
        setAttribute(Qt::WA_QuitOnClose, false);
        setWindowTitle(QString::fromStdString(spec.title));
        setWindowIcon(programIcon());
        const QSize size(static_cast<int>(spec.contentSize.width), static_cast<int>(spec.contentSize.height));
        if (spec.minimumSize) {
            setMinimumSize(static_cast<int>(spec.minimumSize->width), static_cast<int>(spec.minimumSize->height));
        }
        setProperty(LinuxStyle::darkProperty, spec.dark);
        if (spec.resizable) {
            resize(size);
        } else {
            setFixedSize(size);
        }
    }

protected:
    void closeEvent(QCloseEvent* event) override {
        event->ignore(); // the window only leaves the screen
        window_.closedByUser();
    }
    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        window_.layOut();
    }
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        paintBoxes(window_.root_, painter, event->rect());
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (!window_.pressKeyEquivalent(*event)) {
            QWidget::keyPressEvent(event);
        }
    }

private:
    LinuxWindow& window_;
};

LinuxWindow::LinuxWindow(LinuxWindows& windows, const WindowSpec& spec)
    : windows_(windows)
    , spec_(spec)
    , topLevel_(std::make_unique<TopLevel>(*this, spec)) {
    windows_.add(*this);
    usePalette();
}

LinuxWindow::~LinuxWindow() {
    windows_.remove(*this);
    endSheet();
    firstResponder_ = nullptr; // nobody is told when the window itself goes
    showBoxes(false);
    root_ = nullptr;
}

void LinuxWindow::setContent(View content) {
    root_ = &realize(root_, std::move(content), *topLevel_, *this);
    layOut();
    showBoxes(isVisible());
    topLevel_->update();
}

void LinuxWindow::layOut() {
    if (root_) {
        root_->place(topLevel_->rect());
    }
}

void LinuxWindow::showBoxes(bool onScreen) {
    // A box's own callback may render anew, so the boxes are collected before any of them is told.
    std::vector<QPointer<BoxWidget>> boxes;
    visit(root_, [&](RealizedView& view) {
        if (auto* box = dynamic_cast<BoxWidget*>(&view)) {
            boxes.emplace_back(box);
        }
    });
    for (const auto& box : boxes) {
        if (box) {
            box->setOnScreen(onScreen);
        }
    }
}

void LinuxWindow::center() {
    const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen) {
        screen = QGuiApplication::primaryScreen();
    }
    if (!screen) {
        return;
    }
    const QRect area = screen->availableGeometry();
    const QSize size = topLevel_->frameGeometry().size();
    topLevel_->move(area.left() + (area.width() - size.width()) / 2, area.top() + (area.height() - size.height()) / 2);
}

void LinuxWindow::makeKeyAndOrderFront() {
    const bool appears = !isVisible();
    topLevel_->show();
    topLevel_->raise();
    windows_.activate(*topLevel_);
    if (appears) {
        layOut();
        showBoxes(true);
    }
}

void LinuxWindow::orderOut() {
    if (!isVisible()) {
        return;
    }
    setFirstResponder(nullptr);
    topLevel_->hide();
    showBoxes(false);
}

void LinuxWindow::closedByUser() {
    orderOut();
    if (const auto willClose = spec_.willClose) {
        willClose();
    }
}

bool LinuxWindow::isVisible() const {
    return topLevel_->isVisible();
}

bool LinuxWindow::makeFirstResponder(const std::string& identifier) {
    BoxWidget* found = nullptr;
    visit(root_, [&](RealizedView& view) {
        if (!found && view.identifier() == identifier) {
            found = dynamic_cast<BoxWidget*>(&view);
        }
    });
    if (!found || !found->acceptsFirstResponder()) {
        return false;
    }
    setFirstResponder(found);
    return true;
}

void LinuxWindow::setFirstResponder(BoxWidget* box) {
    if (firstResponder_ != box) {
        if (BoxWidget* previous = std::exchange(firstResponder_, nullptr)) {
            previous->clearFocus();
            previous->resignedFirstResponder();
        }
        firstResponder_ = box;
        if (box) {
            box->becameFirstResponder();
        }
    }
    if (box && firstResponder_ == box) {
        box->setFocus(Qt::OtherFocusReason);
    }
}

void LinuxWindow::boxGone(BoxWidget& box) {
    if (firstResponder_ == &box) {
        setFirstResponder(nullptr);
    }
}

bool LinuxWindow::pressKeyEquivalent(const QKeyEvent& event) {
    const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    const bool isEscape = event.key() == Qt::Key_Escape;
    ButtonWidget* pressed = nullptr;
    visit(root_, [&](RealizedView& view) {
        auto* button = dynamic_cast<ButtonWidget*>(&view);
        if (!button || pressed || !button->isEnabled()) {
            return;
        }
        const std::string& key = button->keyEquivalent();
        const bool plain = (isReturn && key == "\r") || (isEscape && key == "\x1b");
        const MenuItem asItem{.keyEquivalent = key};
        if (plain || isKeyEquivalent(event, asItem)) {
            pressed = button;
        }
    });
    if (pressed) {
        pressed->click();
    }
    return pressed != nullptr;
}

Rect LinuxWindow::frame() const {
    return ScreenSpace::current().fromQt(QRectF(topLevel_->frameGeometry()));
}

void LinuxWindow::setFrame(const Rect& frame) {
    // Qt places the frame and sizes the content.
    const QRect place = ScreenSpace::current().toQt(frame).toRect();
    const QSize around = topLevel_->frameGeometry().size() - topLevel_->size();
    topLevel_->resize(place.size() - around);
    topLevel_->move(place.topLeft());
}

void LinuxWindow::orderFront() {
    const bool appears = !isVisible();
    if (appears) {
        topLevel_->setAttribute(Qt::WA_ShowWithoutActivating, true);
        topLevel_->show();
        topLevel_->setAttribute(Qt::WA_ShowWithoutActivating, false);
    }
    topLevel_->raise();
    if (appears) {
        layOut();
        showBoxes(true);
    }
}

bool LinuxWindow::isMiniaturized() const {
    return topLevel_->isMinimized();
}

bool LinuxWindow::isKeyWindow() const {
    return topLevel_->isActiveWindow();
}

Handle LinuxWindow::beginSheet(const Alert& alert, std::function<void(std::size_t button)> answer) {
    endSheet();
    const unsigned long number = ++sheetNumber_;
    sheet_ = std::make_unique<AlertDialog>(alert, [this, number, answer = std::move(answer)](std::size_t button) {
        if (number == sheetNumber_) {
            endSheet();
        }
        if (answer) {
            answer(button);
        }
    });
    sheet_->presentOn(*topLevel_);
    windows_.activate(*sheet_);
    return Handle([this, number, alive = std::weak_ptr<int>(alive_)] {
        if (!alive.expired() && number == sheetNumber_) {
            endSheet();
        }
    });
}

void LinuxWindow::endSheet() {
    // It may be in the middle of its own event.
    if (AlertDialog* ended = sheet_.release()) {
        ended->hide();
        ended->setParent(nullptr);
        ended->deleteLater();
    }
}

RealizedView* LinuxWindow::find(const std::string& identifier) const {
    RealizedView* found = nullptr;
    visit(root_, [&](RealizedView& view) {
        if (!found && view.identifier() == identifier) {
            found = &view;
        }
    });
    return found;
}

double LinuxWindow::scrollOffset(const std::string& identifier) const {
    const auto* scroll = dynamic_cast<ScrollWidget*>(find(identifier));
    return scroll ? scroll->offset() : 0;
}

void LinuxWindow::setScrollOffset(const std::string& identifier, double offset) {
    if (auto* scroll = dynamic_cast<ScrollWidget*>(find(identifier))) {
        scroll->setOffset(offset);
    }
}

void LinuxWindow::reveal(const std::string& stackIdentifier, const Reveal& reveal) {
    if (auto* stack = dynamic_cast<StackWidget*>(find(stackIdentifier))) {
        stack->reveal(reveal);
    }
}

void LinuxWindow::usePalette() {
    if (spec_.dark) {
        topLevel_->setPalette(theme().palette());
    }
}

void LinuxWindow::themeChanged() {
    usePalette();
    visit(root_, [](RealizedView& view) { view.themeChanged(); });
    topLevel_->update();
}

QWidget& LinuxWindow::topLevel() const {
    return *topLevel_;
}

LayerTicker& LinuxWindow::ticker() const {
    return windows_.ticker();
}

const Pictures& LinuxWindow::pictures() const {
    return windows_.pictures();
}

const Theme& LinuxWindow::theme() const {
    return spec_.dark ? windows_.darkTheme() : windows_.appearance().theme();
}

QWidget& LinuxWindow::canvas() {
    return *topLevel_;
}

} // namespace rb
