#include "desktops/linux/BoxWidget.h"
#include "desktops/linux/LayerSurface.h"
#include "desktops/linux/ScrollWidget.h"
#include "desktops/linux/Style.h"
#include "displays/Pages.h"
#include "tests/displays/Modes.h"
#include "tests/golden/Golden.h"
#include "tests/golden/Stage.h"

#include <QPaintEvent>
#include <QPainter>
#include <QWidget>
#include <gtest/gtest.h>

#include <string>
#include <utility>

// Both pages of the Screens and connections window, as large as the window is at first. The window is dark in both
// appearances of the system.
namespace rb {
namespace {

// The content of a dark window.
class WindowCanvas final : public QWidget, public ContentSurroundings {
public:
    WindowCanvas(Stage& stage, View view, const QSize& size)
        : ticker_(stage.desktop.runLoop(), stage.painter)
        , pictures_(stage.symbols) {
        setProperty(LinuxStyle::darkProperty, true);
        setPalette(theme_.palette());
        resize(size);
        root_ = &realize(nullptr, std::move(view), *this, *this);
        root_->place(QRectF(rect()));
        root_->layOut();
        showBoxes(*root_);
    }
    // The content's surfaces know the ticker.
    ~WindowCanvas() override { qDeleteAll(QObjectList(children())); }
    WindowCanvas(const WindowCanvas&) = delete;
    WindowCanvas& operator=(const WindowCanvas&) = delete;

    LayerTicker& ticker() const override { return ticker_; }
    const Pictures& pictures() const override { return pictures_; }
    const Theme& theme() const override { return theme_; }
    QWidget& canvas() override { return *this; }
    void makeFirstResponder(BoxWidget& /*box*/) override {}
    bool isFirstResponder(const BoxWidget& /*box*/) const override { return false; }
    void boxGone(BoxWidget& /*box*/) override {}

    QImage picture(double pixelsPerPoint) {
        QImage image(size() * pixelsPerPoint, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(pixelsPerPoint);
        image.fill(theme_.window);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        render(&painter, {}, {}, QWidget::DrawChildren);
        return image;
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        paintBoxes(root_, painter, event->rect());
    }

private:
    static void showBoxes(RealizedView& view) {
        if (auto* box = dynamic_cast<BoxWidget*>(&view)) {
            box->setOnScreen(true);
        }
        for (RealizedView* child : view.children()) {
            showBoxes(*child);
        }
    }

    const Theme theme_ = Theme::make(true, {});
    mutable LayerTicker ticker_;
    Pictures pictures_;
    RealizedView* root_ = nullptr;
};

class PagesGolden : public testing::TestWithParam<const char*> {
protected:
    PagesGolden() {
        DisplayRow builtin = rowOf({.identity = {.id = 1},
                                    .name = "内置视网膜显示器",
                                    .main = true,
                                    .builtin = true,
                                    .modes = {modeOf(1, 1512, 982, 120, 2)},
                                    .currentMode = modeOf(1, 1512, 982, 120, 2)});
        builtin.status = "内置屏幕不支持此单屏 DDC 待机方式。";
        DisplayRow dell = rowOf({.identity = {.id = 7},
                                 .name = "DELL U2723QE",
                                 .modes = {modeOf(2, 1920, 1080, 60, 2), modeOf(3, 3840, 2160, 60)},
                                 .currentMode = modeOf(2, 1920, 1080, 60, 2)});
        dell.status = "单屏待机可用";
        dell.supported = true;
        full_ = {builtin, dell};
        connections_ = *parseSnapshot(R"json({"ports":[
            {"name":"USB-C 端口 1","connectionActive":true,"transports":{"active":["CC","USB2","DisplayPort"]},
             "displays":[{"monitorName":"DELL U2723QE","branchDevice":"CalDigit TS4","sinkType":"DisplayPort",
                          "lanes":4,"rate":"8.1 Gbps"}],
             "cable":{"speed":"USB4 Gen 3 (40 Gbps)","maxWatts":100,"vendorName":"Luxshare","vendorID":8334,
                      "currentRating":"5 A","maxVolts":20,"certification":{"listings":[{"model":"LX-40G"}]}},
             "powerSources":[{"name":"USB-PD","maxPowerW":96,
                              "negotiated":{"powerW":60,"voltageV":20,"currentA":3}}],
             "charging":{"summary":"Plugged in, charging on hold"},
             "devices":[{"name":"Hub","speed":"480 Mbps"},{"name":"ACME Disk","speed":"10 Gbps"}]},
            {"name":"HDMI-A-1","connectionActive":true,"videoOnly":true,"displays":[{"monitorName":"LG HDR 4K"}]}]})json");
    }

