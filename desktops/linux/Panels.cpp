#include "desktops/linux/Panels.h"

#include "desktops/linux/KeyEquivalent.h"
#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/MenuWidget.h"
#include "desktops/linux/PanelDrops.h"
#include "desktops/linux/PanelPresses.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/ScreenSpace.h"
#include "desktops/linux/WindowShape.h"

#include <QDropEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QWidget>
#include <algorithm>

namespace rb {

namespace {

// From here on a window lies above other programs' windows (the system's floating level).
constexpr int floatingLevel = 3;

// The shadow of a window, in points.
constexpr int shadowMargin = 40;
constexpr double shadowRadius = 11;
constexpr double shadowDrop = 6;
constexpr double shadowOpacity = 0.35;

QRect toGlobal(const Rect& frame) {
    const QRectF rect = ScreenSpace::current().toQt(frame);
    return {rect.topLeft().toPoint(), rect.size().toSize()};
}

} // namespace

class LinuxPanel::Window final : public QWidget {
public:
    Window(LinuxPanel& panel, Qt::WindowFlags flags)
        : QWidget(nullptr, flags)
        , panel_(panel) {
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_QuitOnClose, false);
        setFocusPolicy(Qt::NoFocus);
        setAcceptDrops(panel.spec_.acceptsFiles);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override {
        PanelInput* input = panel_.input_;
        if (input && event->button() == Qt::LeftButton) {
            presses_.pressed(*event);
            input->mouseDown(eventFor(*event));
        } else if (input && event->button() == Qt::RightButton) {
            input->rightMouseDown(eventFor(*event));
        }
    }
    // Qt's own second press; presses are counted here.
    void mouseDoubleClickEvent(QMouseEvent* event) override { mousePressEvent(event); }
    void mouseMoveEvent(QMouseEvent* event) override {
        if (panel_.input_ && event->buttons().testFlag(Qt::LeftButton)) {
            panel_.input_->mouseDragged(eventFor(*event));
        }
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (panel_.input_ && event->button() == Qt::LeftButton) {
            panel_.input_->mouseUp(eventFor(*event));
        }
    }
    void dragEnterEvent(QDragEnterEvent* event) override { dragMoveEvent(event); }
    void dragMoveEvent(QDragMoveEvent* event) override {
        // Taken in any case: where a drag that was refused on entering goes, Qt doesn't tell.
        event->accept();
        answerDrag(*event, panel_.input_ ? panel_.input_->dragUpdated(infoFor(*event)) : std::uint32_t{0});
        if (event->type() == QEvent::DragEnter) {
            event->accept();
        }
    }
    void dragLeaveEvent(QDragLeaveEvent* /*event*/) override {
        if (panel_.input_) {
            panel_.input_->dragExited();
        }
    }
    void dropEvent(QDropEvent* event) override {
        if (!panel_.input_) {
            return;
        }
        const LinuxDraggingInfo info = infoFor(*event);
        const std::uint32_t operation = panel_.input_->dragUpdated(info);
        if (operation == NoDragOperation || !panel_.input_->performDrop(info)) {
            panel_.input_->dragExited();
            event->ignore();
            return;
        }
        answerDrop(*event, operation);
    }
    void paintEvent(QPaintEvent* event) override { panel_.paint(event->region()); }

private:
    PanelMouseEvent eventFor(const QMouseEvent& event) const {
        return {.location = panel_.toLayer(event.position()),
                .clickCount = presses_.clickCount(),
                .modifierFlags = modifierFlags(event.modifiers())};
    }
    LinuxDraggingInfo infoFor(const QDropEvent& event) const {
        return {event, panel_.toLayer(event.position()), panel_.panels_.dragSource_.ownOperations()};
    }

