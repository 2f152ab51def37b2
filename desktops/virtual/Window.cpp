#include "desktops/virtual/Window.h"

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/Windows.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr double titleBarHeight = 28;
constexpr std::uint16_t returnKeyCode = 36;

bool showsText(const View& view, const std::string& text) {
    if (const auto* label = std::get_if<LabelView>(&view.content)) {
        return label->text == text;
    }
    const auto* button = std::get_if<ButtonView>(&view.content);
    return button && button->title == text;
}

// Called by copy: the callback may render the content anew, which destroys the original.
template <typename Callback, typename... Arguments>
void call(Callback callback, const Arguments&... arguments) {
    if (callback) {
        callback(arguments...);
    }
}

} // namespace

VirtualWindow::VirtualWindow(VirtualWindows& windows, const WindowSpec& spec)
    : windows_(windows)
    , spec_(spec) {
    windows_.all_.push_back(this);
}

VirtualWindow::~VirtualWindow() {
    for (const auto& layer : shownLayers_) {
        windows_.surroundings_.layers.hide(layer);
    }
    std::erase(windows_.all_, this);
    std::erase(windows_.ordered_, this);
    if (windows_.key_ == this) {
        windows_.key_ = nullptr;
    }
}

void VirtualWindow::setContent(View content) {
    windows_.surroundings_.loop.requireMainThread("Window::setContent");
    const View previous = std::exchange(content_, std::move(content));
    layOutContent();
    std::erase_if(hovered_, [this](const ViewPath& path) { return !boxAt(path); });
    if (firstResponder_) {
        const BoxView* survivor = boxAt(*firstResponder_);
        if (!survivor || !survivor->acceptsFirstResponder) {
            const View* gone = viewAt(previous, *std::exchange(firstResponder_, std::nullopt));
            if (const auto* box = gone ? std::get_if<BoxView>(&gone->content) : nullptr) {
                call(box->resignedFirstResponder);
            }
        }
    }
    showLayers();
    windows_.updateHover();
}

void VirtualWindow::center() {
    if (const auto screen = windows_.surroundings_.screens.main()) {
        origin_ = {screen->visibleFrame.midX() - frame().width / 2, screen->visibleFrame.midY() - frame().height / 2};
        windows_.updateHover();
    }
}

void VirtualWindow::makeKeyAndOrderFront() {
    windows_.surroundings_.loop.requireMainThread("Window::makeKeyAndOrderFront");
    if (!isVisible()) {
        windows_.surroundings_.journal.note("showWindow " + spec_.title);
    }
    std::erase(windows_.ordered_, this);
    windows_.ordered_.push_back(this);
    windows_.key_ = this;
    showLayers();
    windows_.updateHover();
}

void VirtualWindow::orderOut() {
    windows_.surroundings_.loop.requireMainThread("Window::orderOut");
    if (!isVisible()) {
        return;
    }
    windows_.surroundings_.journal.note("hideWindow " + spec_.title);
    setFirstResponder(std::nullopt);
    std::erase(windows_.ordered_, this);
    if (windows_.key_ == this) {
        windows_.key_ = windows_.ordered_.empty() ? nullptr : windows_.ordered_.back();
    }
    showLayers();
    windows_.updateHover();
}

void VirtualWindow::layOutContent() {
    placed_ = layOut(content_, spec_.contentSize, windows_.surroundings_.meter, scrollOffsets_);
}

void VirtualWindow::setFrame(const Rect& frame) {
    windows_.surroundings_.loop.requireMainThread("Window::setFrame");
    origin_ = frame.origin();
    spec_.contentSize = {frame.width, frame.height - titleBarHeight};
    layOutContent();
    showLayers();
    windows_.updateHover();
}

void VirtualWindow::orderFront() {
    windows_.surroundings_.loop.requireMainThread("Window::orderFront");
    std::erase(windows_.ordered_, this);
    windows_.ordered_.push_back(this);
    showLayers();
    windows_.updateHover();
}

bool VirtualWindow::isKeyWindow() const {
    return windows_.keyWindow() == this;
}

Handle VirtualWindow::beginSheet(const Alert& alert, std::function<void(std::size_t button)> answer) {
    windows_.surroundings_.loop.requireMainThread("Window::beginSheet");
    if (sheet_) {
        contractViolation("a second sheet on the window " + spec_.title);
    }
    const unsigned long number = ++nextSheet_;
    sheet_ = Sheet{alert, std::move(answer), number};
    sheets_.push_back(alert);
    return Handle([this, number, alive = std::weak_ptr<int>(alive_)] {
        if (!alive.expired() && sheet_ && sheet_->number == number) {
            sheet_.reset();
        }
    });
}

