#include "displays/IdentifyPanels.h"

#include "platform/Panels.h"
#include "platform/RunLoop.h"
#include "platform/Screens.h"
#include "platform/TextMeter.h"

#include <functional>
#include <utility>

namespace rb {

namespace {

constexpr Size panelSize{340, 140};
constexpr double showingTime = 2.0; // seconds
constexpr Font numberFont{.size = 34, .weight = FontWeight::Semibold};
constexpr Font nameFont{.size = 14};
constexpr double textGap = 6;
constexpr double textMargin = 20;

// The panel comes from a little smaller and goes to a little smaller: insets of 10 and 6 points above and below.
constexpr double entranceScale = 1 - 2 * 20 / panelSize.width;
constexpr double exitScale = 1 - 2 * 12 / panelSize.width;

std::shared_ptr<Layer> line(const std::string& string, const Font& font, const Color& color, const Rect& frame,
                            double scale) {
    auto layer = Layer::create();
    LayerModel& model = layer->change();
    model.content = TextContent{.text = string,
                                .font = font,
                                .color = color,
                                .alignment = TextAlignment::Center,
                                .truncation = Truncation::End};
    model.contentsScale = scale;
    model.setFrame(frame);
    return layer;
}

} // namespace

class IdentifyPanels::Label {
public:
    Label(const Desktop& desktop, const Rect& frame, std::size_t number, const std::string& name)
        : panel_(desktop.panels.createPanel({.frame = frame,
                                             .level = FloatingWindowLevel,
                                             .collectionBehavior = EverywhereBehavior,
                                             .hasShadow = true,
                                             .ignoresMouseEvents = true})) {
        Layer& root = *panel_->rootLayer();
        LayerModel& look = root.change();
        look.backgroundColor = Color::white(0.09, 0.92);
        look.cornerRadius = 28;
        look.borderWidth = 2;
        look.borderColor = Color::white(1, 0.18);
        const std::string title = "显示器 " + std::to_string(number);
        const double titleHeight = desktop.textMeter.textSize(title, numberFont).height;
        const double nameHeight = desktop.textMeter.textSize("屏", nameFont).height;
        const double total = titleHeight + textGap + nameHeight;
        const double bottom = (panelSize.height - total) / 2;
        const double width = panelSize.width - 2 * textMargin;
        const double scale = panel_->backingScaleFactor();
        root.addSublayer(line(title, numberFont, Color::white(1, 1),
                              {textMargin, bottom + nameHeight + textGap, width, titleHeight}, scale));
        root.addSublayer(line(name, nameFont, Color::white(1, 0.7), {textMargin, bottom, width, nameHeight}, scale));
        panel_->orderFrontRegardless();
        move("rb.reveal", {entranceScale, 1}, {0, 1}, 0.28, nullptr);
    }

    void exitAfter(RunLoop& loop, double seconds, std::function<void()> gone) {
        exit_ = loop.after(seconds, [this, gone = std::move(gone)] {
            move("rb.retract", {1, exitScale}, {1, 0}, 0.25, gone);
        });
    }

private:
    struct Change {
        double from;
        double to;
    };
    void move(const char* key, Change scale, Change opacity, double duration, std::function<void()> ended) {
        Animation animation;
        animation.parts = {{.keyPath = KeyPath::Scale, .from = scale.from, .to = scale.to},
                           {.keyPath = KeyPath::Opacity, .from = opacity.from, .to = opacity.to}};
        animation.duration = duration;
        animation.groupTiming = TimingCurve::easeOut();
        animation.holdsAtEnd = ended != nullptr;
        if (ended) {
            animation.completion = [this, ended = std::move(ended)](bool finished) {
                if (finished) {
                    panel_->orderOut();
                    ended();
                }
            };
        }
        panel_->rootLayer()->addAnimation(key, std::move(animation));
    }

    std::unique_ptr<Panel> panel_;
    Handle exit_;
};

IdentifyPanels::IdentifyPanels(const Desktop& desktop)
    : desktop_(desktop) {}

IdentifyPanels::~IdentifyPanels() = default;

void IdentifyPanels::show(const Screen& screen, std::size_t number) {
    const Rect frame{screen.frame.midX() - panelSize.width / 2, screen.frame.midY() - panelSize.height / 2,
                     panelSize.width, panelSize.height};
    labels_.push_back(std::make_shared<Label>(desktop_, frame, number, screen.localizedName));
    const auto label = std::prev(labels_.end());
    (*label)->exitAfter(desktop_.runLoop, showingTime, [this, label] {
        // It is in the middle of its own completion, so its memory goes a turn later.
        desktop_.runLoop.post([gone = std::move(*label)] {});
        labels_.erase(label);
    });
}

} // namespace rb
