// The kinds of layers and their combinations, as the painter shows them.

#include "desktops/linux/Bitmap.h"
#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/LayerPainter.h"
#include "desktops/linux/LayerSurface.h"
#include "desktops/linux/Symbols.h"
#include "desktops/virtual/RunLoop.h"
#include "tests/golden/Golden.h"

#include <QPainter>
#include <gtest/gtest.h>

namespace rb {
namespace {

constexpr Color black{0, 0, 0, 1};
const QColor paper(226, 232, 240);

// Four quarters of different colours with a dot at the top left: shows mirrored and turned pictures.
std::shared_ptr<const Bitmap> testPicture(int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height / 2, QColor(230, 80, 70));
    painter.fillRect(width / 2, 0, width, height / 2, QColor(70, 160, 90));
    painter.fillRect(0, height / 2, width / 2, height, QColor(60, 110, 210));
    painter.fillRect(width / 2, height / 2, width, height, QColor(240, 190, 60));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QRectF(width * 0.1, height * 0.1, height * 0.2, height * 0.2));
    painter.end();
    return std::make_shared<LinuxBitmap>(image);
}

void makeGlass(Layer& layer, double radius) {
    LayerModel& model = layer.change();
    model.cornerRadius = radius;
    model.continuousCorners = true;
    model.backgroundColor = Color::white(0.97, 0.8);
    model.borderColor = Color::white(0, 0.1);
    model.borderWidth = 0.5;
    model.shadowColor = black;
    model.shadowOpacity = 0.3;
    model.shadowRadius = 10;
    model.shadowOffset = {0, -5};
    model.shadowPath = Path::roundedRect(model.bounds, radius);
}

void addRim(Layer& card) {
    const Rect bounds = card.model().bounds;
    const auto edge = GoldenScene::addTo(card, bounds);
    edge->change().content = GradientContent{.colors = {Color::white(1, 0.12), {0.9, 0.2, 0.1, 0.9}}};
    const auto mask = Layer::create();
    mask->change().setFrame(bounds);
    mask->change().content =
        ShapeContent{.path = Path::roundedRect(bounds.inset(1.5, 1.5), 14.5), .strokeColor = black, .lineWidth = 3};
    edge->setMask(mask);
}

TEST(LayersGolden, SurfacesShadowsAndGradients) {
    GoldenScene scene(420, 150, paper);
    const auto glass = scene.add({24, 30, 100, 90});
    makeGlass(*glass, 16);
    addRim(*glass);

    const auto square = scene.add({160, 50, 60, 60});
    square->change().backgroundColor = Color{0.2, 0.4, 0.9, 1};
    square->change().borderColor = Color{1, 0.8, 0, 1};
    square->change().borderWidth = 6;
    square->change().shadowOpacity = 0.6;
    square->change().shadowRadius = 2;
    square->change().shadowOffset = {6, 6};

    // Brightest at the top; the slot shows that it lies above.
    const auto peg = scene.add({250, 40, 36, 80});
    peg->change().content = GradientContent{.colors = {Color::white(0.5, 1), Color::white(1, 1), Color::white(0.2, 1)},
                                            .locations = {0, 0.35, 1},
                                            .startPoint = {0, 0.5},
                                            .endPoint = {1, 0.5}};
    peg->change().cornerRadius = 12;
    peg->change().shadowOpacity = 0.5;
    const auto slot = GoldenScene::addTo(*peg, {8, 56, 20, 6});
    slot->change().backgroundColor = Color::white(0, 0.6);
    slot->change().cornerRadius = 3;

    const auto rope = scene.add({300, 10, 110, 130});
    rope->change().content = ShapeContent{.path = Path().moveTo({5, 120}).quadTo({55, 10}, {105, 120}),
                                          .strokeColor = Color::white(0.4, 1),
                                          .lineWidth = 5,
                                          .lineCap = LineCap::Round};
    rope->change().shadowOpacity = 0.7;
    rope->change().shadowOffset = {0, -6};
    const auto fade = Layer::create();
    fade->change().setFrame({0, 0, 110, 130});
    fade->change().content = GradientContent{.colors = {Color::clear(), black, black},
                                             .locations = {0, 0.6, 1},
                                             .startPoint = {0, 0.5},
                                             .endPoint = {1, 0.5}};
    rope->setMask(fade);
    scene.expect("surfaces");
}

