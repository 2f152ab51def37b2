#pragma once

#include "platform/Desktop.h"

namespace rb {

// Placeholder of the Screens and connections window. Until it is built, opening it only says so in the log.
class DisplayController {
public:
    explicit DisplayController(const Desktop& desktop)
        : desktop_(desktop) {}

    void show();

private:
    const Desktop& desktop_;
};

} // namespace rb
