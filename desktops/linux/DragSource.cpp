#include "desktops/linux/DragSource.h"

#include "desktops/linux/Bitmap.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/XConnection.h"
#include "platform/Files.h"
#include "platform/RunLoop.h"

#include <QCursor>
#include <QDrag>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QUrl>
#include <QWidget>
#include <QWindow>

#include <utility>
#include <xcb/xinput.h>

namespace rb {

namespace {

constexpr double watchTime = 60; // seconds; a target may first ask its user what to do
constexpr std::uint32_t escapeKeycode = 9;
constexpr double askAgainDelay = 0.05;
constexpr double pictureOpacity = 0.85;

std::uint32_t operationFor(Qt::DropAction action) {
    switch (action) {
    case Qt::CopyAction:
        return CopyOperation;
    case Qt::MoveAction:
    case Qt::TargetMoveAction:
        return MoveOperation;
    case Qt::LinkAction:
        return LinkOperation;
    default:
        return NoDragOperation;
    }
}

Qt::DropActions actionsFor(std::uint32_t operations) {
    Qt::DropActions actions;
    actions.setFlag(Qt::CopyAction, (operations & CopyOperation) != 0);
    actions.setFlag(Qt::MoveAction, (operations & MoveOperation) != 0);
    actions.setFlag(Qt::LinkAction, (operations & LinkOperation) != 0);
    return actions;
}

// As large as it hangs; a symbol needs no picture, the pointer's own will do.
QPixmap pictureFor(const FileDrag& drag, const QSizeF& size, double ratio) {
    const auto* bitmap = std::get_if<std::shared_ptr<const Bitmap>>(&drag.picture);
    const auto picture = bitmap ? std::dynamic_pointer_cast<const LinuxBitmap>(*bitmap) : nullptr;
    if (!picture) {
        return {};
    }
    QPixmap pixmap((size * ratio).toSize());
    pixmap.fill(Qt::transparent);
    QRectF target(QPointF(), QSizeF(picture->image().size()).scaled(size * ratio, Qt::KeepAspectRatio));
    target.moveCenter(QRectF(QPointF(), size * ratio).center());
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(pictureOpacity);
    painter.drawImage(target, picture->halvedTo(target.size().toSize()));
    painter.end();
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}

} // namespace

// The keyboard during a drag. Programs hear of keys only with the focus, which a panel never has: Escape cancels, and
// with Control held the file is to be copied.
class DragSource::Keys {
public:
    Keys(RunLoop& loop, QPointer<QWidget> window, bool mayCopy)
        : loop_(loop)
        , window_(std::move(window))
        , mayCopy_(mayCopy)
        , connection_(XConnection::open()) {
        if (!connection_) {
            return;
        }
        xcb_connection_t* x = connection_->get();
        const xcb_query_extension_reply_t* extension = xcb_get_extension_data(x, &xcb_input_id);
        const XReply<xcb_input_xi_query_version_reply_t> version(
            xcb_input_xi_query_version_reply(x, xcb_input_xi_query_version(x, 2, 2), nullptr));
        if (!extension || extension->present == 0 || !version) {
            return;
        }
        events_ = connection_->onEvent(
            [this, opcode = extension->major_opcode](const xcb_generic_event_t& event) { handle(event, opcode); });
        struct {
            xcb_input_event_mask_t head;
            std::uint32_t mask;
        } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                    XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE};
        xcb_input_xi_select_events(x, connection_->root(), 1, &selection.head);
        xcb_flush(x);
        // A key that is held already.
        begun_ = loop.after(0, [this] { followModifiers(); });
    }

private:
    void handle(const xcb_generic_event_t& event, std::uint8_t opcode) {
        if ((event.response_type & 0x7FU) == XCB_PROPERTY_NOTIFY) {
            offerChanged(reinterpret_cast<const xcb_property_notify_event_t&>(event));
            return;
        }
        const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
        if ((event.response_type & 0x7FU) != XCB_GE_GENERIC || generic.extension != opcode) {
            return;
        }
        if (generic.event_type == XCB_INPUT_RAW_KEY_PRESS &&
            reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event).detail == escapeKeycode) {
            QDrag::cancel();
            return;
        }
        followModifiers();
    }

    void followModifiers() {
        xcb_connection_t* x = connection_->get();
        const XReply<xcb_query_pointer_reply_t> pointer(
            xcb_query_pointer_reply(x, xcb_query_pointer(x, connection_->root()), nullptr));
        connection_->deliverQueuedEvents();
        const bool copies = mayCopy_ && pointer && (pointer->mask & XCB_MOD_MASK_CONTROL) != 0;
        if (copies == copies_ || !window_) {
            return;
        }
        copies_ = copies;
        moveAgain();
        if (copies) {
            // File managers move whatever may be moved, so a copy is all that is offered now. Qt has just written the
            // list of what is offered, and does so again when the key is released.
            offerCopyAlone();
            moveAgain();
        }
    }

    // As if the pointer had moved: the target is asked once more, with the present keys.
    void moveAgain() const {
        QWindow* window = window_->windowHandle();
        if (!window) {
            return;
        }
        const QPointF global = QCursor::pos();
        QMouseEvent event(QEvent::MouseMove, window->mapFromGlobal(global), global, Qt::NoButton, Qt::LeftButton,
                          QGuiApplication::queryKeyboardModifiers());
        QCoreApplication::sendEvent(window, &event);
        flushQt();
    }

    // Qt writes the whole list again as the drag goes from window to window.
    void offerChanged(const xcb_property_notify_event_t& event) {
        const xcb_atom_t list = connection_->atom("XdndActionList");
        if (!copies_ || event.atom != list ||
            connection_->cardinals(event.window, list) ==
                std::vector<std::uint32_t>{connection_->atom("XdndActionCopy")}) {
            return;
        }
        offerCopyAlone();
        again_ = loop_.after(askAgainDelay, [this] { moveAgain(); });
    }

    void offerCopyAlone() {
        xcb_connection_t* x = connection_->get();
        const XReply<xcb_get_selection_owner_reply_t> owner(
            xcb_get_selection_owner_reply(x, xcb_get_selection_owner(x, connection_->atom("XdndSelection")), nullptr));
        // Qt's requests come before ours once the server has answered on Qt's own connection.
        if (xcb_connection_t* qt = qtConnection()) {
            const XReply<xcb_get_input_focus_reply_t> done(
                xcb_get_input_focus_reply(qt, xcb_get_input_focus(qt), nullptr));
        }
        if (owner && owner->owner != XCB_WINDOW_NONE) {
            const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
            xcb_change_window_attributes(x, owner->owner, XCB_CW_EVENT_MASK, &mask);
            const xcb_atom_t copy = connection_->atom("XdndActionCopy");
            xcb_change_property(x, XCB_PROP_MODE_REPLACE, owner->owner, connection_->atom("XdndActionList"),
                                XCB_ATOM_ATOM, 32, 1, &copy);
            const XReply<xcb_get_input_focus_reply_t> written(
                xcb_get_input_focus_reply(x, xcb_get_input_focus(x), nullptr));
            connection_->deliverQueuedEvents();
        }
    }

    RunLoop& loop_;
    QPointer<QWidget> window_;
    bool mayCopy_;
    bool copies_ = false;
    std::unique_ptr<XConnection> connection_;
    Handle events_;
    Handle begun_;
    Handle again_;
};