TEST(LayersGolden, PicturesAndTheirGravities) {
    GoldenScene scene(460, 120, paper);
    const auto picture = testPicture(320, 160);
    double x = 10;
    for (const auto gravity : {ContentsGravity::Resize, ContentsGravity::ResizeAspect,
                               ContentsGravity::ResizeAspectFill, ContentsGravity::Center}) {
        const auto layer = scene.add({x, 20, 80, 80});
        layer->change().contents = picture;
        layer->change().contentsGravity = gravity;
        layer->change().contentsScale = 2;
        layer->change().masksToBounds = true;
        layer->change().cornerRadius = 14;
        layer->change().borderWidth = 1;
        x += 90;
    }
    const auto icon = scene.add({x, 20, 80, 80});
    icon->change().contents = Symbol{.name = "key", .pointSize = 40, .tint = Color{0.8, 0.2, 0.1, 1}};
    icon->change().contentsGravity = ContentsGravity::Center;
    icon->change().shadowOpacity = 0.8;
    scene.expect("pictures");
}

TEST(LayersGolden, TextsFromTheTopAndCut) {
    GoldenScene scene(300, 150, paper);
    const auto text = [&scene](const Rect& frame, TextContent content) {
        const auto layer = scene.add(frame);
        layer->change().backgroundColor = Color::white(1, 0.5);
        content.color = {0.1, 0.1, 0.2, 1};
        layer->change().content = std::move(content);
    };
    text({10, 100, 130, 40}, {.text = "Rope 晾衣绳", .font = {.size = 13}, .alignment = TextAlignment::Left});
    text({150, 100, 140, 40}, {.text = "Rope 晾衣绳",
                               .font = {.size = 15, .weight = FontWeight::Semibold},
                               .alignment = TextAlignment::Right});
    text({10, 60, 130, 20},
         {.text = "A long name of a file.png", .font = {.size = 13}, .truncation = Truncation::Middle});
    text({150, 60, 140, 20}, {.text = "A long name of some file.png", .truncation = Truncation::End});
    text({10, 20, 130, 20}, {.text = "Not cut, wider than its room", .truncation = Truncation::None});
    text({150, 20, 140, 20}, {.text = "✓ 已复制", .font = {.size = 11, .weight = FontWeight::Bold}});
    scene.expect("texts");
}

TEST(LayersGolden, TurnsScalesAndFadesGroups) {
    GoldenScene scene(420, 170, paper);
    // A card hanging from its top centre, turned by 12 degrees counter-clockwise.
    const auto card = scene.add({40, 20, 100, 120});
    makeGlass(*card, 16);
    card->change().anchorPoint = {0.5, 1};
    card->change().setFrame({40, 20, 100, 120});
    card->change().transform.rotation = 0.21;
    const auto photo = GoldenScene::addTo(*card, {10, 40, 80, 70});
    photo->change().contents = testPicture(320, 280);
    photo->change().masksToBounds = true;
    photo->change().cornerRadius = 12;
    const auto name = GoldenScene::addTo(*card, {10, 12, 80, 18});
    name->change().content = TextContent{.text = "转动 turned", .color = {0.1, 0.1, 0.1, 1}};
    addRim(*card);

    // In a faded group what lies beneath doesn't shine through what lies above.
    const auto group = scene.add({180, 30, 100, 110});
    group->change().opacity = 0.5;
    const auto back = GoldenScene::addTo(*group, {0, 30, 70, 70});
    back->change().backgroundColor = Color{0.9, 0.1, 0.1, 1};
    const auto front = GoldenScene::addTo(*group, {30, 0, 70, 70});
    front->change().backgroundColor = Color{0.1, 0.2, 0.9, 1};
    const auto gone = GoldenScene::addTo(*group, {0, 0, 100, 100});
    gone->change().backgroundColor = black;
    gone->change().hidden = true;

    // Higher positions lie in front; sublayers end at a round mask; scaled about the centre and shifted.
    const auto disc = scene.add({310, 30, 100, 100});
    disc->change().cornerRadius = 50;
    disc->change().masksToBounds = true;
    disc->change().backgroundColor = Color::white(0.2, 1);
    disc->change().borderWidth = 4;
    disc->change().borderColor = Color::white(1, 0.8);
    disc->change().transform = {.translation = {-6, 8}, .scale = 0.9};
    const auto high = GoldenScene::addTo(*disc, {20, 20, 90, 30});
    high->change().zPosition = 2;
    high->change().backgroundColor = Color{0.3, 0.8, 0.4, 1};
    const auto low = GoldenScene::addTo(*disc, {40, -10, 30, 120});
    low->change().backgroundColor = Color{0.9, 0.7, 0.2, 1};
    low->change().zPosition = 1;
    scene.expect("groups");
}

