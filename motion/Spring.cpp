#include "motion/Spring.h"

#include <cassert>
#include <cmath>

namespace rb {

namespace {

constexpr double settledBelow = 0.001;
// An undamped spring never settles; whoever asks gets an hour.
constexpr double longestSettling = 3600;

// What is left of the way, as a function of time: exp(-decay t) times a swing (under-damped) or a straight line
// (critically damped), or the sum of two exponentials (over-damped).
struct Remaining {
    enum class Kind { Swinging, Critical, Creeping };
    Kind kind = Kind::Critical;
    double decay = 0;
    double frequency = 0; // of the swing
    double second = 0;    // weight of the sine, or slope of the line
    double slowRate = 0;  // both negative
    double fastRate = 0;
    double slowWeight = 0;

    explicit Remaining(const Spring& spring) {
        assert(spring.mass > 0 && spring.stiffness > 0 && spring.damping >= 0);
        const double natural = std::sqrt(spring.stiffness / spring.mass);
        const double ratio = spring.damping / (2 * std::sqrt(spring.stiffness * spring.mass));
        decay = ratio * natural;
        if (std::abs(ratio - 1) < 1e-6) {
            decay = natural;
            second = natural - spring.initialVelocity;
        } else if (ratio < 1) {
            kind = Kind::Swinging;
            frequency = natural * std::sqrt(1 - ratio * ratio);
            second = (decay - spring.initialVelocity) / frequency;
        } else {
            kind = Kind::Creeping;
            const double spread = natural * std::sqrt(ratio * ratio - 1);
            slowRate = -decay + spread;
            fastRate = -decay - spread;
            slowWeight = (-spring.initialVelocity - fastRate) / (2 * spread);
        }
    }

    double at(double t) const {
        switch (kind) {
        case Kind::Swinging:
            return std::exp(-decay * t) * (std::cos(frequency * t) + second * std::sin(frequency * t));
        case Kind::Critical:
            return std::exp(-decay * t) * (1 + second * t);
        case Kind::Creeping:
            return slowWeight * std::exp(slowRate * t) + (1 - slowWeight) * std::exp(fastRate * t);
        }
        return 0;
    }

    // Without a swing there is at most one turning point, after which the rest only shrinks. Its time, else 0.
    double turningPoint() const {
        double t = 0;
        if (kind == Kind::Critical && second != 0) {
            t = 1 / decay - 1 / second;
        } else if (kind == Kind::Creeping && slowWeight != 0) {
            const double quotient = (slowWeight - 1) * fastRate / (slowWeight * slowRate);
            t = quotient > 0 ? std::log(quotient) / (slowRate - fastRate) : 0;
        }
        return t > 0 ? t : 0;
    }

    double settled() const {
        if (kind == Kind::Swinging) {
            const double amplitude = std::sqrt(1 + second * second);
            const double time = std::log(amplitude / settledBelow) / decay;
            return time < longestSettling ? time : longestSettling;
        }
        double low = turningPoint();
        double high = low;
        if (std::abs(at(low)) < settledBelow) {
            low = 0;
        } else {
            for (double step = 1 / decay; std::abs(at(high)) >= settledBelow; step *= 2) {
                low = high;
                high += step;
                if (high > longestSettling) {
                    return longestSettling;
                }
            }
        }
        while (high - low > 1e-9 * high) {
            const double middle = (low + high) / 2;
            (std::abs(at(middle)) >= settledBelow ? low : high) = middle;
        }
        return high;
    }
};

} // namespace

double Spring::at(double elapsed) const {
    return elapsed <= 0 ? 0 : 1 - Remaining(*this).at(elapsed);
}

double Spring::settlingDuration() const {
    return Remaining(*this).settled();
}

} // namespace rb
