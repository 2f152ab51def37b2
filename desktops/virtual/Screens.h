#pragma once

#include "platform/Observers.h"
#include "platform/Screens.h"

namespace rb {

// The connected screens; one of 1440 × 900 points with a menu bar of 24 to begin with.
class VirtualScreens final : public Screens {
public:
    VirtualScreens();

    std::vector<Screen> all() const override { return screens_; }
    std::optional<Screen> main() const override;
    bool showsFullScreenSpace(std::uint32_t id) const override { return fullScreen_ == id; }
    Handle onChange(std::function<void()> changed) override { return observers_.add(std::move(changed)); }

    // Plugs, unplugs and rearranges; the first is the primary one, which also becomes the main one.
    void set(std::vector<Screen> screens);
    // The keyboard focus goes to another screen of the list.
    void setMain(std::uint32_t id) { main_ = id; }
    // A program fills that screen, or none does.
    void setFullScreenSpace(std::optional<std::uint32_t> id) { fullScreen_ = id; }

private:
    std::vector<Screen> screens_;
    std::optional<std::uint32_t> main_;
    std::optional<std::uint32_t> fullScreen_;
    Observers<> observers_;
};

} // namespace rb
