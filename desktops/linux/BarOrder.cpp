#include "desktops/linux/BarOrder.h"

#include <algorithm>

namespace rb {

namespace {

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

BarOrder::BarOrder(const std::vector<std::string>& stored) {
    for (const std::string& name : stored) {
        if (name == usableName(name)) {
            arrive(name);
        }
    }
}

std::string BarOrder::usableName(const std::string& name) {
    std::string usable;
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        // Cut between characters, not within one.
        if (usable.size() >= longestName && (byte & 0xC0U) != 0x80U) {
            break;
        }
        if (byte >= 0x20 && byte != 0x7F && usable.size() < longestName + 4) {
            usable += character;
        }
    }
    return usable.empty() ? "?" : usable;
}

void BarOrder::arrive(const std::string& name) {
    if (contains(names_, name)) {
        return;
    }
    if (names_.size() == mostNames) {
        names_.pop_back(); // whatever it was, it comes back at the left end
    }
    names_.push_back(name);
}

std::size_t BarOrder::place(const std::string& name) const {
    return static_cast<std::size_t>(std::find(names_.begin(), names_.end(), name) - names_.begin());
}

void BarOrder::arrange(const std::vector<std::string>& present) {
    // Each absent name follows the present one that it followed before; those at the right end stay there.
    std::vector<std::string> arranged;
    const auto takeFollowers = [&](std::size_t from) {
        for (std::size_t i = from; i < names_.size() && !contains(present, names_[i]); ++i) {
            arranged.push_back(names_[i]);
        }
    };
    takeFollowers(0);
    for (const std::string& name : present) {
        arranged.push_back(name);
        const std::size_t old = place(name);
        takeFollowers(old == names_.size() ? old : old + 1);
    }
    names_ = std::move(arranged);
}

} // namespace rb
