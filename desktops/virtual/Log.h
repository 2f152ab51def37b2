#pragma once

#include "platform/Log.h"

#include <mutex>
#include <vector>

namespace rb {

// The lines as they would appear in the system's log.
class VirtualLog final : public Log {
public:
    void write(const std::string& line) override {
        const std::lock_guard lock(mutex_);
        lines_.push_back("Rook Bay: " + line);
    }
    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace rb
