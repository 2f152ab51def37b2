#include "desktops/linux/CaptureFacts.h"

#include "desktops/linux/CaptureAttributes.h"
#include "desktops/linux/PixelMatch.h"
#include "desktops/linux/XConnection.h"

#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QScreen>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <xcb/xcb.h>

namespace rb {

namespace {

constexpr std::uint32_t opaque = 0xff000000;
constexpr double longestBurst = 0.5;  // seconds of searching in a row
constexpr double greatestShare = 0.1; // of the time, after that

double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// What the X server shows now; empty when it can't be read as pixels of 32 bits.
PixelPicture wholeScreen(XConnection& connection) {
    xcb_connection_t* x = connection.get();
    const XReply<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(x, xcb_get_geometry(x, connection.root()), nullptr));
    if (!size) {
        return {};
    }
    const XReply<xcb_get_image_reply_t> image(xcb_get_image_reply(
        x, xcb_get_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, connection.root(), 0, 0, size->width, size->height, UINT32_MAX),
        nullptr));
    const std::size_t count = std::size_t{size->width} * size->height;
    if (!image || static_cast<std::size_t>(xcb_get_image_data_length(image.get())) != count * sizeof(std::uint32_t)) {
        return {};
    }
    PixelPicture picture{.width = size->width, .height = size->height, .pixels = std::vector<std::uint32_t>(count)};
    std::memcpy(picture.pixels.data(), xcb_get_image_data(image.get()), count * sizeof(std::uint32_t));
    for (std::uint32_t& pixel : picture.pixels) {
        pixel |= opaque;
    }
    return picture;
}

PixelPicture pictureOf(const std::string& path, const PixelPicture& screen) {
    QImageReader reader(QString::fromStdString(path));
    reader.setDecideFormatFromContent(true);
    // What is larger than the screen wasn't taken from it, and needn't be decoded.
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > screen.width || size.height() > screen.height) {
        return {};
    }
    const QImage image = reader.read().convertToFormat(QImage::Format_RGB32);
    PixelPicture picture{.width = image.width(), .height = image.height(), .pixels = {}};
    picture.pixels.reserve(static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.height()));
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const std::uint32_t*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            picture.pixels.push_back(line[x] | opaque);
        }
    }
    return picture;
}

// In points from the top left of the primary screen, by the scale of the screen that the middle is on.
PropertyArray inPoints(const PixelRect& place) {
    const QScreen* primary = QGuiApplication::primaryScreen();
    const QScreen* own = primary;
    for (const QScreen* screen : QGuiApplication::screens()) {
        // A screen's corner is the same in pixels and in points.
        const QRect pixels(screen->geometry().topLeft(),
                           (QSizeF(screen->size()) * screen->devicePixelRatio()).toSize());
        if (pixels.contains(place.x + place.width / 2, place.y + place.height / 2)) {
            own = screen;
        }
    }
    const QPoint corner = own->geometry().topLeft();
    const QPoint origin = primary->geometry().topLeft();
    const double ratio = own->devicePixelRatio();
    return {corner.x() - origin.x() + (place.x - corner.x()) / ratio,
            corner.y() - origin.y() + (place.y - corner.y()) / ratio, place.width / ratio, place.height / ratio};
}

} // namespace

bool LinuxCaptureFacts::isMarkedAsCapture(const std::string& path) const {
    return readAttribute(path, captureMarkAttribute).has_value();
}

std::optional<PropertyValue> LinuxCaptureFacts::captureRectangle(const std::string& path) const {
    if (const auto bytes = readAttribute(path, captureRectAttribute)) {
        auto numbers = numbersOfPropertyList(*bytes);
        return numbers ? std::optional<PropertyValue>(std::move(*numbers)) : std::nullopt;
    }
    // The search takes the main thread's time. A storm of files gets little of it and simply hangs.
    const double begin = monotonicSeconds();
    searched_ = std::max(searched_ - (begin - lastSearch_) * greatestShare, 0.0);
    lastSearch_ = begin;
    if (searched_ > longestBurst) {
        return std::nullopt;
    }
    const PixelPicture screen = wholeScreen(connection_);
    const auto place = onlyPlaceOf(pictureOf(path, screen), screen);
    searched_ += monotonicSeconds() - begin;
    if (!place) {
        return std::nullopt;
    }
    return inPoints(*place);
}

} // namespace rb
