// The clothesline: a card of each kind, the rope with few and many cards, the fall. All cards are laid down as
// pictures, as they are on the screen.

#include "app/Toasts.h"
#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/LayerSurface.h"
#include "tests/golden/Golden.h"
#include "tests/golden/Stage.h"

#include <QDir>
#include <QFile>
#include <QLinearGradient>
#include <QPainter>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace rb {
namespace {

constexpr double lineHeight = 210;

// Every animation at its end.
void settle(Layer& layer) {
    layer.removeAllAnimations();
    for (const auto& sublayer : layer.sublayers()) {
        settle(*sublayer);
    }
}

// A line that is down, on files of its own.
class LineStage {
public:
    explicit LineStage(const char* look)
        : stage_(look)
        , dark_(stage_.appearance().isDark())
        , services_(stage_.services())
        , toasts_(services_)
        , line_(services_, toasts_)
        , ticker_(stage_.desktop.runLoop(), stage_.painter) {
        useScreen(4000);
        line_.start();
        line_.setPinned(true);
        line_.setRevealed(true);
    }
    ~LineStage() { surface_.reset(); }
    LineStage(const LineStage&) = delete;
    LineStage& operator=(const LineStage&) = delete;

    RBClothesline& line() { return line_; }
    VirtualDesktop& desktop() { return stage_.desktop; }
    LayerPainter& painter() { return stage_.painter; }
    QColor backdropColor() const { return dark_ ? QColor(52, 58, 70) : QColor(150, 170, 190); }

    // What hangs stays when the screen shrinks.
    void useScreen(double width) {
        width_ = width;
        stage_.desktop.screens().set(
            {{.id = 1, .frame = {0, 0, width, 982}, .visibleFrame = {0, 0, width, 944}, .backingScaleFactor = 2}});
    }
    RBPegItemRef hang(const QString& name) {
        constexpr int spread = 3701; // tilts that look like chance
        stage_.desktop.random().queue(static_cast<int>(line_.items().size() + 1) * spread % 10001);
        return line_.hangURL(path(name).toStdString(), {.quietly = true});
    }
    void hangPhoto(const QString& name, int width, int height) {
        QImage photo(width, height, QImage::Format_RGB32);
        QPainter painter(&photo);
        QLinearGradient sky(0, 0, 0, height);
        sky.setColorAt(0, QColor(40, 70, 120));
        sky.setColorAt(1, QColor(240, 170, 110));
        painter.fillRect(photo.rect(), sky);
        painter.setBrush(QColor(235, 200, 110));
        painter.drawEllipse(QPointF(width * 0.7, height * 0.3), width * 0.1, width * 0.1);
        painter.end();
        photo.save(path(name));
        hang(name);
    }
    void hangText(const QString& name, const QByteArray& text = "text") {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        hang(name);
    }
    void hangFolder(const QString& name) {
        QDir().mkpath(path(name));
        hang(name);
    }

