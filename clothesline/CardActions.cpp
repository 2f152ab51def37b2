#include "clothesline/CardActions.h"

#include "app/Toasts.h"
#include "clothesline/Clothesline.h"
#include "clothesline/FileNames.h"
#include "platform/FileOperations.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Pasteboards.h"
#include "platform/Sounds.h"
#include "platform/Thumbnails.h"
#include "platform/Workspace.h"

#include <algorithm>
#include <cctype>
#include <memory>

namespace rb {

namespace {

// Beyond are mistakes, and what nobody can paste.
constexpr std::size_t mostPictureBytes = 536'870'912;

bool isNamedPng(const std::string& path) {
    std::string ending = path.substr(path.find_last_of("./"));
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == ".png";
}

// A file's picture as it is now. The file is opened at once and its bytes are read as soon as a thread is free, so what
// becomes of the file afterwards doesn't matter. Null for what doesn't even begin like a picture.
std::shared_ptr<PromisedBytes> promisePng(const Desktop& desktop, const std::string& path) {
    const auto file = desktop.fileOperations.open(path, mostPictureBytes);
    if (!file || !desktop.thumbnails.canDecode(path)) {
        return nullptr;
    }
    return PromisedBytes::begin(desktop.runLoop, [file, &thumbnails = desktop.thumbnails,
                                                  asItIs = isNamedPng(path)](const std::atomic<bool>& givenUp) {
        const SharedBytes bytes = file->contents(givenUp);
        return asItIs || !bytes ? bytes : thumbnails.pngData(bytes, givenUp);
    });
}

} // namespace

void CardActions::copyItem(const RBPegItemRef& item) {
    if (!line_.contains(*item)) {
        return;
    }
    if (!desktop_.files.facts(item->path).exists) {
        line_.prune();
        return;
    }
    desktop_.pasteboards.general().write(
        PasteboardPictureFile{.path = item->path, .png = item->isImage ? promisePng(desktop_, item->path) : nullptr});
    line_.showPill(item);
    line_.nudge(*item, 3);
}

void CardActions::openItem(const RBPegItem& item) {
    desktop_.workspace.openFile(item.path, {});
}

void CardActions::revealItem(const RBPegItem& item) {
    desktop_.workspace.revealFiles({item.path});
}

void CardActions::copyPathOf(const RBPegItem& item) {
    desktop_.pasteboards.general().write(item.path);
    toasts_.RBShowToast("已拷贝路径", "doc.on.doc.fill", SystemColor::Blue);
}

void CardActions::trashItem(const RBPegItemRef& item) {
    const std::string path = item->path;
    const bool begun = line_.transit().send(
        path, [&](FileOperations::Done done) { desktop_.fileOperations.trashItem(path, std::move(done)); },
        [this, path, weak = std::weak_ptr<RBPegItem>(item)](const std::optional<FileFailure>& failure) {
            if (failure) {
                desktop_.log.write("could not trash " + path + ": " + failure->reason);
                desktop_.sounds.beep();
                return;
            }
            line_.playTrash();
            if (const RBPegItemRef card = weak.lock()) {
                line_.removeItem(card, {.quietly = true, .fall = true});
            }
        });
    if (!begun) {
        desktop_.sounds.beep();
    }
}

void CardActions::saveToDesktop(const RBPegItemRef& item) {
    const std::string path = item->path;
    const auto saved = [this, weak = std::weak_ptr<RBPegItem>(item)](const std::optional<FileFailure>& failure) {
        if (failure) {
            desktop_.log.write("could not save to Desktop: " + failure->reason);
            desktop_.sounds.beep();
            return;
        }
        if (const RBPegItemRef card = weak.lock()) {
            line_.removeItem(card, {.quietly = true, .fall = false});
        }
        toasts_.RBShowToast("已存到桌面", "checkmark.circle.fill", SystemColor::Green);
    };
    const bool begun = line_.transit().send(
        path,
        [&](FileOperations::Done done) {
            placeUnderFreeName(
                desktop_.files, desktop_.files.desktopDirectory(), lastPathComponent(path),
                [&operations = desktop_.fileOperations, path](const std::string& target, FileOperations::Done placed) {
                    operations.moveItem(path, target, std::move(placed));
                },
                std::move(done));
        },
        saved);
    if (!begun) {
        desktop_.sounds.beep();
    }
}

} // namespace rb
