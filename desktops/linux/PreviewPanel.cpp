#include "desktops/linux/PreviewPanel.h"

#include "desktops/linux/Application.h"
#include "desktops/linux/KeyCodes.h"
#include "desktops/linux/KeyEquivalent.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/Windows.h"
#include "platform/RunLoop.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>
#include <QWidget>

#include <utility>

namespace rb {

class LinuxPreviewPanel::Window final : public QWidget {
public:
    Window(LinuxPreviewPanel& panel, PreviewContext context)
        : panel_(panel)
        , context_(context)
        , layout_(new QVBoxLayout(this)) {
        layout_->setContentsMargins(0, 0, 0, 0);
        setAttribute(Qt::WA_QuitOnClose, false);
        setFocusPolicy(Qt::StrongFocus);
        setMinimumSize(360, 240);
    }

    void showFile(const QString& path) {
        delete std::exchange(content_, nullptr);
        setWindowTitle(QFileInfo(path).fileName());
        content_ = makePreview(path, context_);
        // The keyboard stays with the window.
        content_->setFocusPolicy(Qt::NoFocus);
        for (QWidget* child : content_->findChildren<QWidget*>()) {
            child->setFocusPolicy(Qt::NoFocus);
        }
        layout_->addWidget(content_);
        if (!isVisible()) {
            place();
        }
    }

protected:
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        panel_.close();
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Escape) {
            panel_.close();
            return;
        }
        const KeyEvent key{.keyCode = macKeyCode(event->nativeVirtualKey(), event->nativeScanCode()),
                           .modifierFlags = modifierFlags(event->modifiers())};
        if (!panel_.delegate_ || !panel_.delegate_->handleEvent(key)) {
            QWidget::keyPressEvent(event);
        }
    }

private:
    // In the lower part of the screen with the pointer, so that what hangs at its top stays in sight; as large as the
    // content would like.
    void place() {
        const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
        QRect area = (screen ? screen : QGuiApplication::primaryScreen())->availableGeometry();
        area.setTop(area.top() + area.height() / 4);
        const QSize most = area.size() * 9 / 10;
        const QSize size = content_->sizeHint().boundedTo(most).expandedTo(minimumSize());
        setGeometry(QRect(area.center() - QPoint(size.width(), size.height()) / 2, size));
    }

    LinuxPreviewPanel& panel_;
    PreviewContext context_;
    QVBoxLayout* layout_;
    QWidget* content_ = nullptr;
};

LinuxPreviewPanel::LinuxPreviewPanel(LinuxApplication& application, LinuxWindows& windows, RunLoop& loop,
                                     Thumbnails& thumbnails)
    : application_(application)
    , windows_(windows)
    , loop_(loop)
    , thumbnails_(thumbnails) {}

LinuxPreviewPanel::~LinuxPreviewPanel() = default;

bool LinuxPreviewPanel::isVisible() const {
    return window_ && window_->isVisible();
}

void LinuxPreviewPanel::updateController() {
    ApplicationDelegate* controller = application_.delegate();
    if (!controlled_ && controller && controller->acceptsPreviewPanelControl()) {
        controlled_ = true;
        controller->beginPreviewPanelControl(*this);
    }
}

void LinuxPreviewPanel::reloadData() {
    index_ = 0;
}

void LinuxPreviewPanel::setCurrentPreviewItemIndex(std::size_t index) {
    index_ = index;
    if (isVisible()) {
        show();
    }
}

void LinuxPreviewPanel::makeKeyAndOrderFront() {
    if (!window_) {
        window_ = std::make_unique<Window>(*this, PreviewContext{loop_, thumbnails_});
        setWindowClass(*window_, "rookbay-preview");
    }
    show();
    window_->show();
    window_->raise();
    windows_.activate(*window_);
}

void LinuxPreviewPanel::show() {
    const auto path = delegate_ ? delegate_->previewItemAtIndex(index_) : std::nullopt;
    if (path) {
        window_->showFile(QString::fromStdString(*path));
    }
}

void LinuxPreviewPanel::close() {
    if (!window_) {
        return;
    }
    window_->hide();
    // The window is in the middle of its own event.
    loop_.post([gone = std::shared_ptr<Window>(std::move(window_))] {});
    if (ApplicationDelegate* controller = application_.delegate(); std::exchange(controlled_, false) && controller) {
        controller->endPreviewPanelControl(*this);
    }
}

} // namespace rb
