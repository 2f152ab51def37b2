#include "desktops/macos/Sounds.h"

#include "desktops/macos/Bridge.h"

// Holds what plays until it is over: nothing says that a sound does so itself.
@interface RBMacSoundsPlaying : NSObject <NSSoundDelegate>
- (void)play:(NSSound*)sound;
@end

@implementation RBMacSoundsPlaying {
    NSMutableArray<NSSound*>* _sounds;
}

- (void)play:(NSSound*)sound {
    if (_sounds == nil) {
        _sounds = [NSMutableArray array];
    }
    sound.delegate = self;
    if ([sound play]) {
        [_sounds addObject:sound];
    }
}

- (void)sound:(NSSound*)sound didFinishPlaying:(BOOL)finished {
    // In a turn of its own, because the sound is still in the middle of telling this.
    dispatch_async(dispatch_get_main_queue(), ^{ [self->_sounds removeObjectIdenticalTo:sound]; });
}

@end

namespace rb {

MacSounds::MacSounds()
    : playing_([[RBMacSoundsPlaying alloc] init]) {}

void MacSounds::play(const std::string& name, double volume) {
    // A copy, so that the same sound can overlap itself.
    NSSound* sound = [[NSSound soundNamed:nsString(name)] copy];
    if (sound != nil) {
        sound.volume = static_cast<float>(volume);
        [playing_ play:sound];
    }
}

void MacSounds::playTrash() {
    NSSound* sound = [[NSSound alloc]
        initWithContentsOfFile:@"/System/Library/Components/CoreAudio.component/Contents/SharedSupport/SystemSounds/"
                               @"dock/drag to trash.aif"
                   byReference:YES];
    if (sound != nil) {
        [playing_ play:sound];
    }
}

void MacSounds::beep() {
    NSBeep();
}

} // namespace rb
