#include "screenshots/ScreenshotWatcher.h"

#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Screenshots.h"

#include <algorithm>
#include <array>
#include <utility>

namespace rb {

namespace {

constexpr double quietTime = 0.25; // after the last change
constexpr double cutOffSlack = 1;
constexpr int mostInOneTurn = 4;
// Beyond it is no more work to list the folder.
constexpr std::size_t mostNames = 20'000;

std::string lowerExtension(const std::string& path) {
    const std::string name = lastPathComponent(path);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) {
        return {};
    }
    std::string extension = name.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return extension;
}

// The last of each stays.
void removeRepeated(std::vector<std::string>& names) {
    std::unordered_set<std::string> seen;
    std::reverse(names.begin(), names.end());
    std::erase_if(names, [&seen](const std::string& name) { return !seen.insert(name).second; });
    std::reverse(names.begin(), names.end());
}

} // namespace

RBScreenshotWatcher::RBScreenshotWatcher(const Desktop& desktop)
    : desktop_(desktop)
    , launchDate_(desktop.runLoop.wallClock())
    , later_(desktop.runLoop) {}

std::string RBScreenshotWatcher::screenshotFolder(const Desktop& desktop) {
    desktop.screenshotPreferences.synchronize();
    for (const char* key : {"location-screenshot", "location"}) {
        const auto value = desktop.screenshotPreferences.value(key);
        const auto* text = value ? value->get<std::string>() : nullptr;
        if (text == nullptr || text->empty()) {
            continue;
        }
        std::string path = standardizedPath(*text, desktop.files.homeDirectory());
        if (path.starts_with('/') && desktop.files.facts(path).isDirectory) {
            return path;
        }
    }
    return desktop.files.desktopDirectory();
}

bool RBScreenshotWatcher::isImage(const std::string& path) {
    static constexpr std::array extensions = {"png", "jpg", "jpeg", "heic", "tif", "tiff", "gif", "webp"};
    return std::find(extensions.begin(), extensions.end(), lowerExtension(path)) != extensions.end();
}

bool RBScreenshotWatcher::isRecording(const std::string& path) {
    const std::string extension = lowerExtension(path);
    return extension == "mov" || extension == "mp4";
}

void RBScreenshotWatcher::start() {
    stopped_ = false;
    denied_ = false;
    open();
}

void RBScreenshotWatcher::open() {
    if (source_ || starting_) {
        return;
    }
    const std::string home = desktop_.files.homeDirectory();
    folder_ = fixedFolder ? *fixedFolder : screenshotFolder(desktop_);
    onlyTagged_ = standardizedPath(folder_, home) == standardizedPath(desktop_.files.desktopDirectory(), home);
    starting_ = true;
    desktop_.runLoop.background(
        QualityOfService::UserInitiated,
        [&desktop = desktop_, path = folder_,
         opened = lifetime_.guard([this](const std::shared_ptr<OpenFolder>& folder) { watch(folder); })] {
            desktop.runLoop.post([opened, folder = desktop.folderWatches.open(path)]() mutable { opened(folder); });
        });
}

void RBScreenshotWatcher::watch(const std::shared_ptr<OpenFolder>& opened) {
    starting_ = false;
    if (stopped_) {
        return;
    }
    if (opened) {
        source_ = desktop_.folderWatches.watch(opened, [this](const FolderChange& change) { noteChange(change); });
    }
    if (!source_) {
        if (!std::exchange(denied_, true)) {
            desktop_.log.write("cannot watch " + folder_);
            if (onDenied) {
                onDenied();
            }
        }
        return;
    }
    denied_ = false;
    opened_ = opened;
    scan();
}

void RBScreenshotWatcher::checkFolder() {
    if (stopped_ || starting_ || folder_.empty()) {
        return;
    }
    if (opened_ && !opened_->isCurrent()) {
        lose();
    }
    if (!source_ && desktop_.files.facts(folder_).isDirectory) {
        open();
    }
}

// What was judged stays known: a folder that comes back brings nothing new with it.
void RBScreenshotWatcher::lose() {
    source_.reset();
    quiet_.reset();
    opened_.reset();
    missed_ = false;
    changed_ = unknown();
    ++generation_;
}