TEST(LayersGolden, ANoticeInLightAndDarkSurroundings) {
    for (const bool dark : {false, true}) {
        GoldenScene scene(280, 90, dark ? QColor(28, 30, 34) : QColor(236, 240, 244));
        const auto capsule = scene.add({30, 26, 220, 38});
        LayerModel& look = capsule->change();
        look.backgroundColor = Color::white(0.06, 0.94);
        look.cornerRadius = 19;
        look.borderWidth = 1;
        look.borderColor = Color::white(1, 0.1);
        look.shadowOpacity = 0.35;
        look.shadowRadius = 11;
        look.shadowOffset = {0, -6};
        const auto symbol = GoldenScene::addTo(*capsule, {36, 9.5, 19, 19});
        symbol->change().contents =
            Symbol{.name = "key", .pointSize = 15, .weight = FontWeight::Semibold, .tint = Color{0.2, 0.78, 0.35, 1}};
        const auto label = GoldenScene::addTo(*capsule, {63, 11, 122, 17});
        label->change().content = TextContent{.text = "剪贴板记录已暂停",
                                              .font = {.size = 13, .weight = FontWeight::Semibold},
                                              .color = Color::white(1, 1)};
        scene.expect(dark ? "notice-dark" : "notice-light");
    }
}

class Painting : public testing::Test {
protected:
    Painting() { image.fill(Qt::transparent); }
    void paint(const Layer& root, double time = 0) {
        QPainter painter(&image);
        layers.paint(painter, root, time, flipped(image.rect()), image.rect());
    }

    Symbols symbols{QStringLiteral(GOLDEN_SYMBOLS)};
    LayerPainter layers{symbols};
    QImage image{400, 300, QImage::Format_ARGB32_Premultiplied};
    GoldenScene scene{400, 300, Qt::transparent};
};

TEST_F(Painting, BlursAnUnchangedShadowOnce) {
    const auto card = scene.add({40, 40, 100, 90});
    makeGlass(*card, 16);
    paint(*scene.root());
    EXPECT_EQ(layers.shadows().blurred(), 1U);
    card->change().transform.rotation = 0.3;
    card->change().shadowOpacity = 0.5;
    card->change().position.x += 20;
    paint(*scene.root());
    EXPECT_EQ(layers.shadows().blurred(), 1U) << "neither turning nor moving nor fading changes its outline";
    card->change().shadowRadius = 14;
    paint(*scene.root());
    EXPECT_EQ(layers.shadows().blurred(), 2U);
}

