#pragma once

namespace rb {

// Whether a compositor shows translucent windows as such now.
bool isComposited();

} // namespace rb
