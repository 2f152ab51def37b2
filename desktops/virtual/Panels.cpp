#include "desktops/virtual/Panels.h"

#include "desktops/virtual/Contract.h"

#include <algorithm>

namespace rb {

VirtualPanel::VirtualPanel(VirtualPanels& panels, const PanelSpec& spec)
    : panels_(panels)
    , spec_(spec) {
    layOut();
}

VirtualPanel::~VirtualPanel() {
    orderOut();
}

void VirtualPanel::layOut() {
    LayerModel& model = root_->change();
    model.setFrame({0, 0, spec_.frame.width, spec_.frame.height});
}

void VirtualPanel::setFrame(const Rect& frame) {
    panels_.loop_.requireMainThread("Panel::setFrame");
    const bool resized = frame.size() != spec_.frame.size();
    spec_.frame = frame;
    if (resized) {
        layOut();
    }
}

void VirtualPanel::orderFrontRegardless() {
    panels_.loop_.requireMainThread("Panel::orderFrontRegardless");
    std::erase(panels_.ordered_, this);
    panels_.ordered_.push_back(this);
    panels_.layers_.show(root_);
}

void VirtualPanel::orderOut() {
    panels_.loop_.requireMainThread("Panel::orderOut");
    std::erase(panels_.ordered_, this);
    panels_.layers_.hide(root_);
}

bool VirtualPanel::isVisible() const {
    return std::find(panels_.ordered_.begin(), panels_.ordered_.end(), this) != panels_.ordered_.end();
}

void VirtualPanel::setIgnoresMouseEvents(bool ignores) {
    panels_.loop_.requireMainThread("Panel::setIgnoresMouseEvents");
    spec_.ignoresMouseEvents = ignores;
}

bool VirtualPanel::setMouseAreas(const std::vector<Rect>& areas) {
    panels_.loop_.requireMainThread("Panel::setMouseAreas");
    if (panels_.mouseAreas_) {
        areas_ = areas;
    }
    return panels_.mouseAreas_;
}

bool VirtualPanel::takesMouseAt(Point location) const {
    const Point inside{location.x - spec_.frame.x, location.y - spec_.frame.y};
    return spec_.frame.containsPointer(location) &&
           (!spec_.ignoresMouseEvents ||
            std::any_of(areas_.begin(), areas_.end(), [&](const Rect& area) { return area.contains(inside); }));
}

void VirtualPanel::beginDrag(const FileDrag& drag) {
    panels_.loop_.requireMainThread("Panel::beginDrag");
    if (panels_.outgoing_) {
        contractViolation("a file is being dragged already");
    }
    panels_.outgoing_ = drag;
}

void VirtualPanel::showContextMenu(const std::shared_ptr<Menu>& menu, Point /*location*/,
                                   std::function<void()> closed) {
    panels_.loop_.requireMainThread("Panel::showContextMenu");
    panels_.contextMenu_ = menu;
    panels_.menuClosed_ = std::move(closed);
}

double VirtualPanel::backingScaleFactor() const {
    const auto screen = RBScreenAt(panels_.screens_, {spec_.frame.midX(), spec_.frame.midY()});
    return screen ? screen->backingScaleFactor : 1;
}

std::unique_ptr<Panel> VirtualPanels::createPanel(const PanelSpec& spec) {
    loop_.requireMainThread("Panels::createPanel");
    return std::make_unique<VirtualPanel>(*this, spec);
}

std::vector<VirtualPanel*> VirtualPanels::visible() const {
    std::vector<VirtualPanel*> panels = ordered_;
    std::stable_sort(panels.begin(), panels.end(),
                     [](const VirtualPanel* a, const VirtualPanel* b) { return a->spec().level < b->spec().level; });
    return panels;
}

VirtualPanel* VirtualPanels::under(Point location) const {
    const auto shown = visible();
    const auto found = std::find_if(shown.rbegin(), shown.rend(),
                                    [&](const VirtualPanel* panel) { return panel->takesMouseAt(location); });
    return found == shown.rend() ? nullptr : *found;
}

void VirtualPanels::closeContextMenu() {
    contextMenu_.reset();
    if (const auto closed = std::exchange(menuClosed_, nullptr)) {
        closed();
    }
}

} // namespace rb
