#include "desktops/virtual/FileOperations.h"

namespace rb {

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

SharedBytes VirtualFileOperations::contents(const std::string& path) const {
    const std::string text = "bytes of " + path;
    return files_.facts(path).exists ? std::make_shared<const Bytes>(text.begin(), text.end()) : nullptr;
}

} // namespace rb
