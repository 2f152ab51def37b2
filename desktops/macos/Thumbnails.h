#pragma once

#include "platform/Thumbnails.h"

namespace rb {

class MacThumbnails final : public Thumbnails {
public:
    std::shared_ptr<const Bitmap> imageThumb(const std::string& path, int maxPixelSize) override;
    Image iconForFile(const std::string& path) override;
    Image iconForFile(const std::string& path, double side) override;
    DecodedPicture squareThumb(const SharedBytes& data, double side, double cornerRadius) override;
    bool canDecode(const std::string& path) override;
    SharedBytes pngData(const SharedBytes& data, const std::atomic<bool>& givenUp) override;
    Handle requestDocumentThumbnail(const std::string& path, Size size, double scale,
                                    std::function<void(std::shared_ptr<const Bitmap>)> answer) override;
};

} // namespace rb
