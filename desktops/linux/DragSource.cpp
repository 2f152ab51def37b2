#include "desktops/linux/DragSource.h"

#include "desktops/linux/Bitmap.h"
#include "desktops/linux/XConnection.h"
#include "platform/Files.h"
#include "platform/RunLoop.h"

#include <QDrag>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QGuiApplication>
#include <QMimeData>
#include <QPainter>
#include <QUrl>
#include <QWidget>

#include <utility>
#include <xcb/xinput.h>

namespace rb {

namespace {

constexpr double watchTime = 60; // seconds; a target may first ask its user what to do
constexpr std::uint32_t escapeKeycode = 9;
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
        std::unique_ptr<XConnection> connection;
        const Handle keys = watchKeys(connection);
        Qt::DropActions actions = actionsFor(drag_->operationsOutside | drag_->operationsInside);
        if (actions.testFlag(Qt::CopyAction) && QGuiApplication::queryKeyboardModifiers() == Qt::ControlModifier) {
            // File managers move whatever may be moved, so a copy is all that is offered. Folder cards have the file
            // under their own name in any case.
            actions = Qt::CopyAction;
        }
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

Handle DragSource::watchKeys(std::unique_ptr<XConnection>& connection) {
    connection = XConnection::open();
    if (!connection) {
        return {};
    }
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection->get(), &xcb_input_id);
    const XReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        connection->get(), xcb_input_xi_query_version(connection->get(), 2, 2), nullptr));
    if (!extension || extension->present == 0 || !version) {
        return {};
    }
    Handle handler = connection->onEvent([opcode = extension->major_opcode](const xcb_generic_event_t& event) {
        const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
        if ((event.response_type & 0x7FU) != XCB_GE_GENERIC || generic.extension != opcode ||
            generic.event_type != XCB_INPUT_RAW_KEY_PRESS) {
            return;
        }
        if (reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event).detail == escapeKeycode) {
            QDrag::cancel();
        }
    });
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS};
    xcb_input_xi_select_events(connection->get(), connection->root(), 1, &selection.head);
    xcb_flush(connection->get());
    return handler;
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