void VirtualWindow::answerSheet(std::size_t button) {
    if (!sheet_ || button >= std::max<std::size_t>(sheet_->alert.buttons.size(), 1)) {
        throw ImpossibleAct("no sheet with a button number " + std::to_string(button) + " is on the window");
    }
    const auto answer = std::exchange(sheet_, std::nullopt)->answer;
    call(answer, button);
}

double VirtualWindow::scrollOffset(const std::string& identifier) const {
    const auto found = scrollOffsets_.find(identifier);
    return found != scrollOffsets_.end() ? found->second : 0;
}

void VirtualWindow::setScrollOffset(const std::string& identifier, double offset) {
    for (const PlacedView& placed : placed_) {
        const auto* scroll = std::get_if<ScrollView>(&placed.view->content);
        if (scroll && placed.view->identifier == identifier && !scroll->child.empty()) {
            const Size content = fittingSize(scroll->child.front(), placed.frame.width, windows_.surroundings_.meter);
            scrollOffsets_[identifier] = std::clamp(offset, 0.0, std::max(content.height - placed.frame.height, 0.0));
            layOutContent();
            showLayers();
            windows_.updateHover();
            return;
        }
    }
}

void VirtualWindow::reveal(const std::string& stackIdentifier, const Reveal& /*reveal*/) {
    windows_.surroundings_.loop.requireMainThread("Window::reveal");
    reveals_.push_back(stackIdentifier);
}

void VirtualWindow::selectItem(const std::string& popUpIdentifier, std::size_t index) {
    requireReachable("select in " + popUpIdentifier);
    const PlacedView* placed = find(popUpIdentifier);
    const auto* popUp = placed ? std::get_if<PopUpView>(&placed->view->content) : nullptr;
    if (!popUp || !popUp->enabled || index >= popUp->items.size()) {
        throw ImpossibleAct("nothing to select in " + popUpIdentifier);
    }
    call(popUp->selectionChanged, index);
}

void VirtualWindow::clickCheckBox(const std::string& title) {
    requireReachable("click \"" + title + "\"");
    for (const PlacedView& placed : placed_) {
        if (const auto* box = std::get_if<CheckBoxView>(&placed.view->content); box && box->title == title) {
            const bool on = !box->on;
            call(box->action, on);
            return;
        }
    }
    throw ImpossibleAct("the window has no check box \"" + title + "\"");
}

bool VirtualWindow::isVisible() const {
    return std::find(windows_.ordered_.begin(), windows_.ordered_.end(), this) != windows_.ordered_.end();
}

bool VirtualWindow::makeFirstResponder(const std::string& identifier) {
    windows_.surroundings_.loop.requireMainThread("Window::makeFirstResponder");
    for (const PlacedView& placed : placed_) {
        if (placed.view->identifier == identifier) {
            const auto* box = std::get_if<BoxView>(&placed.view->content);
            if (!box || !box->acceptsFirstResponder) {
                return false;
            }
            setFirstResponder(ViewPath(placed.path));
            return true;
        }
    }
    return false;
}

Rect VirtualWindow::frame() const {
    return {origin_.x, origin_.y, spec_.contentSize.width, spec_.contentSize.height + titleBarHeight};
}

Rect VirtualWindow::contentFrame() const {
    return {origin_.x, origin_.y, spec_.contentSize.width, spec_.contentSize.height};
}

const PlacedView* VirtualWindow::find(const std::string& identifierOrText) const {
    for (const PlacedView& placed : placed_) {
        if (placed.view->identifier == identifierOrText || showsText(*placed.view, identifierOrText)) {
            return &placed;
        }
    }
    return nullptr;
}

Rect VirtualWindow::frameOf(const std::string& identifierOrText) const {
    const PlacedView* placed = find(identifierOrText);
    if (!placed) {
        throw ImpossibleAct("the window shows no \"" + identifierOrText + "\"");
    }
    return placed->frame;
}

const BoxView* VirtualWindow::boxAt(const ViewPath& path) const {
    const View* view = viewAt(content_, path);
    return view ? std::get_if<BoxView>(&view->content) : nullptr;
}

std::optional<std::string> VirtualWindow::firstResponder() const {
    const View* view = firstResponder_ ? viewAt(content_, *firstResponder_) : nullptr;
    return view ? std::optional(view->identifier) : std::nullopt;
}

void VirtualWindow::setFirstResponder(std::optional<ViewPath> path) {
    if (path == firstResponder_) {
        return;
    }
    const auto previous = std::exchange(firstResponder_, std::nullopt);
    if (const BoxView* box = previous ? boxAt(*previous) : nullptr) {
        call(box->resignedFirstResponder);
    }
    firstResponder_ = std::move(path);
    if (const BoxView* box = firstResponder_ ? boxAt(*firstResponder_) : nullptr) {
        call(box->becameFirstResponder);
    }
}

