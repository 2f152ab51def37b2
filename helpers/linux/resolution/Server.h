#pragma once

#include "helpers/linux/resolution/ModeChange.h"

#include <optional>

namespace rb {

// A connection of its own to the X server that DISPLAY names.
class Server {
public:
    Server();
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    bool isThere() const;
    // Nothing without RandR.
    std::optional<RandrState> state() const { return readRandr(connection_, root_); }
    // Whether the server confirms every area.
    bool apply(const Arrangement& arrangement) const { return applyArrangement(connection_, root_, arrangement); }

private:
    xcb_connection_t* connection_;
    xcb_window_t root_ = 0;
};

} // namespace rb
