#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace rb {

// Bytes that are kept once, however many hold them. Immutable, so any thread may read them.
using Bytes = std::vector<std::uint8_t>;
using SharedBytes = std::shared_ptr<const Bytes>;

} // namespace rb
