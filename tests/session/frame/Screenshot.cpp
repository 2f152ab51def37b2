#include "tests/session/frame/Session.h"

#include <QImage>
#include <QString>

namespace rb {

bool saveScreenshot(const XClient& x, const std::string& file) {
    // Its size now, for outputs change it.
    const auto geometry =
        ownReply(xcb_get_geometry_reply(x.connection(), xcb_get_geometry(x.connection(), x.root()), nullptr));
    if (!geometry) {
        return false;
    }
    const std::uint16_t width = geometry->width;
    const std::uint16_t height = geometry->height;
    const auto cookie = xcb_get_image(x.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, x.root(), 0, 0, width, height, ~0U);
    const auto reply = ownReply(xcb_get_image_reply(x.connection(), cookie, nullptr));
    // Only true-colour screens, which have four bytes a pixel.
    if (!reply ||
        static_cast<std::int64_t>(xcb_get_image_data_length(reply.get())) < std::int64_t{4} * width * height) {
        return false;
    }
    const QImage image(xcb_get_image_data(reply.get()), width, height, width * 4, QImage::Format_RGB32);
    return image.save(QString::fromStdString(file), "PNG");
}

} // namespace rb