    LinuxPanel& panel_;
    PanelPresses presses_;
};

LinuxPanel::LinuxPanel(LinuxPanels& panels, const PanelSpec& spec)
    : panels_(panels)
    , spec_(spec)
    , surface_(panels.ticker_, Layer::create(), [this](const QRegion& region) { repaint(region); }) {
    layOut();
}

LinuxPanel::~LinuxPanel() {
    orderOut();
}

void LinuxPanel::layOut() {
    surface_.root()->change().setFrame({0, 0, spec_.frame.width, spec_.frame.height});
    const int margin = spec_.hasShadow ? shadowMargin : 0;
    surface_.setTransform(
        flipped({static_cast<double>(margin), static_cast<double>(margin), spec_.frame.width, spec_.frame.height}));
}

void LinuxPanel::setFrame(const Rect& frame) {
    const bool resized = frame.size() != spec_.frame.size();
    spec_.frame = frame;
    if (resized) {
        layOut();
    }
    if (window_) {
        place();
    }
}

void LinuxPanel::place() {
    const int margin = spec_.hasShadow ? shadowMargin : 0;
    const QRect frame = toGlobal(spec_.frame);
    window_->setGeometry(frame.adjusted(-margin, -margin, margin, margin));
    applyInputRegion();
}

// The margin is not the panel: what is clicked there lies beneath.
void LinuxPanel::applyInputRegion() {
    const int margin = spec_.hasShadow ? shadowMargin : 0;
    const QRect whole({margin, margin}, toGlobal(spec_.frame).size());
    QRegion region;
    if (!spec_.ignoresMouseEvents) {
        region = whole;
    }
    for (const Rect& area : mouseAreas_) {
        const QRectF part(fromLayer({area.x, area.maxY()}), QSizeF(area.width, area.height));
        region |= part.toAlignedRect() & whole;
    }
    setInputRegion(*window_, region);
}

bool LinuxPanel::setMouseAreas(const std::vector<Rect>& areas) {
    if (areas != mouseAreas_) {
        mouseAreas_ = areas;
        if (window_) {
            applyInputRegion();
        }
    }
    return true;
}

void LinuxPanel::setIgnoresMouseEvents(bool ignores) {
    if (ignores != spec_.ignoresMouseEvents) {
        spec_.ignoresMouseEvents = ignores;
        if (window_) {
            applyInputRegion();
        }
    }
}

Point LinuxPanel::toLayer(QPointF place) const {
    const double margin = spec_.hasShadow ? shadowMargin : 0;
    return {place.x() - margin, spec_.frame.height - (place.y() - margin)};
}

QPointF LinuxPanel::fromLayer(Point location) const {
    const double margin = spec_.hasShadow ? shadowMargin : 0;
    return {location.x + margin, spec_.frame.height - location.y + margin};
}

void LinuxPanel::beginDrag(const FileDrag& drag) {
    const QPoint pointer = window_->mapFromGlobal(QCursor::pos());
    const QPointF corner = fromLayer({drag.frame.x, drag.frame.maxY()});
    const QPoint hotSpot = pointer - corner.toPoint();
    const QRect picture(0, 0, qRound(drag.frame.width), qRound(drag.frame.height));
    panels_.dragSource_.begin(*window_, drag, picture.contains(hotSpot) ? hotSpot : picture.center());
}

void LinuxPanel::showContextMenu(const std::shared_ptr<Menu>& menu, Point location, std::function<void()> closed) {
    contextMenu_ = std::make_unique<MenuWidget>(menu, panels_.pictures_);
    QObject::connect(contextMenu_.get(), &QMenu::aboutToHide, contextMenu_.get(),
                     [closed = std::move(closed)] { closed(); });
    const QPoint place = window_->mapToGlobal(fromLayer(location).toPoint());
    contextMenu_->openBeside({place, QSize(1, 1)});
}

void LinuxPanel::createWindow() {
    Qt::WindowFlags flags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus;
    if (spec_.level >= floatingLevel) {
        // Managed windows were covered by full-screen ones; these stay in front on every desktop.
        flags |= Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint;
    }
    window_ = std::make_unique<Window>(*this, flags);
    setWindowClass(*window_, "rookbay-panel");
    setCardinals(*window_, "_COMPTON_SHADOW", {0}); // a compositor would draw one around the whole strip
    if ((spec_.collectionBehavior & CanJoinAllSpaces) != 0) {
        setCardinals(*window_, "_NET_WM_DESKTOP", {0xFFFFFFFFU});
    }
}

void LinuxPanel::orderFrontRegardless() {
    if (!window_) {
        createWindow();
    }
    if (!surface_.isShown()) {
        translucent_ = panels_.compositor_.isRunning();
        place();
        surface_.show();
        window_->show();
    }
    panels_.bringToFront(*this);
}

void LinuxPanel::orderOut() {
    std::erase(panels_.panels_, this);
    surface_.hide();
    opaque_ = {};
    if (window_) {
        window_->hide();
    }
}

double LinuxPanel::backingScaleFactor() const {
    const QScreen* screen = QGuiApplication::screenAt(toGlobal(spec_.frame).center());
    if (!screen) {
        screen = QGuiApplication::primaryScreen();
    }
    return screen ? screen->devicePixelRatio() : 1;
}

void LinuxPanel::repaint(const QRegion& region) {
    // A shadow moves with what throws it.
    window_->repaint(spec_.hasShadow ? QRegion(window_->rect()) : region);
}

void LinuxPanel::paint(const QRegion& region) {
    if (!translucent_) {
        paintShaped(region);
        return;
    }
    QPainter painter(window_.get());
    paintContent(painter, region);
}

void LinuxPanel::paintContent(QPainter& painter, const QRegion& region) {
    QRegion inside = region;
    if (spec_.hasShadow) {
        if (translucent_) {
            paintWindowShadow(painter);
        }
        const QRectF frame(shadowMargin, shadowMargin, spec_.frame.width, spec_.frame.height);
        painter.setClipRect(frame, Qt::IntersectClip);
        inside &= frame.toAlignedRect();
    }
    surface_.paintRegion(painter, inside);
}

void LinuxPanel::paintWindowShadow(QPainter& painter) {
    const ShownModel root(*surface_.root(), surface_.frameTime());
    if (!root->backgroundColor || root->opacity <= 0) {
        return;
    }
    QPainterPath shape = transformOf(*root, surface_.transform()).map(outlineOf(*root));
    const QRectF frame(shadowMargin, shadowMargin, spec_.frame.width, spec_.frame.height);
    if (!frame.contains(shape.boundingRect())) {
        QPainterPath edges;
        edges.addRect(frame);
        shape &= edges;
    }
    if (!shape.isEmpty()) {
        panels_.ticker_.painter().paintShadow(painter, shape, shadowRadius, {0, shadowDrop},
                                              shadowOpacity * root->opacity * root->backgroundColor->alpha);
    }
}

// Without a compositor the server ignores how transparent a pixel is: those that are mostly there are drawn in
// their full colour, the window is cut around them.
void LinuxPanel::paintShaped(const QRegion& region) {
    const double scale = window_->devicePixelRatioF();
    const QSize pixels = (QSizeF(window_->size()) * scale).toSize();
    if (opaque_.size() != pixels) {
        opaque_ = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
        opaque_.fill(Qt::transparent);
    }
    opaque_.setDevicePixelRatio(scale);
    const QRectF area = region.boundingRect();
    QPainter content(&opaque_);
    content.setClipRegion(region);
    content.setCompositionMode(QPainter::CompositionMode_Source);
    content.fillRect(area, Qt::transparent);
    content.setCompositionMode(QPainter::CompositionMode_SourceOver);
    paintContent(content, region);
    content.end();
    makeOpaque(opaque_, QRectF(area.topLeft() * scale, area.size() * scale).toAlignedRect());
    setShape(*window_, opaque_);
    QPainter painter(window_.get());
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPointF(), opaque_);
}

void LinuxPanel::compositorChanged() {
    translucent_ = panels_.compositor_.isRunning();
    if (translucent_) {
        opaque_ = {};
        removeShape(*window_);
    }
    window_->update();
}

LinuxPanels::LinuxPanels(LayerTicker& ticker, XConnection* connection, const Pictures& pictures)
    : ticker_(ticker)
    , pictures_(pictures)
    , dragSource_(ticker.loop())
    , compositor_(connection) {
    compositor_.setListener([this] {
        for (LinuxPanel* panel : panels_) {
            panel->compositorChanged();
        }
    });
}

LinuxPanels::~LinuxPanels() = default;

std::unique_ptr<Panel> LinuxPanels::createPanel(const PanelSpec& spec) {
    return std::make_unique<LinuxPanel>(*this, spec);
}

void LinuxPanels::bringToFront(LinuxPanel& panel) {
    std::erase(panels_, &panel);
    const auto above = std::find_if(panels_.begin(), panels_.end(), [&panel](const LinuxPanel* other) {
        return other->spec_.level > panel.spec_.level;
    });
    for (auto raised = panels_.insert(above, &panel); raised != panels_.end(); ++raised) {
        (*raised)->window_->raise();
    }
}

} // namespace rb
