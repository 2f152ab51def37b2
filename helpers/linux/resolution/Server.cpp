#include "helpers/linux/resolution/Server.h"

namespace rb {

Server::Server() {
    int number = 0;
    connection_ = xcb_connect(nullptr, &number);
    if (isThere()) {
        auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
        for (; number > 0 && screens.rem > 1; --number) {
            xcb_screen_next(&screens);
        }
        root_ = screens.data->root;
    }
}

Server::~Server() {
    xcb_disconnect(connection_);
}

bool Server::isThere() const {
    return xcb_connection_has_error(connection_) == 0;
}

} // namespace rb
