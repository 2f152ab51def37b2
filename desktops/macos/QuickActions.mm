#include "desktops/macos/QuickActions.h"

#include "desktops/macos/Bridge.h"

namespace rb {

namespace {

NSURL* bundledWorkflow() {
    return [NSBundle.mainBundle URLForResource:@"NewText" withExtension:@"workflow"];
}

NSURL* installedWorkflow() {
    NSString* folder = [NSHomeDirectory() stringByAppendingPathComponent:@"Library/Services"];
    return [NSURL fileURLWithPath:[folder stringByAppendingPathComponent:@"新建 TXT（Rook Bay）.workflow"]];
}

std::optional<std::string> versionOf(NSURL* workflow) {
    NSURL* file = [workflow URLByAppendingPathComponent:@"Contents/Info.plist"];
    NSDictionary* info = file != nil ? [NSDictionary dictionaryWithContentsOfURL:file error:nil] : nil;
    id version = info[@"CFBundleShortVersionString"];
    return [version isKindOfClass:NSString.class] ? std::optional(utf8String(version)) : std::nullopt;
}

std::optional<std::string> failure(BOOL succeeded, NSError* error) {
    return succeeded ? std::nullopt : std::optional(utf8String(error.localizedDescription));
}

class WorkflowAction final : public QuickAction {
public:
    std::optional<std::string> bundledVersion() const override { return versionOf(bundledWorkflow()); }
    std::optional<std::string> installedVersion() const override { return versionOf(installedWorkflow()); }
    bool isInstalled() const override {
        return [NSFileManager.defaultManager fileExistsAtPath:installedWorkflow().path] != NO;
    }
    std::optional<std::string> remove() override {
        NSError* error = nil;
        const BOOL removed = [NSFileManager.defaultManager removeItemAtURL:installedWorkflow() error:&error];
        return failure(removed, error);
    }
    std::optional<std::string> install() override {
        NSFileManager* files = NSFileManager.defaultManager;
        NSURL* target = installedWorkflow();
        NSError* error = nil;
        if (![files createDirectoryAtURL:target.URLByDeletingLastPathComponent
                withIntermediateDirectories:YES
                                 attributes:nil
                                      error:&error]) {
            return failure(NO, error);
        }
        const BOOL copied = [files copyItemAtURL:bundledWorkflow() toURL:target error:&error];
        return failure(copied, error);
    }
};

std::vector<std::unique_ptr<QuickAction>> oneAction(bool there) {
    std::vector<std::unique_ptr<QuickAction>> actions;
    if (there) {
        actions.push_back(std::make_unique<WorkflowAction>());
    }
    return actions;
}

} // namespace

std::vector<std::unique_ptr<QuickAction>> MacQuickActions::textActions() {
    return oneAction(bundledWorkflow() != nil);
}

std::vector<std::unique_ptr<QuickAction>> MacQuickActions::installedTextActions() {
    return oneAction(WorkflowAction().isInstalled());
}

void MacQuickActions::refresh() {
    NSUpdateDynamicServices();
}

} // namespace rb
