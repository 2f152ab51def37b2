#include "desktops/linux/PasteboardForms.h"

#include "desktops/linux/UriList.h"
#include "desktops/linux/Utf8.h"

#include <QBuffer>
#include <QImage>
#include <QString>

#include <utility>

namespace rb {

namespace {

constexpr const char* utf8Text = "UTF8_STRING";
constexpr const char* utf8Mime = "text/plain;charset=utf-8";
constexpr const char* plainMime = "text/plain";
constexpr const char* latinText = "STRING";

SharedBytes bytesOf(const std::string& text) {
    return std::make_shared<const Bytes>(text.begin(), text.end());
}

SelectionForm form(const char* target, SharedBytes bytes) {
    return {target, target, [bytes = std::move(bytes)] { return PromisedBytes::settled(bytes); }};
}

void addText(std::vector<SelectionForm>& forms, const std::string& text) {
    const SharedBytes bytes = bytesOf(text);
    for (const char* target : {utf8Text, utf8Mime, plainMime}) {
        forms.push_back(form(target, bytes));
    }
    forms.push_back({"TEXT", utf8Text, [bytes] { return PromisedBytes::settled(bytes); }});
    forms.push_back({latinText, latinText, [text] {
                         const QByteArray latin = QString::fromStdString(text).toLatin1();
                         return PromisedBytes::settled(std::make_shared<const Bytes>(latin.begin(), latin.end()));
                     }});
}

void addFiles(std::vector<SelectionForm>& forms, const std::vector<std::string>& files) {
    std::string list;
    std::string copied = "copy";
    std::string paths;
    for (const std::string& path : files) {
        list += fileUri(path) + "\r\n";
        copied += "\n" + fileUri(path);
        paths += (paths.empty() ? "" : "\n") + path;
    }
    forms.push_back(form("text/uri-list", bytesOf(list)));
    forms.push_back(form("x-special/gnome-copied-files", bytesOf(copied)));
    forms.push_back(form("x-special/mate-copied-files", bytesOf(copied)));
    addText(forms, paths);
}

SharedBytes asPng(const SharedBytes& picture) {
    QImage image;
    QByteArray png;
    QBuffer buffer(&png);
    if (!image.loadFromData(picture->data(), static_cast<int>(picture->size())) || !buffer.open(QIODevice::WriteOnly) ||
        !image.save(&buffer, "PNG")) {
        return nullptr;
    }
    return std::make_shared<const Bytes>(png.begin(), png.end());
}

} // namespace

std::vector<std::string> targetsOf(const std::string& type) {
    if (type == PasteboardType::String) {
        return {utf8Text, utf8Mime, "text/plain;charset=UTF-8", latinText, plainMime};
    }
    if (type == PasteboardType::Png) {
        return {"image/png"};
    }
    if (type == PasteboardType::Tiff) {
        return {"image/tiff"};
    }
    if (type == PasteboardType::FileUrl) {
        return {"text/uri-list", "x-special/gnome-copied-files", "x-special/mate-copied-files"};
    }
    return {type};
}

std::vector<SelectionForm> formsOf(const PasteboardContents& contents, RunLoop& loop) {
    std::vector<SelectionForm> forms;
    if (const auto* text = std::get_if<std::string>(&contents)) {
        addText(forms, *text);
    } else if (const auto* data = std::get_if<PasteboardData>(&contents)) {
        if (data->type == PasteboardType::Png) {
            forms.push_back(form("image/png", data->bytes));
        } else if (data->type == PasteboardType::Tiff) {
            forms.push_back(form("image/tiff", data->bytes));
            // Many programs know only this one.
            forms.push_back({"image/png", "image/png", [&loop, bytes = data->bytes] {
                                 return PromisedBytes::begin(
                                     loop, [bytes](const std::atomic<bool>&) { return asPng(bytes); });
                             }});
        }
    } else if (const auto* files = std::get_if<PasteboardFiles>(&contents)) {
        addFiles(forms, files->paths);
    } else {
        const auto& file = std::get<PasteboardPictureFile>(contents);
        addFiles(forms, {file.path});
        if (file.png) {
            forms.push_back({"image/png", "image/png", [png = file.png] { return png; }, file.png});
        }
    }
    return forms;
}

std::string textFrom(const std::string& target, const Bytes& bytes) {
    std::string text(bytes.begin(), bytes.end());
    if (const bool latin = target == latinText || (target == plainMime && !isValidUtf8(text)); latin) {
        text = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())).toStdString();
    } else if (!isValidUtf8(text)) {
        text = wellFormedUtf8(text);
    }
    std::erase(text, '\0');
    return text;
}

} // namespace rb
