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
    void queue(int number) { queued_.push_back(number); }

private:
    std::deque<int> queued_;
};

} // namespace rb
