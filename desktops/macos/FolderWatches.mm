#include "desktops/macos/FolderWatches.h"

#include "desktops/macos/Bridge.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace rb {

namespace {

struct MacOpenFolder final : OpenFolder {
    MacOpenFolder(std::string from, int opened)
        : path(std::move(from))
        , fd(opened) {}
    ~MacOpenFolder() override { close(fd); }
    MacOpenFolder(const MacOpenFolder&) = delete;
    MacOpenFolder& operator=(const MacOpenFolder&) = delete;
    bool isCurrent() const override {
        struct stat ours {};
        struct stat there {};
        const char* name = nsString(path).fileSystemRepresentation;
        return fstat(fd, &ours) == 0 && stat(name, &there) == 0 && ours.st_dev == there.st_dev &&
               ours.st_ino == there.st_ino && access(name, R_OK | X_OK) == 0;
    }
    std::string path;
    int fd;
};

} // namespace

std::shared_ptr<OpenFolder> MacFolderWatches::open(const std::string& path) {
    constexpr int forEventsOnly = 0x8000; // O_EVTONLY
    const int fd = ::open(nsString(path).fileSystemRepresentation, forEventsOnly | O_CLOEXEC);
    return fd < 0 ? nullptr : std::make_shared<MacOpenFolder>(path, fd);
}

Handle MacFolderWatches::watch(std::shared_ptr<OpenFolder> folder, std::function<void(const FolderChange&)> changed) {
    constexpr unsigned long events =
        DISPATCH_VNODE_DELETE | DISPATCH_VNODE_WRITE | DISPATCH_VNODE_EXTEND | DISPATCH_VNODE_RENAME;
    const int fd = static_cast<const MacOpenFolder&>(*folder).fd;
    dispatch_source_t source = dispatch_source_create(DISPATCH_SOURCE_TYPE_VNODE, static_cast<uintptr_t>(fd), events,
                                                      dispatch_get_main_queue());
    if (source == nil) {
        return {};
    }
    auto told = std::make_shared<std::function<void(const FolderChange&)>>(std::move(changed));
    dispatch_source_set_event_handler(source, ^{
        // It may end this watch.
        const auto call = *told;
        if (call) {
            call({.everything = true}); // the system doesn't say what
        }
    });
    // The descriptor may be closed only after the cancellation went through.
    dispatch_source_set_cancel_handler(source, ^{ (void)folder; });
    dispatch_resume(source);
    return Handle([source, told] {
        // An event that is on its way to the main queue already tells nobody.
        *told = nullptr;
        dispatch_source_cancel(source);
    });
}

std::vector<FolderEntry> MacFolderWatches::list(const std::string& path) {
    std::vector<FolderEntry> entries;
    @autoreleasepool {
        NSArray<NSURL*>* contents = [NSFileManager.defaultManager
              contentsOfDirectoryAtURL:[NSURL fileURLWithPath:nsString(path) isDirectory:YES]
            includingPropertiesForKeys:@[ NSURLCreationDateKey ]
                               options:NSDirectoryEnumerationSkipsHiddenFiles
                                 error:nil];
        for (NSURL* url in contents) {
            id created = nil;
            [url getResourceValue:&created forKey:NSURLCreationDateKey error:nil];
            FolderEntry entry{.path = utf8String(url.path), .created = std::nullopt};
            if ([created isKindOfClass:NSDate.class]) {
                entry.created = [static_cast<NSDate*>(created) timeIntervalSince1970];
            }
            entries.push_back(std::move(entry));
        }
    }
    return entries;
}

std::optional<std::vector<FolderEntry>> MacFolderWatches::look(const std::string& path,
                                                               const std::vector<std::string>& names) {
    const std::vector<FolderEntry> all = list(path);
    std::vector<FolderEntry> found;
    for (const std::string& name : names) {
        const auto entry = std::find_if(all.begin(), all.end(),
                                        [&](const FolderEntry& each) { return lastPathComponent(each.path) == name; });
        if (entry != all.end()) {
            found.push_back(*entry);
        }
    }
    return found;
}

} // namespace rb
