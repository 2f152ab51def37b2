// What one frame of the swinging line costs this process, beside QGraphicsView with the same pictures, both on a
// translucent widget. Run it at the scale to be measured (QT_SCALE_FACTOR=2).
// usage: rookbay-line-frames [cards] [frames]

#include "app/DefaultsKeys.h"
#include "app/Toasts.h"
#include "benchmarks/Table.h"
#include "clothesline/Clothesline.h"
#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/LayerSurface.h"
#include "tests/golden/Stage.h"

#include <QApplication>
#include <QGraphicsPixmapItem>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QPaintEvent>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QWidget>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <vector>

namespace rb {

namespace {

constexpr double frameTime = 1.0 / 60;
constexpr Size lineSize{1512, 210};

double cpuMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Noise, so that nothing is cheaper than in a photo.
void savePhoto(const QString& file) {
    QImage photo(640, 480, QImage::Format_RGB32);
    QRandomGenerator random(1);
    random.generate(reinterpret_cast<quint32*>(photo.bits()), reinterpret_cast<quint32*>(photo.bits()) + 640 * 480);
    photo.save(file, "png");
}

// The line's layers on a widget of their own.
class LineWidget final : public QWidget {
public:
    explicit LineWidget(LayerTicker& ticker)
        : surface(ticker, Layer::create(), [this](const QRegion& region) { repaint(region); }) {
        setAttribute(Qt::WA_TranslucentBackground);
        resize(static_cast<int>(lineSize.width), static_cast<int>(lineSize.height));
        surface.root()->change().setFrame({0, 0, lineSize.width, lineSize.height});
        surface.setTransform(flipped(QRectF(rect())));
    }
    LayerSurface surface;

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        surface.paintRegion(painter, event->region());
    }
};

struct FrameCosts {
    std::vector<double> swinging; // milliseconds, each the mean of some frames
    std::vector<double> still;
};

FrameCosts measureLine(const QTemporaryDir& folder, int cards, int frames) {
    Stage stage("light");
    const auto useScreen = [&](double width) {
        stage.desktop.screens().set({{.id = 1,
                                      .frame = {0, 0, width, 900},
                                      .visibleFrame = {0, 0, width, 872},
                                      .backingScaleFactor = qApp->devicePixelRatio()}});
    };
    useScreen(4000); // so many don't fit the width that is measured; they stay when the screen shrinks
    const Desktop services = stage.services();
    Toasts toasts(services);
    stage.desktop.userDefaults().setObject(DefaultsKey::ClotheslineInboxOffered, true); // nobody is asked meanwhile
    RBClothesline line(services, toasts);
    LayerTicker ticker(stage.desktop.runLoop(), stage.painter);
    LineWidget widget(ticker);
    line.start();
    line.setPinned(true);
    line.setRevealed(true);
    for (int i = 0; i < cards; ++i) {
        const QString file = folder.filePath(QStringLiteral("%1.%2").arg(i).arg(i % 2 == 0 ? "png" : "txt"));
        savePhoto(file);
        line.hangURL(file.toStdString(), {.quietly = true});
    }
    useScreen(lineSize.width);
    const auto slide = stage.desktop.panels().visible().front()->rootLayer()->sublayers().back();
    widget.surface.root()->addSublayer(slide);
    widget.show();
    widget.surface.show();
    qApp->processEvents();
    stage.desktop.advance(3);

    FrameCosts costs;
    constexpr int batch = 30;
    for (int done = 0; done < frames; done += batch) {
        for (const auto& item : line.items()) {
            line.nudge(*item, 4);
        }
        stage.desktop.advance(frameTime * 2);
        const double begin = cpuMilliseconds();
        for (int i = 0; i < batch; ++i) {
            stage.desktop.advance(frameTime);
            qApp->processEvents();
        }
        costs.swinging.push_back((cpuMilliseconds() - begin) / batch);
    }
    std::printf("%zu cards\n", line.items().size());
    line.setRevealed(true);
    while (ticker.isTicking()) {
        stage.desktop.advance(0.1);
    }
    const double begin = cpuMilliseconds();
    for (int i = 0; i < batch; ++i) {
        stage.desktop.advance(frameTime);
        qApp->processEvents();
    }
    costs.still.push_back((cpuMilliseconds() - begin) / batch);
    return costs;
}

// Each card as pixmaps: the shadow, made once by a blur, and the face, made once; both turned about the peg.
FrameCosts measureGraphicsView(int cards, int frames, const QPixmap& face, const QPixmap& shadow) {
    QGraphicsScene scene(0, 0, lineSize.width, lineSize.height);
    QGraphicsView view(&scene);
    view.setAttribute(Qt::WA_TranslucentBackground);
    view.viewport()->setAutoFillBackground(false);
    view.setFrameShape(QFrame::NoFrame);
    view.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    view.resize(static_cast<int>(lineSize.width), static_cast<int>(lineSize.height));
    QPainterPath rope(QPointF(-20, 10));
    rope.quadTo({lineSize.width / 2, 64}, {lineSize.width + 20, 10});
    scene.addPath(rope, QPen(Qt::gray, 1.2));
    std::vector<QGraphicsItem*> swings;
    for (int i = 0; i < cards; ++i) {
        auto* card = scene.addPixmap(shadow);
        auto* top = new QGraphicsPixmapItem(face, card);
        for (QGraphicsPixmapItem* item : {card, top}) {
            item->setTransformationMode(Qt::SmoothTransformation);
            item->setOffset(-item->boundingRect().width() / 2, item == card ? -16 : 14);
        }
        card->setPos(120 + i * (lineSize.width - 240) / std::max(1, cards - 1), 30);
        swings.push_back(card);
    }
    view.show();
    qApp->processEvents();
    FrameCosts costs;
    constexpr int batch = 30;
    int frame = 0;
    for (int done = 0; done < frames; done += batch) {
        const double begin = cpuMilliseconds();
        for (int i = 0; i < batch; ++i) {
            ++frame;
            for (std::size_t s = 0; s < swings.size(); ++s) {
                swings[s]->setRotation(4 * std::sin(frame * 0.1 + static_cast<double>(s)));
            }
            qApp->processEvents();
        }
        costs.swinging.push_back((cpuMilliseconds() - begin) / batch);
    }
    return costs;
}

QPixmap pixmap(const QSize& size, const QColor& color, double radius) {
    const double ratio = qApp->devicePixelRatio();
    QPixmap result(size * ratio);
    result.setDevicePixelRatio(ratio);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF({}, size), radius, radius);
    return result;
}

} // namespace

} // namespace rb

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const int cards = argc > 1 ? std::atoi(argv[1]) : 10;
    const int frames = argc > 2 ? std::atoi(argv[2]) : 600;
    const QTemporaryDir folder;
    const rb::FrameCosts line = rb::measureLine(folder, cards, frames);
    const rb::FrameCosts view =
        rb::measureGraphicsView(cards, frames, rb::pixmap({144, 112}, QColor(230, 200, 180), 16),
                                rb::pixmap({194, 162}, QColor(0, 0, 0, 20), 30));
    rb::Table table(
        {"at scale " + QString::number(application.devicePixelRatio()).toStdString(), "Rook Bay", "QGraphicsView"});
    table.addRow({"frame with swinging cards (ms)", rb::summary(line.swinging, 2), rb::summary(view.swinging, 2)});
    table.addRow({"frame with nothing moving (ms)", rb::summary(line.still, 3), ""});
    std::printf("%s", table.text().c_str());
    return 0;
}