DragSource::DragSource(RunLoop& loop)
    : loop_(loop) {}

DragSource::~DragSource() = default;

void DragSource::begin(QWidget& window, const FileDrag& drag, QPoint hotSpot) {
    if (drag_) {
        return;
    }
    drag_ = std::make_unique<FileDrag>(drag);
    // Not from inside the mouse event: the drag runs an event loop of its own.
    loop_.post(lifetime_.guard([this, window = QPointer<QWidget>(&window), hotSpot] { run(window, hotSpot); }));
}

void DragSource::run(const QPointer<QWidget>& window, QPoint hotSpot) {
    Qt::DropAction done = Qt::IgnoreAction;
    if (window) {
        auto* drag = new QDrag(window);
        auto* data = new QMimeData;
        data->setUrls({QUrl::fromLocalFile(QString::fromStdString(drag_->path))});
        drag->setMimeData(data);
        const QSizeF size(drag_->frame.width, drag_->frame.height);
        drag->setPixmap(pictureFor(*drag_, size, window->devicePixelRatioF()));
        drag->setHotSpot(hotSpot);
        const Qt::DropActions actions = actionsFor(drag_->operationsOutside | drag_->operationsInside);
        const Keys keys(loop_, window, actions.testFlag(Qt::CopyAction));
        done = drag->exec(actions, actions.testFlag(Qt::MoveAction) ? Qt::MoveAction : Qt::CopyAction);
    }
    const std::unique_ptr<FileDrag> ended = std::move(drag_);
    const std::uint32_t operation = operationFor(done);
    if (operation != NoDragOperation) {
        watch(*ended);
    }
    if (ended->ended) {
        ended->ended(operation);
    }
}

void DragSource::watch(const FileDrag& drag) {
    if (!drag.fileLeft) {
        return;
    }
    watcher_ = std::make_unique<QFileSystemWatcher>();
    watcher_->addPath(QString::fromStdString(deletingLastPathComponent(drag.path)));
    QObject::connect(watcher_.get(), &QFileSystemWatcher::directoryChanged, watcher_.get(),
                     [this, path = QString::fromStdString(drag.path), left = drag.fileLeft] {
                         if (!QFileInfo::exists(path)) {
                             const auto told = left;
                             watcher_->disconnect();
                             patience_ = loop_.after(0, [this] { watcher_.reset(); });
                             told();
                         }
                     });
    patience_ = loop_.after(watchTime, [this] { watcher_.reset(); });
}

} // namespace rb
