#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// Reads the kernel's small files under a root folder. Whatever is absent, unreadable or too long is nothing.
class Sysfs {
public:
    explicit Sysfs(std::filesystem::path root)
        : root_(std::move(root)) {}

    // "/sys/class/typec" as a path under the root.
    std::filesystem::path at(const std::string& absolute) const { return root_ / absolute.substr(1); }
    // The file's text without the blanks at its ends; nothing when it is empty.
    static std::optional<std::string> text(const std::filesystem::path& file);
    // A whole number, hexadecimal with 0x, of which only the digits at the start count ("5000mV").
    static std::optional<long long> number(const std::filesystem::path& file);
    // Of "source [sink]" what stands in brackets, of a text without brackets all of it.
    static std::optional<std::string> selected(const std::filesystem::path& file);
    // Names in the folder, sorted naturally (port2 before port10).
    static std::vector<std::string> names(const std::filesystem::path& folder);
    // Where a link leads; nothing when it leads nowhere.
    static std::optional<std::filesystem::path> target(const std::filesystem::path& link);

private:
    std::filesystem::path root_;
};

} // namespace rb
