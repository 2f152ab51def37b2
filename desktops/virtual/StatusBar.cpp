#include "desktops/virtual/StatusBar.h"

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/RunLoop.h"
#include "desktops/virtual/Screens.h"

#include <algorithm>

namespace rb {

namespace {

constexpr double usualWidth = 30;

// The first button that fits, depth first; null when there is none.
const ButtonView* findButton(const View& view, const std::function<bool(const ButtonView&)>& fits) {
    if (const auto* button = std::get_if<ButtonView>(&view.content)) {
        return fits(*button) ? button : nullptr;
    }
    if (const auto* stack = std::get_if<StackView>(&view.content)) {
        for (const View& child : stack->children) {
            if (const ButtonView* found = findButton(child, fits)) {
                return found;
            }
        }
    }
    return nullptr;
}

void press(const View& content, const std::string& what, const std::function<bool(const ButtonView&)>& fits) {
    const ButtonView* button = findButton(content, fits);
    if (button == nullptr || !button->enabled || !button->action) {
        throw ImpossibleAct("the popover has no button for " + what);
    }
    const auto action = button->action; // the popover may go
    action();
}

} // namespace

VirtualPopover::VirtualPopover(VirtualStatusBar& bar, PopoverSpec spec)
    : bar_(bar)
    , spec_(std::move(spec)) {
    bar_.popover_ = this;
}

VirtualPopover::~VirtualPopover() {
    if (bar_.popover_ == this) {
        bar_.popover_ = nullptr;
    }
}

void VirtualPopover::close() {
    if (bar_.popover_ != this || closing_) {
        return;
    }
    closing_ = bar_.loop_.after(closingTime, [this] {
        bar_.popover_ = nullptr;
        if (const auto didClose = spec_.didClose) {
            didClose();
        }
    });
}

void VirtualPopover::clickButton(const std::string& title) {
    press(spec_.content, title, [&](const ButtonView& button) { return button.title == title; });
}

void VirtualPopover::pressReturn() {
    press(spec_.content, "Return", [](const ButtonView& button) { return button.keyEquivalent == "\r"; });
}

VirtualStatusItem::VirtualStatusItem(VirtualStatusBar& bar)
    : bar_(bar) {
    bar_.items_.push_back(this);
    bar_.places_.push_back({this});
}

VirtualStatusItem::~VirtualStatusItem() {
    std::erase(bar_.items_, this);
    std::erase_if(bar_.places_, [this](const auto& place) { return place.item == this; });
}

std::optional<Rect> VirtualStatusItem::frame() const {
    if (!visible_ || !bar_.hasWindows_) {
        return std::nullopt;
    }
    const auto frames = bar_.frames();
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (bar_.places_[i].item == this) {
            return frames[i].second;
        }
    }
    return std::nullopt;
}

void VirtualStatusItem::addTransition(const std::string& key, const PushTransition& transition) {
    if (!layerBacked_) {
        contractViolation("a transition on a status item that isn't layer-backed");
    }
    transitions_[key].push_back(transition);
}

std::unique_ptr<Popover> VirtualStatusItem::showPopover(PopoverSpec spec) {
    return frame() ? std::make_unique<VirtualPopover>(bar_, std::move(spec)) : nullptr;
}

void VirtualStatusItem::click(const StatusItemClick& click) {
    if (!visible_ || !action_) {
        throw ImpossibleAct("the status item can't be clicked");
    }
    const auto action = action_;
    action(click);
}

double VirtualStatusBar::Place::width() const {
    if (item == nullptr) {
        return usualWidth;
    }
    return item->isVisible() ? item->length().value_or(usualWidth) : 0;
}

std::unique_ptr<StatusItem> VirtualStatusBar::createItem() {
    loop_.requireMainThread("StatusBar::createItem");
    journal_.note("createStatusItem");
    return std::make_unique<VirtualStatusItem>(*this);
}

std::vector<std::pair<std::string, Rect>> VirtualStatusBar::frames() const {
    const auto screens = screens_.all();
    const Rect screen = screens.empty() ? Rect{} : screens.front().frame;
    double right = screen.maxX();
    std::vector<std::pair<std::string, Rect>> frames;
    for (const Place& place : places_) {
        const double width = place.width();
        right -= width;
        frames.emplace_back(place.name(), Rect{right, screen.maxY() - thickness_, width, thickness_});
    }
    return frames;
}

std::vector<std::string> VirtualStatusBar::seen() const {
    std::vector<std::string> names;
    for (const auto& [name, frame] : frames()) {
        if (frame.width > 0 && frame.maxX() > 0) {
            names.insert(names.begin(), name);
        }
    }
    return names;
}

void VirtualStatusBar::drag(const std::string& name, const std::string& other, std::ptrdiff_t side) {
    const auto named = [this](const std::string& wanted) {
        const auto found =
            std::find_if(places_.begin(), places_.end(), [&](const Place& place) { return place.name() == wanted; });
        if (found == places_.end()) {
            throw ImpossibleAct("nothing in the bar is called " + wanted);
        }
        return found;
    };
    const Place moved = *named(name);
    places_.erase(named(name));
    places_.insert(named(other) + side, moved);
}

} // namespace rb
