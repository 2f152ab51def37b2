#pragma once

namespace rb {

// A damped spring that pulls a value from 0 to 1. A pure function of elapsed seconds: no clock, no step size.
// Under-damped, critically damped and over-damped springs all have closed forms.
struct Spring {
    double mass = 1;
    double stiffness = 100;
    double damping = 10;
    double initialVelocity = 0; // in units of the whole distance per second, towards the target

    // Progress after `elapsed` seconds; may overshoot 1. 0 for negative times.
    double at(double elapsed) const;
    // Seconds until the remaining swing stays below a thousandth of the distance; an hour at most, as an undamped
    // spring never settles.
    double settlingDuration() const;
    friend bool operator==(const Spring&, const Spring&) = default;
};

} // namespace rb
