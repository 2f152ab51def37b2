#include "desktops/macos/Appearance.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/Notifications.h"

#include <memory>
#include <utility>

// Watches the application's effective appearance from creation until stop.
@interface RBMacAppearanceObserver : NSObject
- (instancetype)initWithCallback:(std::function<void()>)changed;
- (void)stop;
@end

@implementation RBMacAppearanceObserver {
    std::function<void()> _changed;
}

- (instancetype)initWithCallback:(std::function<void()>)changed {
    self = [super init];
    if (self != nil) {
        _changed = std::move(changed);
        [NSApplication.sharedApplication addObserver:self
                                          forKeyPath:@"effectiveAppearance"
                                             options:NSKeyValueObservingOptionNew
                                             context:nullptr];
    }
    return self;
}

- (void)stop {
    [NSApplication.sharedApplication removeObserver:self forKeyPath:@"effectiveAppearance" context:nullptr];
    _changed = nullptr;
}

- (void)observeValueForKeyPath:(NSString*)keyPath
                      ofObject:(id)object
                        change:(NSDictionary<NSKeyValueChangeKey, id>*)change
                       context:(void*)context {
    const auto changed = _changed; // it may stop this observer
    if (changed) {
        changed();
    }
}

@end

namespace rb {

namespace {

NSColor* systemColor(SystemColor color) {
    switch (color) {
    case SystemColor::Green:
        return NSColor.systemGreenColor;
    case SystemColor::Orange:
        return NSColor.systemOrangeColor;
    case SystemColor::Blue:
        return NSColor.systemBlueColor;
    case SystemColor::ControlAccent:
        return NSColor.controlAccentColor;
    case SystemColor::ControlBackground:
        return NSColor.controlBackgroundColor;
    case SystemColor::Label:
        return NSColor.labelColor;
    case SystemColor::SecondaryLabel:
        return NSColor.secondaryLabelColor;
    case SystemColor::TertiaryLabel:
        return NSColor.tertiaryLabelColor;
    }
    return NSColor.labelColor;
}

} // namespace

bool MacAppearance::isDark() const {
    NSAppearanceName best = [NSApplication.sharedApplication.effectiveAppearance
        bestMatchFromAppearancesWithNames:@[ NSAppearanceNameAqua, NSAppearanceNameDarkAqua ]];
    return [best isEqualToString:NSAppearanceNameDarkAqua] != NO;
}

Color MacAppearance::color(SystemColor color) const {
    __block std::optional<Color> resolved;
    // System colours answer for the appearance that is being drawn; outside drawing that has to be said.
    [NSApplication.sharedApplication.effectiveAppearance
        performAsCurrentDrawingAppearance:^{ resolved = colorFrom(systemColor(color)); }];
    return resolved.value_or(Color{});
}

Handle MacAppearance::onChange(std::function<void()> changed) {
    const auto shared = std::make_shared<const std::function<void()>>(std::move(changed));
    const auto tell = [shared] { (*shared)(); };
    RBMacAppearanceObserver* observer = [[RBMacAppearanceObserver alloc] initWithCallback:tell];
    // Another accent colour leaves the appearance as it is.
    auto colors = std::make_shared<Handle>(observeNotification(NSSystemColorsDidChangeNotification, tell));
    return Handle([observer, colors] {
        [observer stop];
        colors->reset();
    });
}

} // namespace rb
