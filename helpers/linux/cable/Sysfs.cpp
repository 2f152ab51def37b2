#include "helpers/linux/cable/Sysfs.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fstream>

namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t longestAttribute = 4096; // the kernel's page
constexpr std::size_t mostNames = 4096;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Numbers within names by their value.
bool naturallyBefore(const std::string& a, const std::string& b) {
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            const std::size_t startA = std::min(a.find_first_not_of('0', i), a.size());
            const std::size_t startB = std::min(b.find_first_not_of('0', j), b.size());
            std::size_t endA = startA;
            std::size_t endB = startB;
            while (endA < a.size() && isDigit(a[endA])) {
                ++endA;
            }
            while (endB < b.size() && isDigit(b[endB])) {
                ++endB;
            }
            const auto lengthA = endA - startA;
            const auto lengthB = endB - startB;
            if (lengthA != lengthB) {
                return lengthA < lengthB;
            }
            if (const int order = a.compare(startA, lengthA, b, startB, lengthB); order != 0) {
                return order < 0;
            }
            i = endA;
            j = endB;
        } else if (a[i] != b[j]) {
            return a[i] < b[j];
        } else {
            ++i;
            ++j;
        }
    }
    return a.size() - i < b.size() - j;
}

} // namespace

std::optional<std::string> Sysfs::text(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        return std::nullopt;
    }
    std::ifstream stream(file, std::ios::binary);
    std::string contents(longestAttribute, '\0');
    stream.read(contents.data(), static_cast<std::streamsize>(contents.size()));
    contents.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    const char* const blanks = " \t\r\n\v\f";
    const std::size_t first = contents.find_first_not_of(blanks);
    if (first == std::string::npos) {
        return std::nullopt;
    }
    contents = contents.substr(first, contents.find_last_not_of(blanks) - first + 1);
    return contents.find('\0') == std::string::npos ? std::optional(std::move(contents)) : std::nullopt;
}

std::optional<long long> Sysfs::number(const fs::path& file) {
    const auto contents = text(file);
    if (!contents) {
        return std::nullopt;
    }
    const bool hexadecimal = contents->starts_with("0x") || contents->starts_with("0X");
    const char* const begin = contents->data() + (hexadecimal ? 2 : 0);
    long long value = 0;
    const auto [end, error] = std::from_chars(begin, contents->data() + contents->size(), value, hexadecimal ? 16 : 10);
    return error == std::errc() && end != begin ? std::optional(value) : std::nullopt;
}

std::optional<std::string> Sysfs::selected(const fs::path& file) {
    auto contents = text(file);
    if (!contents) {
        return std::nullopt;
    }
    const std::size_t open = contents->find('[');
    const std::size_t close = contents->find(']', open == std::string::npos ? 0 : open);
    if (open == std::string::npos || close == std::string::npos) {
        return contents;
    }
    return contents->substr(open + 1, close - open - 1);
}

std::vector<std::string> Sysfs::names(const fs::path& folder) {
    std::vector<std::string> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end && found.size() < mostNames;
         entry.increment(error)) {
        found.push_back(entry->path().filename().string());
    }
    std::sort(found.begin(), found.end(), naturallyBefore);
    return found;
}

std::optional<fs::path> Sysfs::target(const fs::path& link) {
    std::error_code error;
    fs::path path = fs::canonical(link, error);
    return error ? std::nullopt : std::optional(std::move(path));
}

} // namespace rb
