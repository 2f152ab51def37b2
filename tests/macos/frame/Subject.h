#pragma once

#import <AppKit/AppKit.h>

// A piece of code that uses the system the way a desktop does; the tests of the test frame drive it.
@interface Subject : NSObject <NSMenuDelegate>
@property(nonatomic, strong) NSStatusItem* item;
@property(nonatomic, copy) void (^changed)(void);
- (void)showItem;
- (NSPanel*)makePanel;
- (void)clicked:(id)sender;
- (void)startTimer;
- (void)watchWake;
- (void)watchMouseWithCycle:(BOOL)cycle;
- (void)stopWatching;
- (double)warpAndMeasure;
@property(nonatomic) int clicks;
@property(nonatomic) int ticks;
@property(nonatomic) int wakes;
@end