void VirtualWindow::requireReachable(const std::string& act) const {
    if (!isVisible()) {
        throw ImpossibleAct(act + ": the window isn't on the screen");
    }
    if (windows_.surroundings_.alerts.current() || sheet_) {
        throw ImpossibleAct(act + ": a question is up");
    }
}

void VirtualWindow::clickButton(const std::string& title) {
    requireReachable("click \"" + title + "\"");
    for (const PlacedView& placed : placed_) {
        const auto* button = std::get_if<ButtonView>(&placed.view->content);
        if (button && button->title == title) {
            if (!button->enabled || !button->action) {
                throw ImpossibleAct("the button \"" + title + "\" is disabled");
            }
            call(button->action);
            return;
        }
    }
    throw ImpossibleAct("the window has no button \"" + title + "\"");
}

void VirtualWindow::clickBox(const std::string& identifier) {
    requireReachable("click " + identifier);
    for (const PlacedView& placed : placed_) {
        const auto* box = std::get_if<BoxView>(&placed.view->content);
        if (box && placed.view->identifier == identifier) {
            const ViewPath path = placed.path;
            const auto mouseDown = box->mouseDown;
            const bool accepts = box->acceptsFirstResponder;
            if (mouseDown && mouseDown() && accepts) {
                setFirstResponder(path);
            }
            return;
        }
    }
    throw ImpossibleAct("the window has no box " + identifier);
}

void VirtualWindow::close() {
    requireReachable("close");
    if (!spec_.closable) {
        throw ImpossibleAct("the window has no close button");
    }
    orderOut();
    call(spec_.willClose);
}

bool VirtualWindow::press(const KeyEvent& event) {
    if (const BoxView* box = firstResponder_ ? boxAt(*firstResponder_) : nullptr; box && box->keyDown) {
        call(box->keyDown, event);
        return true;
    }
    for (const PlacedView& placed : placed_) {
        const auto* button = std::get_if<ButtonView>(&placed.view->content);
        if (!button || button->keyEquivalent.empty() || !button->enabled) {
            continue;
        }
        const bool isReturn = button->keyEquivalent == "\r" && event.keyCode == returnKeyCode;
        if (isReturn || button->keyEquivalent == event.charactersIgnoringModifiers) {
            call(button->action);
            return true;
        }
    }
    return false;
}

void VirtualWindow::showLayers() {
    std::vector<std::shared_ptr<Layer>> wanted;
    std::vector<std::function<void()>> news;
    for (const PlacedView& placed : placed_) {
        const auto* box = std::get_if<BoxView>(&placed.view->content);
        if (!box || !box->layer || !isVisible()) {
            continue;
        }
        const Rect bounds{0, 0, placed.frame.width, placed.frame.height};
        if (box->layer->model().bounds != bounds) {
            box->layer->change().bounds = bounds;
        }
        if (std::find(shownLayers_.begin(), shownLayers_.end(), box->layer) == shownLayers_.end()) {
            news.push_back(box->updateLayer);
        }
        windows_.surroundings_.layers.show(box->layer);
        wanted.push_back(box->layer);
    }
    for (const auto& layer : std::exchange(shownLayers_, wanted)) {
        if (std::find(wanted.begin(), wanted.end(), layer) == wanted.end()) {
            windows_.surroundings_.layers.hide(layer);
        }
    }
    for (const auto& updateLayer : news) {
        call(updateLayer);
    }
}

void VirtualWindow::updateHover() {
    const bool reached = windows_.underPointer() == this && windows_.surroundings_.application.isActive();
    const Point pointer = windows_.surroundings_.pointer.location();
    const std::vector<PlacedView> placed = placed_;
    for (const PlacedView& view : placed) {
        const BoxView* box = boxAt(view.path);
        if (!box) {
            continue;
        }
        const bool inside = reached && view.frame.offset(contentFrame().x, contentFrame().y).containsPointer(pointer);
        const auto known = std::find(hovered_.begin(), hovered_.end(), view.path);
        if (inside && known == hovered_.end()) {
            hovered_.push_back(view.path);
            call(box->mouseEntered);
        } else if (!inside && known != hovered_.end()) {
            hovered_.erase(known);
            call(box->mouseExited);
        }
    }
}

void VirtualWindow::appearanceChanged() {
    if (!isVisible()) {
        return;
    }
    const std::vector<PlacedView> placed = placed_;
    for (const PlacedView& view : placed) {
        if (const BoxView* box = boxAt(view.path)) {
            call(box->updateLayer);
        }
    }
}

} // namespace rb
