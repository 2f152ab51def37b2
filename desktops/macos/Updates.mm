#include "desktops/macos/Updates.h"

#include "desktops/macos/Bridge.h"

// The part of the framework's controller that is used. Its class is only known at run time.
@protocol RBMacStandardUpdaterController
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id)updaterDelegate
                     userDriverDelegate:(id)userDriverDelegate;
- (void)checkForUpdates:(id)sender;
@end

// What the controller asks its delegate; it looks the methods up by name.
@protocol RBMacUpdaterDelegate <NSObject>
- (NSString*)feedURLStringForUpdater:(id)updater;
- (void)updater:(id)updater didFinishUpdateCycleForUpdateCheck:(NSInteger)updateCheck error:(NSError*)error;
@end

@interface RBMacUpdaterQuestions : NSObject <RBMacUpdaterDelegate>
// Null once the product's updater is gone.
@property(nonatomic) rb::UpdaterDelegate* target;
@end

@implementation RBMacUpdaterQuestions

- (NSString*)feedURLStringForUpdater:(id)updater {
    const auto feed = self.target != nullptr ? self.target->feedURLStringForUpdater() : std::nullopt;
    return feed ? rb::nsString(*feed) : nil;
}

- (void)updater:(id)updater didFinishUpdateCycleForUpdateCheck:(NSInteger)updateCheck error:(NSError*)error {
    if (self.target == nullptr) {
        return;
    }
    self.target->updaterDidFinishUpdateCycle(
        error != nil ? std::optional(rb::UpdateError{.domain = rb::utf8String(error.domain), .code = error.code})
                     : std::nullopt);
}

@end

namespace rb {

namespace {

class MacUpdater final : public Updater {
public:
    MacUpdater(Class controllerClass, UpdaterDelegate& delegate) {
        questions_ = [[RBMacUpdaterQuestions alloc] init];
        questions_.target = &delegate;
        controller_ = [(id<RBMacStandardUpdaterController>)[controllerClass alloc] initWithStartingUpdater:YES
                                                                                           updaterDelegate:questions_
                                                                                        userDriverDelegate:nil];
    }
    ~MacUpdater() override { questions_.target = nullptr; }
    MacUpdater(const MacUpdater&) = delete;
    MacUpdater& operator=(const MacUpdater&) = delete;

    void checkForUpdates() override { [controller_ checkForUpdates:nil]; }

private:
    RBMacUpdaterQuestions* questions_; // the controller refers to it weakly
    id<RBMacStandardUpdaterController> controller_;
};

} // namespace

std::unique_ptr<Updater> MacUpdates::startUpdater(UpdaterDelegate& delegate) {
    NSString* path = [NSBundle.mainBundle.privateFrameworksPath stringByAppendingPathComponent:@"Sparkle.framework"];
    NSBundle* framework = path != nil ? [NSBundle bundleWithPath:path] : nil;
    if (framework == nil) {
        log_.write("no update framework in the bundle");
        return nullptr;
    }
    NSError* error = nil;
    if (![framework loadAndReturnError:&error]) {
        log_.write("could not load the update framework: " + utf8String(error.localizedDescription));
        return nullptr;
    }
    Class controllerClass = NSClassFromString(@"SPUStandardUpdaterController");
    if (controllerClass == nil) {
        log_.write("the update framework has no standard controller");
        return nullptr;
    }
    return std::make_unique<MacUpdater>(controllerClass, delegate);
}

} // namespace rb
