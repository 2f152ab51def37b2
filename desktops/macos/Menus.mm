#include "desktops/macos/Menus.h"

#include "desktops/macos/Bridge.h"

#include <vector>

// The product's item, kept by the menu item that shows it, so that a choice finds it even if the menu was filled anew
// between the click and the action.
@interface RBMacMenuItemSource : NSObject
@property(nonatomic) std::shared_ptr<rb::MenuItem> item;
@end

@implementation RBMacMenuItemSource {
    std::shared_ptr<rb::MenuItem> _item;
}
@synthesize item = _item;
@end

// A menu that is its own delegate and the target of its items; both references are weak.
@interface RBMacMenu : NSMenu <NSMenuDelegate>
@property(nonatomic, readonly) std::shared_ptr<rb::Menu> source;
- (instancetype)initWithSource:(std::shared_ptr<rb::Menu>)source;
@end

@implementation RBMacMenu {
    std::vector<std::shared_ptr<rb::MenuItem>> _shown;
    NSMutableArray<NSMenuItem*>* _natives; // one for each shown item
}
@synthesize source = _source;

- (instancetype)initWithSource:(std::shared_ptr<rb::Menu>)source {
    self = [super initWithTitle:rb::nsString(source->title())];
    if (self != nil) {
        _source = std::move(source);
        _natives = [NSMutableArray array];
        self.delegate = self;
        [self show];
    }
    return self;
}

- (void)menuNeedsUpdate:(NSMenu*)menu {
    if (_source->needsUpdate) {
        const auto needsUpdate = _source->needsUpdate; // it may set another
        needsUpdate(*_source);
    }
    [self show];
}

// Items that are still the product's own stay, so that an open menu isn't torn down when only texts changed.
- (void)show {
    self.autoenablesItems = _source->autoenablesItems ? YES : NO;
    if (_shown != _source->items()) {
        [self fill];
    }
    for (std::size_t index = 0; index < _shown.size(); ++index) {
        if (!_shown[index]->separator) {
            [self setItem:_natives[index] from:_shown[index]];
        }
    }
}

- (void)fill {
    // A menu can hang in one item at a time.
    for (NSMenuItem* native in _natives) {
        native.submenu = nil;
    }
    [self removeAllItems];
    [_natives removeAllObjects];
    _shown = _source->items();
    for (const auto& item : _shown) {
        NSMenuItem* native = item->separator ? [NSMenuItem separatorItem]
                                             : [[NSMenuItem alloc] initWithTitle:@"" action:nil keyEquivalent:@""];
        [_natives addObject:native];
        [self addItem:native];
    }
}

- (void)setItem:(NSMenuItem*)native from:(const std::shared_ptr<rb::MenuItem>&)item {
    native.title = rb::nsString(item->title);
    native.image = rb::nsImage(item->image);
    native.keyEquivalent = rb::nsString(item->keyEquivalent);
    native.keyEquivalentModifierMask = item->keyEquivalentModifiers;
    native.enabled = _source->isEnabled(*item) ? YES : NO;
    native.state = item->on ? NSControlStateValueOn : NSControlStateValueOff;
    native.tag = item->tag;
    native.indentationLevel = item->indentationLevel;
    native.toolTip = item->toolTip.empty() ? nil : rb::nsString(item->toolTip);
    native.alternate = item->alternate ? YES : NO;
    if (@available(macOS 14.4, *)) {
        native.subtitle = item->subtitle.empty() ? nil : rb::nsString(item->subtitle);
    }
    // Automatic enabling asks whether there is a target for the action.
    native.target = item->action ? self : nil;
    native.action = item->action ? @selector(choose:) : nil;
    RBMacMenuItemSource* source = [[RBMacMenuItemSource alloc] init];
    source.item = item;
    native.representedObject = source;
    [self setSubmenu:item->submenu of:native];
}

- (void)setSubmenu:(const std::shared_ptr<rb::Menu>&)submenu of:(NSMenuItem*)native {
    RBMacMenu* present = (RBMacMenu*)native.submenu;
    if (present.source != submenu) {
        native.submenu = rb::nsMenu(submenu);
    }
}

- (void)choose:(NSMenuItem*)sender {
    const auto item = ((RBMacMenuItemSource*)sender.representedObject).item;
    const auto action = item->action; // it may fill this menu anew
    if (action) {
        action(*item);
    }
}

@end

namespace rb {

NSMenu* nsMenu(const std::shared_ptr<Menu>& menu) {
    return menu ? [[RBMacMenu alloc] initWithSource:menu] : nil;
}

} // namespace rb
