#include "desktops/virtual/FileOperations.h"

#include <utility>

namespace rb {

namespace {

class VirtualOpenedFile final : public OpenedFile {
public:
    VirtualOpenedFile(std::string text, std::shared_ptr<const int> changes)
        : text_(std::move(text))
        , changes_(std::move(changes))
        , opened_(*changes_) {}
    SharedBytes contents(const std::atomic<bool>& givenUp) const override {
        return givenUp || *changes_ != opened_ ? nullptr : std::make_shared<const Bytes>(text_.begin(), text_.end());
    }

private:
    std::string text_;
    std::shared_ptr<const int> changes_;
    int opened_;
};

} // namespace

std::optional<FileFailure> VirtualFileOperations::refusedFor(const std::string& from, const std::string& to) {
    if (const auto somethingElse = std::exchange(before_, nullptr)) {
        somethingElse();
    }
    if (!refusal_.empty()) {
        return FileFailure{.reason = refusal_};
    }
    if (!files_.facts(from).exists) {
        return FileFailure{.reason = "no such file"};
    }
    if (files_.facts(to).exists) {
        return FileFailure{.targetExists = true, .reason = "something is there"};
    }
    if (to.starts_with(from + "/")) {
        return FileFailure{.reason = "a folder can't go into itself"};
    }
    return std::nullopt;
}

void VirtualFileOperations::run(const std::function<std::optional<FileFailure>()>& change, Done done) {
    auto now = [change, done = std::move(done)] {
        const auto failure = change();
        if (done) {
            done(failure);
        }
    };
    if (duration_ > 0) {
        later_.after(duration_, std::move(now));
    } else {
        now();
    }
}

void VirtualFileOperations::moveItem(const std::string& from, const std::string& to, Done done) {
    run(
        [this, from, to] {
            auto failure = refusedFor(from, to);
            if (!failure) {
                files_.copy(from, to);
                files_.remove(from);
            }
            return failure;
        },
        std::move(done));
}

void VirtualFileOperations::copyItem(const std::string& from, const std::string& to, Done done) {
    run(
        [this, from, to] {
            auto failure = refusedFor(from, to);
            if (!failure) {
                files_.copy(from, to);
            }
            return failure;
        },
        std::move(done));
}

void VirtualFileOperations::trashItem(const std::string& path, Done done) {
    run(
        [this, path] {
            auto failure = refusedFor(path, "");
            if (!failure) {
                files_.remove(path);
                trashed_.push_back(path);
            }
            return failure;
        },
        std::move(done));
}

std::shared_ptr<const OpenedFile> VirtualFileOperations::open(const std::string& path, std::size_t mostBytes) const {
    const std::string text = "bytes of " + path;
    const FileFacts facts = files_.facts(path);
    if (!facts.exists || facts.isDirectory || text.size() > mostBytes) {
        return nullptr;
    }
    return std::make_shared<const VirtualOpenedFile>(text, files_.changes(path));
}

} // namespace rb