// What is turned is painted once and then laid down, as long as it looks the same; a painter that keeps nothing paints
// the same picture each time.
TEST_F(Painting, KeepsAPictureOfWhatIsMerelyMoved) {
    VirtualRunLoop loop;
    LayerTicker ticker(loop, layers);
    LayerSurface surface(ticker, scene.root(), [](const QRegion&) {});
    surface.show();
    const auto picture = [&](LayerPainter& painting) {
        QImage shown(400, 300, QImage::Format_ARGB32_Premultiplied);
        shown.fill(Qt::transparent);
        QPainter painter(&shown);
        painting.paintRegion(painter, *scene.root(), loop.now(), flipped(shown.rect()), shown.rect());
        return shown;
    };
    unsigned long made = 0;
    const auto expectPictures = [&](unsigned long more, const char* what) {
        LayerPainter forgetful(symbols);
        EXPECT_EQ(picture(layers), picture(forgetful)) << what;
        made += more;
        EXPECT_EQ(layers.sprites().made(), made) << what;
    };
    const auto card = scene.add({40, 40, 100, 90});
    makeGlass(*card, 16);
    addRim(*card);
    card->change().transform.rotation = 0.3;
    expectPictures(1, "new");
    card->change().position = {200, 120};
    card->change().transform.rotation = -0.4;
    card->change().opacity = 0.6;
    expectPictures(0, "moved, turned and faded");
    card->change().hidden = true;
    expectPictures(0, "hidden");
    card->change().hidden = false;
    expectPictures(0, "shown again");
    card->addAnimation("swing", Animation::basic(KeyPath::RotationZ, 0.0, 1.0, 1, RBEaseOut));
    loop.advance(0.4);
    expectPictures(0, "swinging");
    loop.advance(1);
    card->change().backgroundColor = Color{0.2, 0.4, 0.6, 0.8};
    expectPictures(1, "in another colour");
    card->change().bounds.width = 120;
    expectPictures(1, "wider");
    const auto knob = GoldenScene::addTo(*card, {10, 10, 30, 30});
    knob->change().backgroundColor = Color{1, 0, 0, 1};
    expectPictures(1, "with a part more");
    knob->change().position.x += 20;
    expectPictures(1, "with a part elsewhere");
    knob->removeFromSuperlayer();
    expectPictures(1, "with a part less");

    const auto bitmap = [](QColor color) {
        QImage plain(60, 40, QImage::Format_ARGB32_Premultiplied);
        plain.fill(color);
        return std::make_shared<LinuxBitmap>(plain);
    };
    const auto photo = scene.add({250, 150, 60, 40});
    photo->change().contents = bitmap(Qt::darkGreen);
    expectPictures(0, "a picture that stands upright");
    photo->change().transform.rotation = 0.5;
    expectPictures(1, "a picture that is turned");
    photo->change().position.y -= 50;
    expectPictures(0, "a picture that falls");
    photo->change().contents = bitmap(Qt::darkRed);
    expectPictures(1, "another picture");
}

// What is painted lies within what was announced: otherwise moving things leave traces.
TEST_F(Painting, TouchesNothingOutsideThePaintedRectangle) {
    const auto card = scene.add({150, 100, 100, 90});
    makeGlass(*card, 16);
    addRim(*card);
    card->change().transform = {.translation = {5, 3}, .rotation = 0.7, .scale = 1.1};
    const auto rope = GoldenScene::addTo(*card, {0, 0, 10, 10});
    rope->change().content = ShapeContent{.path = Path().moveTo({-30, 0}).quadTo({20, 90}, {60, 20}),
                                          .strokeColor = Color{1, 0, 0, 1},
                                          .lineWidth = 6,
                                          .lineCap = LineCap::Round};
    rope->change().shadowOpacity = 1;
    paint(*scene.root());
    const QRectF announced = paintedRect(*scene.root(), 0, flipped(image.rect()));
    EXPECT_TRUE(QRectF(image.rect()).contains(announced)) << "the stage is large enough to tell";
    const QRect allowed = announced.toAlignedRect();
    int outside = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            outside += !allowed.contains(x, y) && qAlpha(image.pixel(x, y)) != 0 ? 1 : 0;
        }
    }
    EXPECT_EQ(outside, 0);
    card->change().opacity = 0;
    EXPECT_TRUE(paintedRect(*scene.root(), 0, flipped(image.rect())).isEmpty());
}

} // namespace
} // namespace rb