void RBScreenshotWatcher::noteChange(const FolderChange& change) {
    changed_.everything = changed_.everything || change.everything || changed_.names.size() > mostNames;
    if (changed_.everything) {
        changed_.names.clear();
    } else {
        changed_.names.insert(changed_.names.end(), change.names.begin(), change.names.end());
    }
    quiet_ = desktop_.runLoop.after(quietTime, [this] { scan(); });
}

void RBScreenshotWatcher::scan() {
    if (!source_) {
        return;
    }
    if (scanning_) {
        missed_ = true;
        return;
    }
    scanning_ = true;
    const auto looked = std::make_shared<FolderChange>(std::exchange(changed_, {}));
    auto listed = lifetime_.guard(
        [this, looked, generation = generation_](const std::optional<std::vector<FolderEntry>>& entries) {
            scanning_ = false;
            if (generation == generation_ && opened_->isCurrent()) {
                scanned(*looked, entries ? &*entries : nullptr);
            } else if (generation == generation_) {
                checkFolder();
            }
            if (source_ && std::exchange(missed_, false)) {
                scan();
            }
        });
    desktop_.runLoop.background(QualityOfService::Utility, [&desktop = desktop_, path = folder_, looked, listed] {
        std::optional<std::vector<FolderEntry>> entries;
        if (looked->everything) {
            entries = desktop.folderWatches.list(path);
        } else {
            removeRepeated(looked->names);
            entries = desktop.folderWatches.look(path, looked->names);
        }
        desktop.runLoop.post([listed, entries = std::move(entries)]() mutable { listed(entries); });
    });
}

// Names that left are forgotten: a file that comes back is judged afresh.
void RBScreenshotWatcher::scanned(const FolderChange& looked, const std::vector<FolderEntry>* entries) {
    if (entries == nullptr) {
        // As a listing that found nothing; the next one must look at everything.
        known_.clear();
        changed_ = unknown();
    } else if (looked.everything) {
        const std::unordered_set<std::string> before = std::exchange(known_, {});
        known_.reserve(entries->size());
        for (const FolderEntry& entry : *entries) {
            std::string name = lastPathComponent(entry.path);
            if (before.contains(name)) {
                known_.insert(std::move(name));
            } else {
                judge(entry, std::move(name));
            }
        }
    } else {
        std::unordered_set<std::string> gone(looked.names.begin(), looked.names.end());
        for (const FolderEntry& entry : *entries) {
            std::string name = lastPathComponent(entry.path);
            gone.erase(name);
            if (!known_.contains(name)) {
                judge(entry, std::move(name));
            }
        }
        for (const std::string& name : gone) {
            known_.erase(name);
        }
    }
    if (!reporting_) {
        report();
    }
}

// Once and for all, whatever the judgement.
void RBScreenshotWatcher::judge(const FolderEntry& entry, std::string name) {
    if (isNewCapture(entry)) {
        captures_.push_back(entry.path);
    }
    known_.insert(std::move(name));
}

// Thousands of files at once must not keep the program from everything else: a few are reported in one turn.
void RBScreenshotWatcher::report() {
    reporting_ = false;
    for (int told = 0; told < mostInOneTurn && !captures_.empty(); ++told) {
        const std::string capture = std::move(captures_.front());
        captures_.pop_front();
        // Whoever is told may stop the watcher, and so empty the list.
        if (onNew) {
            onNew(capture);
        }
    }
    if (!captures_.empty() && !std::exchange(reporting_, true)) {
        later_.after(0, [this] { report(); });
    }
}

bool RBScreenshotWatcher::isNewCapture(const FolderEntry& entry) const {
    if (entry.created && *entry.created < launchDate_ - cutOffSlack) {
        return false;
    }
    if (isRecording(entry.path)) {
        return acceptsRecordings;
    }
    return isImage(entry.path) && (!onlyTagged_ || desktop_.captureFacts.isMarkedAsCapture(entry.path));
}

void RBScreenshotWatcher::stop() {
    stopped_ = true;
    lose();
    known_.clear();
    captures_.clear();
}

} // namespace rb
