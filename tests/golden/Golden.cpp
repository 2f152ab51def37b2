#include "tests/golden/Golden.h"

#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/LayerPainter.h"
#include "desktops/linux/Symbols.h"

#include <QDir>
#include <QPainter>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace rb {

namespace {

QString referencePath(const std::string& name) {
    return QStringLiteral(GOLDEN_REFERENCES "/%1.png").arg(QString::fromStdString(name));
}

bool pixelDiffers(QRgb a, QRgb b) {
    const auto off = [](int x, int y) { return std::abs(x - y) > goldenTolerance.channel; };
    return off(qRed(a), qRed(b)) || off(qGreen(a), qGreen(b)) || off(qBlue(a), qBlue(b)) || off(qAlpha(a), qAlpha(b));
}

// Marks where they differ in red; null when they are alike enough.
QImage difference(const QImage& reference, const QImage& picture) {
    QImage marked(reference.size().expandedTo(picture.size()), QImage::Format_ARGB32);
    marked.fill(Qt::white);
    double differing = 0;
    for (int y = 0; y < marked.height(); ++y) {
        for (int x = 0; x < marked.width(); ++x) {
            if (!reference.valid(x, y) || !picture.valid(x, y) ||
                pixelDiffers(reference.pixel(x, y), picture.pixel(x, y))) {
                marked.setPixel(x, y, 0xFFFF0000U);
                ++differing;
            }
        }
    }
    const bool alike =
        reference.size() == picture.size() && differing <= goldenTolerance.pixels * marked.width() * marked.height();
    return alike ? QImage() : marked;
}

void writeDifference(const std::string& name, const QImage& reference, const QImage& picture, const QImage& marked) {
    QImage sheet(marked.width() * 3, marked.height(), QImage::Format_ARGB32);
    sheet.fill(Qt::magenta);
    QPainter painter(&sheet);
    painter.drawImage(0, 0, reference);
    painter.drawImage(marked.width(), 0, picture);
    painter.drawImage(2 * marked.width(), 0, marked);
    painter.end();
    QDir().mkpath(QStringLiteral(GOLDEN_DIFFERENCES));
    sheet.save(QStringLiteral(GOLDEN_DIFFERENCES "/%1.png").arg(QString::fromStdString(name)));
}

} // namespace

GoldenResult checkGolden(const QImage& picture, const std::string& name, GoldenMode mode) {
    QImage shown = picture.convertToFormat(QImage::Format_ARGB32);
    shown.setDevicePixelRatio(1);
    if (mode == GoldenMode::Accept) {
        return shown.save(referencePath(name)) ? GoldenResult::Matches : GoldenResult::CannotWrite;
    }
    const QImage reference = QImage(referencePath(name)).convertToFormat(QImage::Format_ARGB32);
    if (reference.isNull()) {
        return GoldenResult::MissingReference;
    }
    const QImage marked = difference(reference, shown);
    if (marked.isNull()) {
        return GoldenResult::Matches;
    }
    writeDifference(name, reference, shown, marked);
    return GoldenResult::Differs;
}

void expectGolden(const QImage& picture, const std::string& name) {
    const bool accept = qEnvironmentVariable("ROOKBAY_ACCEPT_GOLDEN") == QStringLiteral("1");
    switch (checkGolden(picture, name, accept ? GoldenMode::Accept : GoldenMode::Compare)) {
    case GoldenResult::Matches:
        break;
    case GoldenResult::Differs:
        ADD_FAILURE() << name << " looks different, see " GOLDEN_DIFFERENCES "/" << name << ".png";
        break;
    case GoldenResult::MissingReference:
        ADD_FAILURE() << "no reference for " << name << "; look at it and run with ROOKBAY_ACCEPT_GOLDEN=1";
        break;
    case GoldenResult::CannotWrite:
        ADD_FAILURE() << "cannot write " << referencePath(name).toStdString();
        break;
    }
}

GoldenScene::GoldenScene(double width, double height, const QColor& backdrop)
    : backdrop_(backdrop) {
    root_->change().setFrame({0, 0, width, height});
}

std::shared_ptr<Layer> GoldenScene::addTo(Layer& superlayer, const Rect& frame) {
    auto layer = Layer::create();
    layer->change().setFrame(frame);
    superlayer.addSublayer(layer);
    return layer;
}

QImage GoldenScene::picture(double pixelsPerPoint) const {
    const QRectF stage({}, QSizeF(root_->model().bounds.width, root_->model().bounds.height));
    QImage image((stage.size() * pixelsPerPoint).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelsPerPoint);
    image.fill(backdrop_);
    Symbols symbols(QStringLiteral(GOLDEN_SYMBOLS));
    LayerPainter layers(symbols);
    QPainter painter(&image);
    layers.paint(painter, *root_, 0, flipped(stage), stage);
    painter.end();
    return image;
}

void GoldenScene::expect(const std::string& name) const {
    expectGolden(picture(1), name + "@1x");
    expectGolden(picture(2), name + "@2x");
}

} // namespace rb
