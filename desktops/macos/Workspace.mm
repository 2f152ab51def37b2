#include "desktops/macos/Workspace.h"

#include "desktops/macos/Bridge.h"

#include <utility>

namespace rb {

namespace {

// Told on the main thread whether there was no error.
void (^answerOnMain(Workspace::Done done))(NSRunningApplication*, NSError*) {
    return ^(NSRunningApplication*, NSError* error) {
        const bool opened = error == nil;
        dispatch_async(dispatch_get_main_queue(), ^{
            if (done) {
                done(opened);
            }
        });
    };
}

} // namespace

void MacWorkspace::openFile(const std::string& path, Done done) {
    [NSWorkspace.sharedWorkspace openURL:[NSURL fileURLWithPath:nsString(path)]
                           configuration:[NSWorkspaceOpenConfiguration configuration]
                       completionHandler:answerOnMain(std::move(done))];
}

void MacWorkspace::openInTextEditor(const std::string& path, Done done) {
    NSWorkspace* workspace = NSWorkspace.sharedWorkspace;
    NSURL* editor = [workspace URLForApplicationWithBundleIdentifier:@"com.apple.TextEdit"];
    if (editor == nil) {
        dispatch_async(dispatch_get_main_queue(), ^{
            if (done) {
                done(false);
            }
        });
        return;
    }
    [workspace openURLs:@[ [NSURL fileURLWithPath:nsString(path)] ]
        withApplicationAtURL:editor
               configuration:[NSWorkspaceOpenConfiguration configuration]
           completionHandler:answerOnMain(std::move(done))];
}

void MacWorkspace::openURL(const std::string& url) {
    if (NSURL* address = [NSURL URLWithString:nsString(url)]) {
        [NSWorkspace.sharedWorkspace openURL:address];
    }
}

void MacWorkspace::revealFiles(const std::vector<std::string>& paths) {
    NSMutableArray<NSURL*>* urls = [NSMutableArray array];
    for (const std::string& path : paths) {
        [urls addObject:[NSURL fileURLWithPath:nsString(path)]];
    }
    [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:urls];
}

} // namespace rb
