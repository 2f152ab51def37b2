#pragma once

#include "platform/Sounds.h"

namespace rb {

class MacSounds final : public Sounds {
public:
    void play(const std::string& name, double volume) override;
};

} // namespace rb
