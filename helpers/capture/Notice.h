#pragma once

#include <string>

namespace rb {

// Tells the user what went wrong: on standard error, and, where no terminal shows that, by the session's
// notifications.
void tellUser(const std::string& text);

} // namespace rb
