#include "app/Toasts.h"

#include "motion/Layer.h"
#include "platform/Panels.h"
#include "platform/Pointer.h"
#include "platform/RunLoop.h"
#include "platform/Screens.h"
#include "platform/StatusBar.h"
#include "platform/TextMeter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace rb {

namespace {

constexpr double height = 38;
constexpr double minimumWidth = 150;
constexpr double gapBelowMenuBar = 6;
constexpr double contentSpacing = 8;
constexpr double showingTime = 1.5;
constexpr Font textFont{.size = 13, .weight = FontWeight::Semibold};

// Symbol and text side by side, centred in the panel.
struct Content {
    Symbol symbol;
    Size symbolSize; // zero without a symbol
    std::string text;
    Size textSize;

    double fittingWidth() const {
        return textSize.width + (symbolSize.width > 0 ? symbolSize.width + contentSpacing : 0);
    }
};

Content measure(const Desktop& desktop, const std::string& text, const std::string& symbolName, SystemColor tint) {
    Content content;
    content.text = text;
    content.symbol = {
        .name = symbolName, .pointSize = 15, .weight = FontWeight::Semibold, .tint = desktop.appearance.color(tint)};
    if (!symbolName.empty()) {
        content.symbolSize = desktop.textMeter.symbolSize(content.symbol);
    }
    const Size size = desktop.textMeter.textSize(text, textFont);
    content.textSize = {std::ceil(size.width), std::ceil(size.height)};
    return content;
}

Rect placeOn(const Screen& screen, double width, double statusBarThickness) {
    const double bandHeight = std::max(screen.frame.maxY() - screen.visibleFrame.maxY(), statusBarThickness);
    return {std::round(screen.frame.midX() - width / 2), screen.frame.maxY() - bandHeight - height - gapBelowMenuBar,
            width, height};
}

void fill(Layer& root, const Content& content, double scale) {
    LayerModel& look = root.change();
    look.backgroundColor = Color::white(0.06, 0.94);
    look.cornerRadius = height / 2;
    look.borderWidth = 1;
    look.borderColor = Color::white(1, 0.1);

    double x = (look.bounds.width - content.fittingWidth()) / 2;
    if (content.symbolSize.width > 0) {
        const auto image = Layer::create();
        LayerModel& model = image->change();
        model.contents = content.symbol;
        model.contentsScale = scale;
        model.setFrame(
            {x, (height - content.symbolSize.height) / 2, content.symbolSize.width, content.symbolSize.height});
        root.addSublayer(image);
        x += content.symbolSize.width + contentSpacing;
    }
    const auto label = Layer::create();
    LayerModel& model = label->change();
    model.content = TextContent{.text = content.text, .font = textFont, .color = Color::white(1, 1)};
    model.contentsScale = scale;
    model.setFrame({x, (height - content.textSize.height) / 2, content.textSize.width, content.textSize.height});
    root.addSublayer(label);
}

} // namespace

// One notice on its way in, showing, and on its way out.
class Toasts::Toast {
public:
    Toast(const Desktop& desktop, const Rect& frame, const Content& content)
        : panel_(desktop.panels.createPanel(
              {.frame = frame,
               .level = StatusWindowLevel,
               .collectionBehavior = CanJoinAllSpaces | Stationary | IgnoresCycle | FullScreenAuxiliary,
               .hasShadow = true,
               .ignoresMouseEvents = true})) {
        fill(*panel_->rootLayer(), content, panel_->backingScaleFactor());
        panel_->orderFrontRegardless();
        enter();
    }

    void exitAfter(RunLoop& loop, double seconds, std::function<void()> gone) {
        exit_ = loop.after(seconds, [this, gone = std::move(gone)]() mutable { exit(std::move(gone)); });
    }

private:
    void enter() {
        Layer& root = *panel_->rootLayer();
        root.addAnimation("rb.drop", Animation::spring(KeyPath::TranslationY, 34.2, 0.0,
                                                       {.mass = 1, .stiffness = 220, .damping = 17}));
        root.addAnimation("rb.fade", Animation::basic(KeyPath::Opacity, 0.0, 1.0, 0.18));
    }

    void exit(std::function<void()> gone) {
        Animation retract;
        retract.parts = {{.keyPath = KeyPath::TranslationY, .from = 0.0, .to = 0.7 * height},
                         {.keyPath = KeyPath::Opacity, .from = 1.0, .to = 0.0}};
        retract.duration = 0.22;
        retract.groupTiming = TimingCurve::easeIn();
        retract.holdsAtEnd = true;
        retract.completion = [this, gone = std::move(gone)](bool finished) {
            if (finished) {
                panel_->orderOut();
                gone();
            }
        };
        panel_->rootLayer()->addAnimation("rb.retract", std::move(retract));
    }

    std::unique_ptr<Panel> panel_;
    Handle exit_;
};

Toasts::Toasts(const Desktop& desktop)
    : desktop_(desktop) {}

Toasts::~Toasts() = default;

void Toasts::RBShowToast(const std::string& text, const std::string& symbolName, SystemColor tint) {
    auto screen = RBScreenAt(desktop_.screens, desktop_.pointer.location());
    if (!screen) {
        const auto all = desktop_.screens.all();
        if (all.empty()) {
            return;
        }
        screen = all.front();
    }
    const Content content = measure(desktop_, text, symbolName, tint);
    const double width = std::max(content.fittingWidth() + 40, minimumWidth);
    shown_.push_back(
        std::make_unique<Toast>(desktop_, placeOn(*screen, width, desktop_.statusBar.thickness()), content));
    const auto toast = std::prev(shown_.end());
    (*toast)->exitAfter(desktop_.runLoop, showingTime, [this, toast] {
        // The notice is in the middle of its own completion, so its memory goes a turn later.
        desktop_.runLoop.post([gone = std::shared_ptr<Toast>(std::move(*toast))] {});
        shown_.erase(toast);
    });
}

} // namespace rb
