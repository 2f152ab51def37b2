#pragma once

#include <string>

namespace rb {

// Short sounds. Silent where the system can't play any.
class Sounds {
public:
    virtual ~Sounds() = default;
    // A sound of the system's set by name ("Tink"), volume 0…1. The same sound may overlap itself.
    virtual void play(const std::string& name, double volume) = 0;
    // What the system plays when a file is dropped into its Trash.
    virtual void playTrash() = 0;
    // The system's alert sound.
    virtual void beep() = 0;
};

} // namespace rb