    // The strip with the line as it is once everything has settled.
    QImage strip(double pixelsPerPoint) {
        const QRect rect(0, 0, static_cast<int>(width_), static_cast<int>(lineHeight));
        if (!surface_) {
            const auto slide = stage_.desktop.panels().visible().front()->rootLayer()->sublayers().back();
            surface_ = std::make_unique<LayerSurface>(ticker_, Layer::create(), [](const QRegion&) {});
            surface_->root()->addSublayer(slide);
            surface_->show();
            settle(*slide);
        }
        surface_->root()->change().setFrame({0, 0, width_, lineHeight});
        surface_->setTransform(flipped(QRectF(rect)));
        QImage image(rect.size() * pixelsPerPoint, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(pixelsPerPoint);
        image.fill(backdropColor());
        QPainter painter(&image);
        surface_->paintRegion(painter, rect);
        return image;
    }

private:
    QString path(const QString& name) const { return folder_.filePath(name); }

    QTemporaryDir folder_;
    Stage stage_;
    bool dark_;
    Desktop services_;
    Toasts toasts_;
    RBClothesline line_;
    LayerTicker ticker_;
    std::unique_ptr<LayerSurface> surface_;
    double width_ = 0;
};

QImage stacked(const std::vector<QImage>& strips) {
    QSize size = strips.front().size();
    size.setHeight(size.height() * static_cast<int>(strips.size()));
    QImage all(size, strips.front().format());
    QPainter painter(&all);
    for (std::size_t i = 0; i < strips.size(); ++i) {
        QImage strip = strips[i];
        strip.setDevicePixelRatio(1);
        painter.drawImage(0, static_cast<int>(i) * strip.height(), strip);
    }
    return all;
}

class LineGolden : public testing::TestWithParam<const char*> {
protected:
    static void expectBoth(LineStage& stage, const std::string& name) {
        expectGolden(stage.strip(1), name + "-" + GetParam() + "@1x");
        expectGolden(stage.strip(2), name + "-" + GetParam() + "@2x");
    }
};

TEST_P(LineGolden, ACardOfEachKind) {
    LineStage stage(GetParam());
    stage.hangPhoto("wide.png", 640, 427);
    stage.hangPhoto("tall.png", 200, 640);
    stage.hangText("notes.txt");
    stage.hangFolder("项目资料");
    stage.hangText("broken.png", "no picture");
    stage.hangText("一个名字非常非常长的中文文档用来看看标签怎样在中间截断.md");
    stage.useScreen(1100);
    const auto& wide = *stage.line().items().front();
    setItemHovered(*stage.line().items()[2], true);
    EXPECT_EQ(wide.cardSize, (Size{144, 99}));
    expectBoth(stage, "line-cards");
}

TEST_P(LineGolden, TheRopeWithFewAndManyCards) {
    for (const int width : {1512, 1000}) {
        std::vector<QImage> strips;
        for (const int count : {1, 5, 10}) {
            LineStage stage(GetParam());
            for (int i = 0; i < count; ++i) {
                stage.hangText(QString::number(i + 1) + QStringLiteral(".txt"));
            }
            stage.useScreen(width);
            ASSERT_EQ(stage.line().items().size(), static_cast<std::size_t>(count));
            // Fine where it is dark, coarse where it is light: one of each is enough to look at.
            strips.push_back(stage.strip(std::string(GetParam()) == "dark" ? 2 : 1));
        }
        expectGolden(stacked(strips), "line-rope-" + std::to_string(width) + "-" + GetParam());
    }
}

TEST_P(LineGolden, TheFallAtThreeMoments) {
    const double scale = std::string(GetParam()) == "dark" ? 1 : 2;
    LineStage stage(GetParam());
    stage.useScreen(1512);
    stage.hangText("notes.txt");
    stage.desktop().advance(6);
    stage.line().removeItem(stage.line().items().front(), {.quietly = true, .fall = true});
    ASSERT_EQ(stage.desktop().panels().visible().size(), 2U);
    const QRectF seen(620, 0, 260, 620); // points from the top left of the screen
    QImage all(QSizeF(seen.width() * 3, seen.height()).toSize() * scale, QImage::Format_ARGB32_Premultiplied);
    all.setDevicePixelRatio(scale);
    all.fill(stage.backdropColor());
    QPainter painter(&all);
    int column = 0;
    for (const double wait : {0.1, 0.25, 0.15}) {
        stage.desktop().advance(wait);
        const auto root = stage.desktop().panels().visible().back()->rootLayer();
        const QRectF canvas(column++ * seen.width(), 0, seen.width(), seen.height());
        painter.setClipRect(canvas);
        stage.painter().paintRegion(painter, *root, stage.desktop().runLoop().now(),
                                    flipped(QRectF(0, 0, 1512, 982)) *
                                        QTransform::fromTranslate(canvas.x() - seen.x(), -seen.y()),
                                    canvas.toRect());
    }
    painter.end();
    expectGolden(all, std::string("line-fall-") + GetParam());
}

INSTANTIATE_TEST_SUITE_P(Looks, LineGolden, testing::Values("light", "dark"),
                         [](const auto& look) { return std::string(look.param); });

} // namespace
} // namespace rb
