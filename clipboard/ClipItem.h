#pragma once

#include "motion/Geometry.h"
#include "motion/Image.h"
#include "platform/Archives.h"
#include "platform/Blob.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// One entry of the clipboard history. What was copied never changes and is shared with whoever archives it; date and
// thumbnail are the entry's own and belong to the main thread.
class RBClipItem {
public:
    enum Kind : std::int64_t { Text = 0, Picture = 1, Files = 2 };

    static RBClipItem ofText(std::string text, double date);
    // `imageType` is the pasteboard type that the bytes came from.
    static RBClipItem ofImage(const SharedBytes& imageData, std::string imageType, double date);
    static RBClipItem ofFiles(std::vector<std::string> paths, double date);

    // How entries are archived.
    static const ArchiveClass& archiveClass();
    // All keys are written, also those without a value.
    ArchiveObject encode() const;
    // A missing date becomes `now`. The result may be invalid.
    static RBClipItem decode(const ArchiveObject& archived, double now);

    std::int64_t kind() const { return content_->kind; }
    const std::optional<std::string>& text() const { return content_->text; }
    // Null for none. In memory until an archive has it.
    const SharedBlob& imageData() const { return content_->imageData; }
    const std::optional<std::string>& imageType() const { return content_->imageType; }
    const std::optional<std::vector<std::string>>& paths() const { return content_->paths; }

    // Whether it holds what its kind asks for.
    bool isValid() const;
    // Whatever the dates.
    bool sameContentAs(const RBClipItem& other) const;

    double date = 0; // recorded, or copied again, then; seconds since 1970
    // For the menu; nothing until it was asked for or when there is none.
    Image thumbnail = {};
    Size pixelSize = {};
    bool thumbnailAsked = false; // in the background
    // Characters of the text in UTF-16 units.
    std::size_t textLength() const { return content_->textLength; }

private:
    struct Content {
        std::int64_t kind = Text;
        std::optional<std::string> text = {};
        SharedBlob imageData = {};
        std::optional<std::string> imageType = {};
        std::optional<std::vector<std::string>> paths = {};
        std::size_t textLength = 0;
    };
    RBClipItem(Content content, double when);

    std::shared_ptr<const Content> content_;
};

} // namespace rb
