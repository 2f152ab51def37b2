#pragma once

#include "platform/Sounds.h"

#include <string>
#include <vector>

namespace rb {

// Writes down what would be heard.
class VirtualSounds final : public Sounds {
public:
    struct Sound {
        std::string name;
        double volume = 0;
        friend bool operator==(const Sound&, const Sound&) = default;
    };
    void play(const std::string& name, double volume) override { heard_.push_back({name, volume}); }
    void playTrash() override { heard_.push_back({"drag to trash", 1}); }
    void beep() override { ++beeps_; }

    const std::vector<Sound>& heard() const { return heard_; }
    int beeps() const { return beeps_; }
    void clear() { heard_.clear(); }

private:
    std::vector<Sound> heard_;
    int beeps_ = 0;
};

} // namespace rb
