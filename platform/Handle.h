#pragma once

#include <functional>
#include <memory>
#include <utility>

// Handles and lifetimes: how a callback stops. Main thread only.
namespace rb {

// Owns something that is under way (a timer, a monitor, a watch, a registration); destruction ends it. An empty
// handle owns nothing. Dropping a handle inside the callback that it belongs to is allowed.
class [[nodiscard]] Handle {
public:
    Handle() = default;
    explicit Handle(std::function<void()> cancel)
        : cancel_(std::move(cancel)) {}
    Handle(Handle&& other) noexcept
        : cancel_(std::exchange(other.cancel_, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        if (this != &other) {
            reset();
            cancel_ = std::exchange(other.cancel_, nullptr);
        }
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { reset(); }

    void reset() {
        if (auto cancel = std::exchange(cancel_, nullptr)) {
            cancel();
        }
    }
    explicit operator bool() const { return cancel_ != nullptr; }

private:
    std::function<void()> cancel_;
};

// A token that dies with its owner. Work that may outlive the owner is wrapped by guard() and then does
// nothing once the owner is gone.
class Lifetime {
public:
    template <typename Callback>
    auto guard(Callback callback) const {
        return [weak = std::weak_ptr<const int>(token_), callback = std::move(callback)](auto&&... arguments) mutable {
            if (weak.lock()) {
                callback(std::forward<decltype(arguments)>(arguments)...);
            }
        };
    }

private:
    std::shared_ptr<const int> token_ = std::make_shared<const int>(0);
};

} // namespace rb
