#include "desktops/macos/RandomSource.h"

#include <cstdlib>

namespace rb {

int MacRandomSource::upTo10000() {
    return static_cast<int>(arc4random_uniform(10001));
}

} // namespace rb
