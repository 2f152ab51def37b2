#include "clipboard/ClipItem.h"

#include "clipboard/ClipText.h"

#include <utility>

namespace rb {

namespace {

template <typename Type>
const Type* valueOf(const ArchiveObject& archived, const char* key) {
    const auto found = archived.find(key);
    return found == archived.end() ? nullptr : std::get_if<Type>(&found->second);
}

template <typename Type>
std::optional<Type> optionalOf(const ArchiveObject& archived, const char* key) {
    const Type* value = valueOf<Type>(archived, key);
    return value ? std::optional<Type>(*value) : std::nullopt;
}

template <typename Type>
ArchiveValue archivedValue(const std::optional<Type>& value) {
    return value ? ArchiveValue(*value) : ArchiveValue();
}

} // namespace

RBClipItem::RBClipItem(Content content, double when)
    : date(when) {
    content.textLength = content.text ? utf16Length(*content.text) : 0;
    content_ = std::make_shared<const Content>(std::move(content));
}

RBClipItem RBClipItem::ofText(std::string text, double date) {
    return {Content{.kind = Text, .text = std::move(text)}, date};
}

RBClipItem RBClipItem::ofImage(const SharedBytes& imageData, std::string imageType, double date) {
    return {Content{.kind = Picture,
                    .imageData = std::make_shared<const Blob>(imageData),
                    .imageType = std::move(imageType)},
            date};
}

RBClipItem RBClipItem::ofFiles(std::vector<std::string> paths, double date) {
    return {Content{.kind = Files, .paths = std::move(paths)}, date};
}

const ArchiveClass& RBClipItem::archiveClass() {
    static const ArchiveClass itemClass{"RBClipItem",
                                        {{"kind", ArchiveKind::Integer},
                                         {"text", ArchiveKind::String},
                                         {"imageData", ArchiveKind::Data},
                                         {"imageType", ArchiveKind::String},
                                         {"paths", ArchiveKind::Strings},
                                         {"date", ArchiveKind::Date}}};
    return itemClass;
}

ArchiveObject RBClipItem::encode() const {
    return {{"kind", content_->kind},
            {"text", archivedValue(content_->text)},
            {"imageData", content_->imageData ? ArchiveValue(content_->imageData) : ArchiveValue()},
            {"imageType", archivedValue(content_->imageType)},
            {"paths", archivedValue(content_->paths)},
            {"date", ArchiveDate{date}}};
}

RBClipItem RBClipItem::decode(const ArchiveObject& archived, double now) {
    const auto* when = valueOf<ArchiveDate>(archived, "date");
    const auto* image = valueOf<SharedBlob>(archived, "imageData");
    return {Content{.kind = optionalOf<std::int64_t>(archived, "kind").value_or(Text),
                    .text = optionalOf<std::string>(archived, "text"),
                    .imageData = image ? *image : nullptr,
                    .imageType = optionalOf<std::string>(archived, "imageType"),
                    .paths = optionalOf<std::vector<std::string>>(archived, "paths")},
            when ? when->seconds : now};
}

bool RBClipItem::isValid() const {
    switch (content_->kind) {
    case Text:
        return content_->text && !content_->text->empty();
    case Picture:
        return content_->imageData && content_->imageData->size() > 0 && content_->imageType &&
               !content_->imageType->empty();
    case Files:
        return content_->paths && !content_->paths->empty();
    default:
        return false;
    }
}

bool RBClipItem::sameContentAs(const RBClipItem& other) const {
    if (content_->kind != other.content_->kind) {
        return false;
    }
    switch (content_->kind) {
    case Text:
        return content_->text == other.content_->text;
    case Picture:
        return content_->imageData == other.content_->imageData ||
               (content_->imageData && other.content_->imageData &&
                content_->imageData->sameAs(*other.content_->imageData));
    case Files:
        return content_->paths == other.content_->paths;
    default:
        return false;
    }
}

} // namespace rb
