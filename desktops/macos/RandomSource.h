#pragma once

#include "platform/RandomSource.h"

namespace rb {

class MacRandomSource final : public RandomSource {
public:
    int upTo10000() override;
    std::string newUUIDString() override;
};

} // namespace rb
