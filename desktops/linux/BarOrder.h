#pragma once

#include <functional>
#include <string>
#include <vector>

namespace rb {

// In which order things stand in our own menu bar, by their names, from the right end. What arrives for the first time
// stands at the left end; what the user has moved keeps its place, also over restarts. Main thread only.
class BarOrder {
public:
    // Enough for every program that a user ever sees; the names come from other programs.
    static constexpr std::size_t mostNames = 128;
    static constexpr std::size_t longestName = 64;

    // As it was stored; what isn't a usable name is left out.
    explicit BarOrder(const std::vector<std::string>& stored = {});

    // Makes sure that the name has a place.
    void arrive(const std::string& name);
    // The smaller, the further right; unknown names come last.
    std::size_t place(const std::string& name) const;
    // The user moved one of those that are present now; they stand in this order from the right. The absent ones stay
    // beside the neighbours that they had to their right.
    void arrange(const std::vector<std::string>& present);

    const std::vector<std::string>& names() const { return names_; }

    // A name as it may be stored: shortened, without control characters, never empty.
    static std::string usableName(const std::string& name);

private:
    std::vector<std::string> names_; // from the right
};

} // namespace rb
