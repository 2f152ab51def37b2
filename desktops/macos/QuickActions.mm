#include "desktops/macos/QuickActions.h"

#include "desktops/macos/Bridge.h"

namespace rb {

namespace {

NSURL* bundledWorkflow() {
    return [NSBundle.mainBundle URLForResource:@"NewText" withExtension:@"workflow"];
}

NSString* servicesFolder() {
    return [NSHomeDirectory() stringByAppendingPathComponent:@"Library/Services"];
}

NSString* installedPath() {
    return [servicesFolder() stringByAppendingPathComponent:@"新建 TXT（Rook Bay）.workflow"];
}

NSURL* installedWorkflow() {
    return [NSURL fileURLWithPath:installedPath()];
}

std::optional<std::string> versionOf(NSURL* workflow) {
    NSURL* file = [workflow URLByAppendingPathComponent:@"Contents/Info.plist"];
    NSData* data = file != nil ? [NSData dataWithContentsOfURL:file] : nil;
    id info = data != nil ? [NSPropertyListSerialization propertyListWithData:data
                                                                      options:NSPropertyListImmutable
                                                                       format:nullptr
                                                                        error:nil]
                          : nil;
    id version = [info isKindOfClass:NSDictionary.class] ? info[@"CFBundleShortVersionString"] : nil;
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
        return [NSFileManager.defaultManager fileExistsAtPath:installedPath()] != NO;
    }
    std::optional<std::string> remove() override {
        NSError* error = nil;
        const BOOL removed = [NSFileManager.defaultManager removeItemAtURL:installedWorkflow() error:&error];
        return failure(removed, error);
    }
    std::optional<std::string> install() override {
        NSFileManager* files = NSFileManager.defaultManager;
        NSURL* source = bundledWorkflow();
        NSError* error = nil;
        if (source == nil || ![files createDirectoryAtPath:servicesFolder()
                                 withIntermediateDirectories:YES
                                                  attributes:nil
                                                       error:&error]) {
            return failure(NO, error);
        }
        const BOOL copied = [files copyItemAtURL:source toURL:installedWorkflow() error:&error];
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
