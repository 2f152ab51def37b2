#pragma once

#include "motion/Image.h"
#include "platform/Bytes.h"
#include "platform/Handle.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace rb {

struct DecodedPicture {
    // Of the first picture in the data; zero when it can't be decoded.
    Size pixelSize = {};
    // Nothing when it can't be decoded or measures nothing.
    Image thumbnail = {};
};

// Pictures of files. Main thread only.
class Thumbnails {
public:
    virtual ~Thumbnails() = default;

    // A picture file decoded with its orientation applied, at most `maxPixelSize` on its longer side. Null when it
    // can't be opened or read.
    virtual std::shared_ptr<const Bitmap> imageThumb(const std::string& path, int maxPixelSize) = 0;
    // The icon that the system shows for the file; also for a path that leads nowhere.
    virtual Image iconForFile(const std::string& path) = 0;
    // The same, a square of that many points.
    virtual Image iconForFile(const std::string& path, double side) = 0;
    // The picture that some bytes hold, filling a square of `side` points with rounded corners, sharp on every screen.
    // Any thread.
    virtual DecodedPicture squareThumb(const SharedBytes& data, double side, double cornerRadius) = 0;
    // Whether the file's beginning is that of a picture that pngData() can take. Decodes nothing.
    virtual bool canDecode(const std::string& path) = 0;
    // The picture that a file's bytes hold, in its own size, as PNG. Null when it can't be decoded, and when `givenUp`
    // becomes true. Takes a second for twelve megapixels. Any thread.
    virtual SharedBytes pngData(const SharedBytes& data, const std::atomic<bool>& givenUp) = 0;
    // A rendering of a document's first page within `size` points at `scale` pixels per point. Asked of the system in
    // the background; the answer comes on the main thread, and only when a real rendering was made.
    virtual Handle requestDocumentThumbnail(const std::string& path, Size size, double scale,
                                            std::function<void(std::shared_ptr<const Bitmap>)> answer) = 0;
};

} // namespace rb
