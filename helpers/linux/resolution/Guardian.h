#pragma once

#include <string>

namespace rb {

// A process of its own that takes the mode back from the record on disk when the helper ends without having done so,
// or hangs. It ends with the helper.
class Guardian {
public:
    // Forks; nothing may be connected or locked yet that can't be shared. Check started() before relying on it.
    explicit Guardian(const std::string& record);
    Guardian(const Guardian&) = delete;
    Guardian& operator=(const Guardian&) = delete;
    // The helper has done what there was to do; the guardian goes.
    ~Guardian();

    bool started() const { return pipe_ >= 0; }

private:
    int pipe_ = -1;
};

} // namespace rb
