#include "app/HotKeyRecorderView.h"
#include "app/Toasts.h"
#include "desktops/linux/LayerSurface.h"
#include "desktops/linux/RealizedView.h"
#include "tests/golden/Golden.h"
#include "tests/golden/Stage.h"

#include <QPainter>
#include <QWidget>
#include <gtest/gtest.h>

#include <utility>

namespace rb {
namespace {

// A window's content on a bare widget.
class Canvas final : public ContentSurroundings {
public:
    Canvas(Stage& stage, View view, const QSize& size)
        : stage_(stage)
        , ticker_(stage.desktop.runLoop(), stage.painter)
        , pictures_(stage.symbols) {
        widget_.resize(size);
        RealizedView& root = realize(nullptr, std::move(view), widget_, *this);
        constexpr int margin = 10;
        root.place(QRectF(widget_.rect()).adjusted(margin, margin, -margin, -margin));
        root.layOut();
    }

    LayerTicker& ticker() const override { return ticker_; }
    const Pictures& pictures() const override { return pictures_; }
    const Theme& theme() const override { return stage_.appearance().theme(); }
    QWidget& canvas() override { return widget_; }
    void makeFirstResponder(BoxWidget& /*box*/) override {}
    bool isFirstResponder(const BoxWidget& /*box*/) const override { return false; }
    void boxGone(BoxWidget& /*box*/) override {}

    QImage picture(double pixelsPerPoint) {
        QImage image(widget_.size() * pixelsPerPoint, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(pixelsPerPoint);
        image.fill(theme().window);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        widget_.render(&painter, {}, {}, QWidget::DrawChildren);
        return image;
    }

private:
    Stage& stage_;
    mutable LayerTicker ticker_;
    Pictures pictures_;
    QWidget widget_;
};

class ProductGolden : public testing::TestWithParam<const char*> {};

TEST_P(ProductGolden, ANoticeUnderTheMenuBar) {
    Stage stage(GetParam());
    const Desktop services = stage.services();
    Toasts toasts(services);
    toasts.RBShowToast("无法读取截图文件夹，新截图不会自动挂上", "exclamationmark.triangle.fill", SystemColor::Orange);
    ASSERT_EQ(stage.desktop.panels().visible().size(), 1U);
    VirtualPanel& panel = *stage.desktop.panels().visible().front();

    const bool dark = stage.appearance().isDark();
    const Rect frame = panel.frame();
    const GoldenScene scene(frame.width + 24, frame.height + 24, dark ? QColor(40, 44, 52) : QColor(225, 228, 232));
    const auto root = panel.rootLayer();
    scene.root()->addSublayer(root);
    root->removeAllAnimations(); // as it stands while it is read
    root->change().setFrame({12, 12, frame.width, frame.height});
    scene.expect(std::string("toast-") + GetParam());
}

TEST_P(ProductGolden, TheRecorderAsksListensAndShowsAKey) {
    Stage stage(GetParam());
    HotKeyRecorderView recorder(stage.appearance());
    const auto shoot = [&](const std::string& name) {
        Canvas canvas(stage, recorder.view("recorder"), {448, 98});
        const std::string full = "recorder-" + name + "-" + GetParam();
        expectGolden(canvas.picture(1), full + "@1x");
        expectGolden(canvas.picture(2), full + "@2x");
    };
    shoot("asks");
    recorder.becomeFirstResponder();
    recorder.keyDown(
        {.keyCode = 37, .modifierFlags = ControlModifier | OptionModifier, .charactersIgnoringModifiers = "l"});
    shoot("listens");
}

INSTANTIATE_TEST_SUITE_P(Looks, ProductGolden, testing::Values("light", "dark"),
                         [](const auto& look) { return std::string(look.param); });

} // namespace
} // namespace rb
