#pragma once

#include "platform/Log.h"
#include "platform/Sounds.h"

#include <QString>

#include <optional>

namespace rb {

// Sounds through the session's own player program (PipeWire's, PulseAudio's), started for each sound, so that nothing
// of a sound system is kept in memory between them.
class LinuxSounds final : public Sounds {
public:
    explicit LinuxSounds(Log& log)
        : log_(log) {}

    void play(const std::string& name, double volume) override;
    void playTrash() override { play("Trash", 1); }
    void beep() override;

private:
    // The recording as a file that the player can read; nothing for an unknown name.
    std::optional<QString> fileFor(const QString& name);

    Log& log_;
    bool toldAbsence_ = false;
};

} // namespace rb
