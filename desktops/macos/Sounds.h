#pragma once

#include "platform/Sounds.h"

@class RBMacSoundsPlaying;

namespace rb {

// NSSound with the system's own sounds.
class MacSounds final : public Sounds {
public:
    MacSounds();
    void play(const std::string& name, double volume) override;
    void playTrash() override;
    void beep() override;

private:
    RBMacSoundsPlaying* playing_;
};

} // namespace rb
