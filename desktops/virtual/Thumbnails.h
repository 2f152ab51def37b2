#pragma once

#include "desktops/virtual/Bitmap.h"
#include "platform/Thumbnails.h"

#include <map>
#include <string>
#include <vector>

namespace rb {

class VirtualFiles;

// Pictures of the files in memory. Renderings of documents arrive when the test lets them.
class VirtualThumbnails final : public Thumbnails {
public:
    explicit VirtualThumbnails(const VirtualFiles& files)
        : files_(files) {}

    std::shared_ptr<const Bitmap> imageThumb(const std::string& path, int maxPixelSize) override;
    Image iconForFile(const std::string& path) override;
    Image iconForFile(const std::string& path, double side) override;
    // Bytes that say "WIDTHxHEIGHT" are a picture of that many pixels, all others are damaged.
    DecodedPicture squareThumb(const SharedBytes& data, double side, double cornerRadius) override;
    bool canDecode(const std::string& path) override;
    // "PNG of DATA", unless the pictures are damaged.
    SharedBytes pngData(const SharedBytes& data, const std::atomic<bool>& givenUp) override;
    Handle requestDocumentThumbnail(const std::string& path, Size size, double scale,
                                    std::function<void(std::shared_ptr<const Bitmap>)> answer) override;

    // Paths of the renderings asked for and neither answered nor dropped.
    std::vector<std::string> pending() const;
    void answer(const std::string& path);
    // Pictures turn out to be broken behind their beginnings.
    void setDamaged(bool damaged) { damaged_ = damaged; }
    // How many pictures in memory were decoded.
    int decoded() const { return decoded_; }

private:
    struct Request {
        std::string path;
        std::function<void(std::shared_ptr<const Bitmap>)> answer;
    };
    using Requests = std::map<unsigned long, Request>; // by number, so a spent handle finds nothing

    const VirtualFiles& files_;
    std::shared_ptr<Requests> requests_ = std::make_shared<Requests>();
    unsigned long next_ = 0;
    int decoded_ = 0;
    bool damaged_ = false;
};

} // namespace rb
