#include "helpers/update/Versions.h"

#include <algorithm>

namespace rb {

namespace {

constexpr std::size_t longestVersion = 64;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// A run of digits or of letters; an empty one stands for the end.
std::string_view nextPart(std::string_view& rest) {
    std::size_t start = 0;
    while (start < rest.size() && !isDigit(rest[start]) && !isLetter(rest[start])) {
        ++start;
    }
    rest.remove_prefix(start);
    if (rest.empty()) {
        return {};
    }
    const bool number = isDigit(rest.front());
    std::size_t end = 1;
    while (end < rest.size() && (number ? isDigit(rest[end]) : isLetter(rest[end]))) {
        ++end;
    }
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(end);
    return part;
}

std::string_view withoutZeros(std::string_view number) {
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

std::weak_ordering compareNumbers(std::string_view one, std::string_view other) {
    one = withoutZeros(one);
    other = withoutZeros(other);
    return one.size() != other.size() ? one.size() <=> other.size() : one.compare(other) <=> 0;
}

// Letters come before the end, the end is a zero.
int rankOf(std::string_view part) {
    return part.empty() || isDigit(part.front()) ? 1 : 0;
}

} // namespace

std::weak_ordering compareVersions(std::string_view one, std::string_view other) {
    for (;;) {
        const std::string_view mine = nextPart(one);
        const std::string_view theirs = nextPart(other);
        if (mine.empty() && theirs.empty()) {
            return std::weak_ordering::equivalent;
        }
        if (const auto order = rankOf(mine) <=> rankOf(theirs); std::is_neq(order)) {
            return order;
        }
        const std::weak_ordering order =
            rankOf(mine) == 1 ? compareNumbers(mine, theirs) : std::weak_ordering(mine.compare(theirs) <=> 0);
        if (std::is_neq(order)) {
            return order;
        }
    }
}

bool isVersion(std::string_view text) {
    return !text.empty() && text.size() <= longestVersion && isDigit(text.front()) &&
           std::all_of(text.begin(), text.end(), [](char c) {
               return isDigit(c) || isLetter(c) || c == '.' || c == '+' || c == '-' || c == '~';
           });
}

std::string upstreamVersion(std::string_view debianVersion) {
    const std::size_t colon = debianVersion.find(':');
    if (colon != std::string_view::npos) {
        debianVersion.remove_prefix(colon + 1);
    }
    return std::string(debianVersion.substr(0, debianVersion.rfind('-')));
}

} // namespace rb