    void expect(const std::string& name, PageState state, double pixelsPerPoint = 1) {
        Stage stage(GetParam());
        state.blue = stage.appearance().color(SystemColor::Blue);
        const PageButtonLayers buttons{Layer::create(), Layer::create()};
        buttons.at(static_cast<std::size_t>(state.selectedPage))->change().backgroundColor = state.blue.withAlpha(0.25);
        for (const auto& layer : buttons) {
            layer->change().cornerRadius = 10;
        }
        CardPool cards;
        WindowCanvas canvas(stage, windowContent(state, {}, cards, buttons), QSize(920, 720));
        expectGolden(canvas.picture(pixelsPerPoint), name + "-" + GetParam() + (pixelsPerPoint == 2 ? "@2x" : "@1x"));
    }

    std::vector<DisplayRow> full_;
    ConnectionSnapshot connections_;
    const std::vector<DisplayRow> none_;
    const ConnectionSnapshot nothing_;
};

TEST_P(PagesGolden, Full) {
    expect("displays-full", {.rows = full_, .connections = connections_});
    expect("connections-full",
           {.rows = full_, .connections = connections_, .selectedPage = connectionsPage, .technicalDetails = true});
}

INSTANTIATE_TEST_SUITE_P(Looks, PagesGolden, testing::Values("light", "dark"),
                         [](const auto& look) { return std::string(look.param); });

class DarkPagesGolden : public PagesGolden {};

TEST_P(DarkPagesGolden, AtTwoPixelsAPoint) {
    expect("displays-full", {.rows = full_, .connections = connections_}, 2);
}

TEST_P(DarkPagesGolden, EmptyAndBusy) {
    expect("displays-empty", {.rows = none_, .connections = nothing_});
    expect("displays-busy", {.rows = full_, .connections = nothing_, .busy = true});
    expect("connections-empty", {.rows = none_, .connections = nothing_, .selectedPage = connectionsPage});
}

TEST_P(DarkPagesGolden, ErrorsAndWhatIsOutOfReach) {
    std::vector<DisplayRow> rows = full_;
    rows[1].supported = false;
    rows[1].status = "已识别显示器，经 CalDigit TS4 转接；当前连接未返回有效 DDC 响应，单屏待机不可用。";
    DisplayRow gone = rows[1];
    gone.name = "LG HDR 4K";
    gone.online = false;
    gone.sleepRequested = true;
    gone.status = "待机后屏幕已不可达；可以尝试唤醒，失败时请按显示器电源键。";
    rows.front() = gone;
    const ConnectionSnapshot error{.error = "连接检测超时，请稍后刷新。"};
    expect("displays-error", {.rows = rows, .connections = error});
    expect("connections-error", {.rows = rows, .connections = error, .selectedPage = connectionsPage});
}

TEST_P(DarkPagesGolden, LongNames) {
    std::vector<DisplayRow> rows = full_;
    rows[0].name = "会议室东侧的超宽曲面显示器（Samsung Odyssey Neo G9 57\" Dual UHD）二〇二六年第二批采购编号〇〇一七";
    rows[0].status = "没有访问 /dev/i2c-11 的权限：请将用户加入 i2c 组（sudo usermod -aG i2c 用户名）后重新登录。";
    rows[1].name = "AVeryLongMonitorNameWithoutAnyBlankThatCouldBreakItsLineAnywhereInTheMiddleOfTheCard-Rev-2";
    expect("displays-long", {.rows = rows, .connections = nothing_});
    ConnectionSnapshot snapshot = connections_;
    Port& port = snapshot.ports.front();
    port.name = rows[0].name;
    port.displays[0].monitorName = rows[1].name;
    port.cable->vendorName = "Shenzhen Extraordinarily Long Cable Manufacturing Company Limited, Guangdong, China";
    port.cable->speed = "USB4 Version 2.0 Gen 4 Asymmetric (120 Gbps / 40 Gbps), optical, active, re-timed";
    port.devices[0].name = rows[1].name;
    expect("connections-long",
           {.rows = rows, .connections = snapshot, .selectedPage = connectionsPage, .technicalDetails = true});
}

INSTANTIATE_TEST_SUITE_P(Looks, DarkPagesGolden, testing::Values("dark"),
                         [](const auto& look) { return std::string(look.param); });

} // namespace
} // namespace rb
