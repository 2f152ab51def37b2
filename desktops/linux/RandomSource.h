#pragma once

#include "platform/RandomSource.h"

#include <QUuid>

#include <random>

namespace rb {

class LinuxRandomSource final : public RandomSource {
public:
    int upTo10000() override { return uniform_(engine_); }
    std::string newUUIDString() override {
        return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    }

private:
    std::minstd_rand engine_{std::random_device{}()};
    std::uniform_int_distribution<int> uniform_{0, 10000};
};

} // namespace rb
