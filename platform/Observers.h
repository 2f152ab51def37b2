#pragma once

#include "platform/Handle.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace rb {

// Callbacks for one fact, told in the order of their registration. Handles may be dropped and taken inside a
// callback; one dropped there isn't told any more. Handles may outlive the list.
template <typename... Facts>
class Observers {
public:
    Handle add(std::function<void(Facts...)> callback) {
        const std::uint64_t id = state_->next++;
        state_->callbacks.emplace(id, std::make_shared<std::function<void(Facts...)>>(std::move(callback)));
        return Handle([weak = std::weak_ptr<State>(state_), id] {
            if (const auto state = weak.lock()) {
                state->callbacks.erase(id);
            }
        });
    }

    void notify(Facts... facts) const {
        const std::shared_ptr<State> state = state_;
        std::vector<std::uint64_t> ids;
        for (const auto& [id, callback] : state->callbacks) {
            ids.push_back(id);
        }
        for (const std::uint64_t id : ids) {
            const auto found = state->callbacks.find(id);
            if (found != state->callbacks.end()) {
                const auto callback = found->second; // lives on while it runs
                (*callback)(facts...);
            }
        }
    }

    std::size_t count() const { return state_->callbacks.size(); }

private:
    struct State {
        std::uint64_t next = 0;
        std::map<std::uint64_t, std::shared_ptr<std::function<void(Facts...)>>> callbacks;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace rb
