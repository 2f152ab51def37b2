#include "platform/RunLoop.h"

#include <utility>

namespace rb {

void DelayedCalls::after(double delay, std::function<void()> work) {
    std::erase_if(calls_, [](const std::shared_ptr<Call>& call) { return call->done; });
    auto call = std::make_shared<Call>();
    calls_.push_back(call);
    // The callback must not keep its own record alive through the timer that the record holds.
    call->timer = loop_.after(delay, [weak = std::weak_ptr<Call>(call), work = std::move(work)] {
        if (const auto self = weak.lock()) {
            self->done = true;
        }
        work();
    });
}

} // namespace rb
