#include "desktops/macos/Sounds.h"

#include "desktops/macos/Bridge.h"

namespace rb {

void MacSounds::play(const std::string& name, double volume) {
    // A copy, so that the same sound can overlap itself.
    NSSound* sound = [[NSSound soundNamed:nsString(name)] copy];
    sound.volume = static_cast<float>(volume);
    [sound play];
}

} // namespace rb
