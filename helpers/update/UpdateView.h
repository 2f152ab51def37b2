#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace rb {

struct UpdateOffer {
    std::string version = {}; // as people call it
    std::string currentVersion = {};
    std::string notes = {}; // may be HTML, from outside
    std::optional<std::uint64_t> length = std::nullopt; // bytes
};

enum class UpdateProblem { Feed, Download, Storage, Verification, Installer };

// What the user sees of a check; each call replaces what was shown before.
class UpdateView {
public:
    virtual ~UpdateView() = default;
    virtual void showChecking() = 0;
    virtual void showUpToDate(const std::string& version) = 0;
    virtual void showOffer(const UpdateOffer& offer) = 0;
    // `whole` is 0 while it isn't known; bytes.
    virtual void showDownload(std::uint64_t received, std::uint64_t whole) = 0;
    virtual void showVerifying() = 0;
    // The package was verified and the system's installer has it.
    virtual void showHandedOver() = 0;
    // `detail` is for the curious, in the words of whoever noticed.
    virtual void showProblem(UpdateProblem problem, const std::string& detail) = 0;
};

} // namespace rb
