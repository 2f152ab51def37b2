#include "desktops/virtual/Pasteboards.h"

#include "desktops/virtual/RunLoop.h"

#include <algorithm>
#include <utility>

namespace rb {

Handle VirtualPasteboard::answer(std::function<void()> work) {
    loop_.requireMainThread("Pasteboard");
    if (answerDelay_ > 0) {
        return loop_.after(answerDelay_, std::move(work));
    }
    work();
    return {};
}

Handle VirtualPasteboard::onChange(std::function<void()> changed) {
    return tellsChanges_ ? observers_.add(std::move(changed)) : Handle();
}

Handle VirtualPasteboard::offeredTypes(const std::vector<std::string>& types,
                                       std::function<void(std::vector<std::string>)> answered) {
    return answer([this, types, answered = std::move(answered)] {
        std::vector<std::string> offered;
        for (const std::string& type : types) {
            const bool marked =
                std::find(contents_.marks.begin(), contents_.marks.end(), type) != contents_.marks.end();
            if (marked || contents_.data.contains(type) || (type == PasteboardType::Png && promised_) ||
                (type == PasteboardType::String && contents_.text) ||
                (type == PasteboardType::FileUrl && !contents_.files.empty())) {
                offered.push_back(type);
            }
        }
        answered(offered);
    });
}

Handle VirtualPasteboard::readFiles(std::function<void(std::vector<std::string>)> answered) {
    ++reads_;
    return answer([this, answered = std::move(answered)] { answered(contents_.files); });
}

Handle VirtualPasteboard::readString(std::size_t mostBytes, std::function<void(std::optional<std::string>)> answered) {
    ++reads_;
    return answer([this, mostBytes, answered = std::move(answered)] {
        answered(contents_.text && contents_.text->size() <= mostBytes ? contents_.text : std::nullopt);
    });
}

Handle VirtualPasteboard::readData(const std::string& type, std::size_t mostBytes,
                                   std::function<void(SharedBytes)> answered) {
    ++reads_;
    if (type == PasteboardType::Png && promised_) {
        return awaitPicture([mostBytes, answered = std::move(answered)](const SharedBytes& png) {
            answered(png && png->size() <= mostBytes ? png : nullptr);
        });
    }
    return answer([this, type, mostBytes, answered = std::move(answered)] {
        const auto found = contents_.data.find(type);
        answered(found != contents_.data.end() && found->second.size() <= mostBytes
                     ? std::make_shared<const Bytes>(found->second)
                     : nullptr);
    });
}

bool VirtualPasteboard::write(PasteboardContents contents) {
    loop_.requireMainThread("Pasteboard::write");
    if (refusesWrites_) {
        return false;
    }
    Copied written;
    if (auto* text = std::get_if<std::string>(&contents)) {
        written.text = std::move(*text);
    } else if (const auto* data = std::get_if<PasteboardData>(&contents)) {
        written.data[data->type] = *data->bytes;
    } else if (auto* files = std::get_if<PasteboardFiles>(&contents)) {
        written.files = std::move(files->paths);
    } else {
        const auto& file = std::get<PasteboardPictureFile>(contents);
        written.files = {file.path};
        if (file.png && file.png->bytes()) {
            written.data[PasteboardType::Png] = *file.png->bytes();
        }
    }
    const auto* file = std::get_if<PasteboardPictureFile>(&contents);
    replace(std::move(written), file && file->png && file->png->isPending() ? file->png : nullptr);
    return true;
}

Handle VirtualPasteboard::awaitPicture(std::function<void(const SharedBytes&)> answered) {
    auto waiting = std::make_shared<Handle>(promised_->onSettled(
        [promised = promised_.get(), answered = std::move(answered)] { answered(promised->bytes()); }));
    // Who waits holds the promise.
    return Handle([waiting, promised = promised_] { waiting->reset(); });
}

void VirtualPasteboard::replace(Copied copied, std::shared_ptr<PromisedBytes> promised) {
    contents_ = std::move(copied);
    promised_ = std::move(promised);
    settled_.reset();
    if (promised_) {
        settled_ = promised_->onSettled([this] {
            if (const SharedBytes png = std::exchange(promised_, nullptr)->bytes()) {
                contents_.data[PasteboardType::Png] = *png;
            }
        });
    }
    ++changeCount_;
    observers_.notify();
}

} // namespace rb
