#pragma once

#include "platform/RandomSource.h"

#include <deque>

namespace rb {

// Chance in the test's hands: the queued numbers in their order, then the middle of the range.
class VirtualRandomSource final : public RandomSource {
public:
    int upTo10000() override {
        if (queued_.empty()) {
            return 5000;
        }
        const int number = queued_.front();
        queued_.pop_front();
        return number;
    }
    // 00000000-0000-4000-8000-000000000001 and so on.
    std::string newUUIDString() override {
        std::string digits = std::to_string(++uuids_);
        digits.insert(0, 12 - digits.size(), '0');
        return "00000000-0000-4000-8000-" + digits;
    }
    void queue(int number) { queued_.push_back(number); }

private:
    std::deque<int> queued_;
    int uuids_ = 0;
};

} // namespace rb
