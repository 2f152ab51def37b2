#include "desktops/virtual/Thumbnails.h"

#include "desktops/virtual/Files.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace rb {

std::shared_ptr<const Bitmap> VirtualThumbnails::imageThumb(const std::string& path, int maxPixelSize) {
    const Size size = files_.imageSize(path);
    if (size.width <= 0 || size.height <= 0) {
        return nullptr;
    }
    const double shrink = std::min(1.0, maxPixelSize / std::max(size.width, size.height));
    return std::make_shared<VirtualBitmap>("picture " + path,
                                           Size{std::round(size.width * shrink), std::round(size.height * shrink)});
}

Image VirtualThumbnails::iconForFile(const std::string& path) {
    return std::make_shared<VirtualBitmap>("icon " + path, Size{64, 64});
}

Image VirtualThumbnails::iconForFile(const std::string& path, double side) {
    return std::make_shared<VirtualBitmap>("icon " + path, Size{64, 64}, Size{side, side});
}

DecodedPicture VirtualThumbnails::squareThumb(const SharedBytes& data, double side, double cornerRadius) {
    ++decoded_;
    Size pixels;
    const std::string text(data->begin(), data->end());
    if (std::sscanf(text.c_str(), "%lfx%lf", &pixels.width, &pixels.height) != 2) {
        return {};
    }
    const std::string content = "thumb " + text + " radius " + std::to_string(static_cast<int>(cornerRadius));
    return {pixels, std::make_shared<VirtualBitmap>(content, Size{2 * side, 2 * side}, Size{side, side})};
}

bool VirtualThumbnails::canDecode(const std::string& path) {
    return files_.imageSize(path).width > 0;
}

SharedBytes VirtualThumbnails::pngData(const SharedBytes& data, const std::atomic<bool>& givenUp) {
    ++decoded_;
    const std::string text = "PNG of " + std::string(data->begin(), data->end());
    return damaged_ || givenUp ? nullptr : std::make_shared<const Bytes>(text.begin(), text.end());
}

Handle VirtualThumbnails::requestDocumentThumbnail(const std::string& path, Size /*size*/, double /*scale*/,
                                                   std::function<void(std::shared_ptr<const Bitmap>)> answer) {
    const unsigned long number = next_++;
    requests_->emplace(number, Request{path, std::move(answer)});
    return Handle([weak = std::weak_ptr<Requests>(requests_), number] {
        if (const auto requests = weak.lock()) {
            requests->erase(number);
        }
    });
}

std::vector<std::string> VirtualThumbnails::pending() const {
    std::vector<std::string> paths;
    for (const auto& [number, request] : *requests_) {
        paths.push_back(request.path);
    }
    return paths;
}

void VirtualThumbnails::answer(const std::string& path) {
    const auto found = std::find_if(requests_->begin(), requests_->end(),
                                    [&](const auto& entry) { return entry.second.path == path; });
    if (found != requests_->end()) {
        const auto answer = std::move(found->second.answer);
        requests_->erase(found);
        answer(std::make_shared<VirtualBitmap>("rendering " + path, Size{120, 120}));
    }
}

} // namespace rb
