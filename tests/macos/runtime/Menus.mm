// Menus and what shows them: which items are in which menu.
#import <AppKit/AppKit.h>

#include "tests/macos/runtime/Properties.h"

using namespace rb::fake;

@implementation NSMenu
- (instancetype)initWithTitle:(NSString*)title {
    setProperty(self, "title", title);
    return self;
}
- (void)addItem:(NSMenuItem*)item {
    [self insertItem:item atIndex:(NSInteger)list(self, "itemArray").count];
}
- (void)insertItem:(NSMenuItem*)item atIndex:(NSInteger)index {
    [list(self, "itemArray") insertObject:item atIndex:(NSUInteger)index];
    setParent(item, "menuReference", self);
}
- (NSMenuItem*)addItemWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key {
    NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:key];
    [self addItem:item];
    return item;
}
- (void)removeItem:(NSMenuItem*)item {
    setParent(item, "menuReference", nil);
    [list(self, "itemArray") removeObjectIdenticalTo:item];
}
- (void)removeItemAtIndex:(NSInteger)index {
    [self removeItem:[self itemAtIndex:index]];
}
- (void)removeAllItems {
    for (NSMenuItem* item in self.itemArray)
        [self removeItem:item];
}
- (NSArray*)itemArray {
    return [list(self, "itemArray") copy];
}
- (NSInteger)numberOfItems {
    return (NSInteger)list(self, "itemArray").count;
}
- (NSMenuItem*)itemAtIndex:(NSInteger)index {
    return list(self, "itemArray")[(NSUInteger)index];
}
- (NSInteger)indexOfItem:(NSMenuItem*)item {
    const NSUInteger index = [list(self, "itemArray") indexOfObjectIdenticalTo:item];
    return index == NSNotFound ? -1 : (NSInteger)index;
}
- (NSMenuItem*)itemWithTag:(NSInteger)tag {
    for (NSMenuItem* item in self.itemArray)
        if (item.tag == tag)
            return item;
    return nil;
}
@end

@implementation NSMenuItem
+ (NSMenuItem*)separatorItem {
    NSMenuItem* item = [[NSMenuItem alloc] init];
    setInteger(item, "separatorItem", 1);
    return item;
}
- (instancetype)init {
    setInteger(self, "enabled", 1);
    return self;
}
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key {
    setInteger(self, "enabled", 1);
    setProperty(self, "title", title);
    setInteger(self, "action", (long)action);
    setProperty(self, "keyEquivalent", key);
    return self;
}
- (NSMenu*)menu {
    return parent(self, "menuReference");
}
- (BOOL)hasSubmenu {
    return self.submenu != nil;
}
@end

@implementation NSPopUpButton
- (NSMenu*)menu {
    if (!property(self, "menu"))
        setProperty(self, "menu", [[NSMenu alloc] initWithTitle:@""]);
    return property(self, "menu");
}
- (void)addItemWithTitle:(NSString*)title {
    [self.menu addItemWithTitle:title action:nil keyEquivalent:@""];
}
- (void)addItemsWithTitles:(NSArray*)titles {
    for (NSString* title in titles)
        [self addItemWithTitle:title];
}
- (void)removeAllItems {
    [self.menu removeAllItems];
}
- (NSArray*)itemArray {
    return self.menu.itemArray;
}
- (NSInteger)numberOfItems {
    return self.menu.numberOfItems;
}
- (NSMenuItem*)lastItem {
    return self.itemArray.lastObject;
}
- (NSMenuItem*)itemAtIndex:(NSInteger)index {
    return [self.menu itemAtIndex:index];
}
- (void)selectItemAtIndex:(NSInteger)index {
    setInteger(self, "indexOfSelectedItem", index);
}
- (NSMenuItem*)selectedItem {
    const long index = integerProperty(self, "indexOfSelectedItem");
    return index >= 0 && index < self.numberOfItems ? [self itemAtIndex:index] : nil;
}
- (NSString*)titleOfSelectedItem {
    return self.selectedItem.title;
}
@end
