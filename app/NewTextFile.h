#pragma once

#include "platform/Desktop.h"

namespace rb {

// Placeholder of the command that creates a text file where the user is looking. Until it is built, choosing it
// only says so in the log.
class NewTextFile {
public:
    explicit NewTextFile(const Desktop& desktop)
        : desktop_(desktop) {}

    void newTextFile();
    void installTextQuickAction() {}

private:
    const Desktop& desktop_;
};

} // namespace rb
