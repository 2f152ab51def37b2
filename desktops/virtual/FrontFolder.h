#pragma once

#include "desktops/virtual/RunLoop.h"
#include "platform/FrontFolder.h"

#include <deque>
#include <utility>

namespace rb {

// A file manager whose front window shows what the test says; at first none is open.
class VirtualFrontFolder final : public FrontFolder {
public:
    explicit VirtualFrontFolder(VirtualRunLoop& loop)
        : loop_(loop) {}

    void ask(std::function<void(const Answer&)> answer) override {
        loop_.requireMainThread("FrontFolder::ask");
        ++asked_;
        if (slow_) {
            waiting_.push_back(std::move(answer));
        } else {
            answer(answer_);
        }
    }

    void setAnswer(Answer answer) { answer_ = std::move(answer); }
    // From now on the file manager takes its time, until answerWaiting().
    void setSlow(bool slow) { slow_ = slow; }
    void answerWaiting() {
        while (!waiting_.empty()) {
            const auto answer = std::move(waiting_.front());
            waiting_.pop_front();
            answer(answer_);
        }
    }
    int asked() const { return asked_; }

private:
    VirtualRunLoop& loop_;
    Answer answer_{.path = "/Users/rb/Desktop"};
    bool slow_ = false;
    std::deque<std::function<void(const Answer&)>> waiting_;
    int asked_ = 0;
};

} // namespace rb
