#pragma once

#include "desktops/virtual/RunLoop.h"
#include "platform/QuickActions.h"

#include <map>
#include <string>

namespace rb {

// File managers in memory that can show an action, each with the copy that is installed for it.
class VirtualQuickActions final : public QuickActions {
public:
    struct Place {
        bool installed = false;
        std::optional<std::string> version = std::nullopt; // of the installed copy
        std::optional<std::string> refusal = std::nullopt; // why nothing can be changed here
        int writes = 0;                                    // how often it was installed
    };

    explicit VirtualQuickActions(VirtualRunLoop& loop)
        : loop_(loop) {}

    std::vector<std::unique_ptr<QuickAction>> textActions() override {
        return bundled_ ? actions([](const Place&) { return true; }) : std::vector<std::unique_ptr<QuickAction>>();
    }
    std::vector<std::unique_ptr<QuickAction>> installedTextActions() override {
        return actions([](const Place& place) { return place.installed; });
    }
    void refresh() override { ++refreshes_; }

    // The version of the program's copy; nothing when it brings none.
    void setBundledVersion(std::optional<std::string> version) { bundled_ = std::move(version); }
    // Made when it is first named; there is none to begin with.
    Place& place(const std::string& name) { return places_[name]; }
    int refreshes() const { return refreshes_; }

private:
    class Action final : public QuickAction {
    public:
        Action(VirtualQuickActions& owner, Place& place)
            : owner_(owner)
            , place_(place) {}
        std::optional<std::string> bundledVersion() const override { return owner_.bundled_; }
        std::optional<std::string> installedVersion() const override { return place_.version; }
        bool isInstalled() const override { return place_.installed; }
        std::optional<std::string> remove() override {
            if (place_.refusal) {
                return place_.refusal;
            }
            place_.installed = false;
            place_.version.reset();
            return std::nullopt;
        }
        std::optional<std::string> install() override {
            if (place_.refusal || place_.installed) {
                return place_.refusal.value_or("there is something already");
            }
            place_.installed = true;
            place_.version = owner_.bundled_;
            ++place_.writes;
            return std::nullopt;
        }

    private:
        VirtualQuickActions& owner_;
        Place& place_;
    };

    template <typename Wanted>
    std::vector<std::unique_ptr<QuickAction>> actions(const Wanted& wanted) {
        loop_.requireMainThread("QuickActions");
        std::vector<std::unique_ptr<QuickAction>> found;
        for (auto& [name, place] : places_) {
            if (wanted(place)) {
                found.push_back(std::make_unique<Action>(*this, place));
            }
        }
        return found;
    }

    VirtualRunLoop& loop_;
    std::optional<std::string> bundled_ = "1";
    std::map<std::string, Place> places_;
    int refreshes_ = 0;
};

} // namespace rb
