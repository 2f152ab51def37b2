#include "desktops/linux/BoxWidget.h"

#include "desktops/linux/KeyCodes.h"
#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/LayerSurface.h"
#include "desktops/linux/Theme.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace rb {

namespace {

// Called by copy: the callback may render the content anew, which replaces the original.
template <typename Callback, typename... Arguments>
void call(Callback callback, const Arguments&... arguments) {
    if (callback) {
        callback(arguments...);
    }
}

bool isModifierKey(int key) {
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_Mode_switch:
    case Qt::Key_Multi_key:
        return true;
    default:
        return false;
    }
}

// What the key types without its modifiers but Shift: Qt names keys by their plain character.
std::string charactersOf(const QKeyEvent& event) {
    const int key = event.key();
    if (key <= Qt::Key_Space || key >= Qt::Key_Escape) {
        return {};
    }
    QString text(QChar(static_cast<char16_t>(key)));
    if (!event.modifiers().testFlag(Qt::ShiftModifier)) {
        text = text.toLower();
    }
    return text.toStdString();
}

} // namespace

BoxWidget::BoxWidget(QWidget& parent, ContentSurroundings& surroundings)
    : QWidget(&parent)
    , surroundings_(surroundings) {
    // Keys come as they are pressed, not through an input method.
    setAttribute(Qt::WA_InputMethodEnabled, false);
}

BoxWidget::~BoxWidget() = default;

bool BoxWidget::show(ViewContent& content) {
    auto* box = std::get_if<BoxView>(&content);
    if (!box) {
        return false;
    }
    std::vector<View> wanted = std::exchange(box->child, {});
    const bool otherLayer = box_.layer != box->layer;
    box_ = std::move(*box);
    if (wanted.empty()) {
        if (child_) {
            discard(*std::exchange(child_, nullptr));
        }
    } else {
        child_ = &realize(child_, std::move(wanted.front()), *this, surroundings_);
    }
    if (otherLayer) {
        surface_.reset();
    }
    setFocusPolicy(box_.acceptsFirstResponder ? Qt::TabFocus : Qt::NoFocus);
    if (!box_.acceptsFirstResponder) {
        surroundings_.boxGone(*this);
    }
    return true;
}

QSizeF BoxWidget::contentSize(double availableWidth) const {
    const double aside = box_.insets.left + box_.insets.right;
    const QSizeF child = child_ ? child_->fittingSize(std::max(availableWidth - aside, 0.0)) : QSizeF(0, 0);
    return {child.width() + aside, child.height() + box_.insets.top + box_.insets.bottom};
}

void BoxWidget::layOut() {
    const QRectF inner =
        QRectF(rect()).adjusted(box_.insets.left, box_.insets.top, -box_.insets.right, -box_.insets.bottom);
    if (child_) {
        QRectF place = inner;
        if (box_.placement == BoxContentPlacement::Center) {
            QSizeF size = child_->fittingSize(inner.width());
            size.setWidth(std::min(size.width(), inner.width()));
            place = QRectF(QPointF(0, 0), size);
            place.moveCenter(inner.center());
        }
        child_->place(place);
    }
    showLayer();
}

std::vector<RealizedView*> BoxWidget::children() const {
    return child_ ? std::vector{child_} : std::vector<RealizedView*>{};
}

void BoxWidget::setOnScreen(bool onScreen) {
    onScreen_ = onScreen;
    if (onScreen_) {
        showLayer();
        return;
    }
    surface_.reset();
    entered_ = false;
}

QRectF BoxWidget::areaOnCanvas() const {
    return QRectF(mapTo(&surroundings_.canvas(), QPoint(0, 0)), QSizeF(size()));
}

void BoxWidget::showLayer() {
    if (!onScreen_ || !box_.layer) {
        return;
    }
    const Rect bounds{0, 0, static_cast<double>(width()), static_cast<double>(height())};
    if (const LayerModel& model = box_.layer->model(); model.bounds != bounds || model.frame() != bounds) {
        LayerModel& changed = box_.layer->change();
        changed.setFrame(bounds);
        changed.bounds = bounds;
    }
    const bool isNew = !surface_;
    if (isNew) {
        surface_ = std::make_unique<LayerSurface>(surroundings_.ticker(), box_.layer, [this](const QRegion& changed) {
            surroundings_.canvas().update(changed);
        });
    }
    surface_->setTransform(flipped(areaOnCanvas()));
    if (isNew) {
        surface_->show();
        call(box_.updateLayer);
    }
}

void BoxWidget::setLayerOpacity(double opacity) {
    layerOpacity_ = opacity;
    surroundings_.canvas().update();
}

void BoxWidget::paintLayer(QPainter& painter, const QRectF& area) {
    painter.setOpacity(layerOpacity_);
    if (box_.material == Material::Sidebar) {
        painter.fillRect(areaOnCanvas(), surroundings_.theme().sidebar);
    }
    if (surface_) {
        surface_->paint(painter, area);
    }
}

void BoxWidget::leave() {
    surroundings_.boxGone(*this);
    setOnScreen(false);
    box_ = {};
}

void BoxWidget::themeChanged() {
    if (onScreen_) {
        call(box_.updateLayer);
    }
}

void BoxWidget::becameFirstResponder() {
    call(box_.becameFirstResponder);
}

void BoxWidget::resignedFirstResponder() {
    call(box_.resignedFirstResponder);
}

bool BoxWidget::takesKeys() const {
    return box_.keyDown != nullptr && surroundings_.isFirstResponder(*this);
}

bool BoxWidget::event(QEvent* event) {
    if (takesKeys()) {
        if (event->type() == QEvent::ShortcutOverride) {
            event->accept();
            return true;
        }
        if (event->type() == QEvent::KeyPress) {
            // Tab included, which would move the focus.
            keyPressEvent(static_cast<QKeyEvent*>(event));
            return true;
        }
    }
    return QWidget::event(event);
}

void BoxWidget::keyPressEvent(QKeyEvent* event) {
    if (!takesKeys()) {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
    if (isModifierKey(event->key())) {
        return;
    }
    call(box_.keyDown, KeyEvent{.keyCode = macKeyCode(event->nativeVirtualKey(), event->nativeScanCode()),
                                .modifierFlags = modifierFlagsOfXState(event->nativeModifiers()),
                                .charactersIgnoringModifiers = charactersOf(*event)});
}

void BoxWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !box_.mouseDown) {
        QWidget::mousePressEvent(event);
        return;
    }
    const auto mouseDown = box_.mouseDown;
    if (mouseDown() && box_.acceptsFirstResponder) {
        surroundings_.makeFirstResponder(*this);
    }
}

void BoxWidget::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        surroundings_.makeFirstResponder(*this);
    }
}

void BoxWidget::enterEvent(QEnterEvent* event) {
    QWidget::enterEvent(event);
    if (!entered_ && window()->isActiveWindow()) {
        entered_ = true;
        call(box_.mouseEntered);
    }
}

void BoxWidget::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    if (std::exchange(entered_, false)) {
        call(box_.mouseExited);
    }
}

} // namespace rb
