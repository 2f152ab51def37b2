#include "platform/PromisedBytes.h"

#include "platform/RunLoop.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace rb {

struct PromisedBytes::State {
    std::mutex mutex;
    std::condition_variable settled;
    bool pending = true;
    SharedBytes bytes;
    std::atomic<bool> givenUp = false;

    void settle(SharedBytes made) {
        const std::lock_guard lock(mutex);
        bytes = std::move(made);
        pending = false;
        settled.notify_all();
    }
};

PromisedBytes::PromisedBytes(std::shared_ptr<State> state)
    : state_(std::move(state)) {}

PromisedBytes::~PromisedBytes() {
    state_->givenUp = true;
}

std::shared_ptr<PromisedBytes> PromisedBytes::begin(RunLoop& loop, Making making) {
    std::shared_ptr<PromisedBytes> promise(new PromisedBytes(std::make_shared<State>()));
    loop.background(QualityOfService::UserInitiated, [&loop, making = std::move(making), state = promise->state_,
                                                      weak = std::weak_ptr<PromisedBytes>(promise)] {
        state->settle(state->givenUp ? nullptr : making(state->givenUp));
        loop.post([weak] {
            if (const auto promised = weak.lock()) {
                promised->observers_.notify();
            }
        });
    });
    return promise;
}

std::shared_ptr<PromisedBytes> PromisedBytes::settled(SharedBytes bytes) {
    std::shared_ptr<PromisedBytes> promise(new PromisedBytes(std::make_shared<State>()));
    promise->state_->settle(std::move(bytes));
    return promise;
}

bool PromisedBytes::isPending() const {
    const std::lock_guard lock(state_->mutex);
    return state_->pending;
}

SharedBytes PromisedBytes::bytes() const {
    const std::lock_guard lock(state_->mutex);
    return state_->bytes;
}

SharedBytes PromisedBytes::await(double seconds) const {
    std::unique_lock lock(state_->mutex);
    state_->settled.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return !state_->pending; });
    return state_->bytes;
}

} // namespace rb
