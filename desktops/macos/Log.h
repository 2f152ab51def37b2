#pragma once

#include "platform/Log.h"

namespace rb {

// The system log.
class MacLog final : public Log {
public:
    void write(const std::string& line) override;
};

} // namespace rb
