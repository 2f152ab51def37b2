#include "desktops/linux/PlistData.h"

#include "desktops/linux/PlistFormat.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <span>
#include <utility>

namespace rb {

namespace {

using namespace PlistFormat;

constexpr std::size_t markSize = sizeof(std::uint64_t);
constexpr char truth = 0x09;

// Reads forward in pieces, since most objects are small and stand one after another.
class Window {
public:
    explicit Window(const ByteStore& file)
        : file_(file) {}

    // As many as there are of these bytes, valid until the next call; nothing when they can't be read.
    std::optional<std::string_view> bytes(std::uint64_t offset, std::uint64_t size) {
        const std::uint64_t end = file_.size();
        if (offset > end || size > end - offset) {
            return std::nullopt;
        }
        if (offset < start_ || offset + size > start_ + window_.size()) {
            constexpr std::uint64_t ahead = 16'384;
            window_.resize(std::min(std::max(size, ahead), end - offset));
            start_ = offset;
            if (!file_.read(offset, {reinterpret_cast<std::uint8_t*>(window_.data()), window_.size()})) {
                window_.clear();
                return std::nullopt;
            }
        }
        return std::string_view(window_).substr(offset - start_, size);
    }

private:
    const ByteStore& file_;
    std::uint64_t start_ = 0;
    std::string window_;
};

unsigned bytesFor(std::uint64_t value) {
    unsigned size = 1;
    while (size < sizeof value && value >> (8 * size) != 0) {
        ++size;
    }
    return size;
}

void appendDataHead(std::string& text, std::uint64_t size) {
    constexpr std::uint64_t mostInHead = 14;
    if (size <= mostInHead) {
        text += static_cast<char>(0x40U | size);
        return;
    }
    text += '\x4F';
    unsigned power = 0;
    while ((1U << power) < bytesFor(size)) {
        ++power;
    }
    text += static_cast<char>(0x10U | power);
    append(text, size, 1U << power);
}

// What follows the objects.
std::string ending(const std::vector<std::uint64_t>& offsets, std::uint64_t table, const Trailer& old) {
    std::string text;
    const unsigned offsetSize = bytesFor(table);
    for (const std::uint64_t offset : offsets) {
        append(text, offset, offsetSize);
    }
    constexpr std::size_t unused = 6;
    text.append(unused, '\0');
    append(text, offsetSize, 1);
    append(text, old.refSize, 1);
    append(text, offsets.size(), 8);
    append(text, old.top, 8);
    append(text, table, 8);
    return text;
}

} // namespace

std::string plistMark(std::uint64_t number) {
    std::string bytes;
    append(bytes, number, markSize);
    return bytes;
}

std::uint64_t numberOfMark(std::string_view bytes) {
    return bytes.size() == markSize ? number(bytes) : ~std::uint64_t{0};
}

MarkedPlist withMarks(const ByteStore& file) {
    const auto failed = [](const char* reason) { return MarkedPlist{.fault = reason}; };
    Window window(file);
    const auto start = window.bytes(0, magic.size());
    if (!start || *start != magic) {
        return failed("no binary property list");
    }
    const auto last = file.size() < trailerSize ? std::nullopt : window.bytes(file.size() - trailerSize, trailerSize);
    const auto trailer = last ? PlistFormat::trailer(*last, file.size()) : std::nullopt;
    if (!trailer) {
        return failed("a wrong trailer");
    }
    std::vector<std::uint64_t> places(trailer->objects);
    {
        const auto table = window.bytes(trailer->table, trailer->objects * trailer->offsetSize);
        if (!table) {
            return failed("it can't be read");
        }
        for (std::size_t object = 0; object < places.size(); ++object) {
            places[object] = number(table->substr(object * trailer->offsetSize, trailer->offsetSize));
        }
    }
    MarkedPlist result{.list = std::string(magic)};
    std::uint64_t copied = 0;
    for (std::uint64_t& place : places) {
        const std::uint64_t offset = std::exchange(place, result.list.size());
        const std::uint64_t room = offset >= magic.size() && offset < trailer->table ? trailer->table - offset : 0;
        const auto head = window.bytes(offset, std::min<std::uint64_t>(room, longestHead));
        if (room > 0 && !head) {
            return failed("it can't be read");
        }
        const auto object = room > 0 ? PlistFormat::object(*head) : std::nullopt;
        if (!object || object->size(trailer->refSize) > room) {
            result.list += truth;
        } else if (object->kind == Kind::Data) {
            appendDataHead(result.list, markSize);
            result.list += plistMark(result.data.size());
            result.data.push_back({.offset = offset + object->head, .size = object->bytes});
        } else {
            const std::uint64_t size = object->size(trailer->refSize);
            copied += size;
            if (copied > file.size()) {
                return failed("objects that overlap");
            }
            const auto whole = window.bytes(offset, size);
            if (!whole) {
                return failed("it can't be read");
            }
            result.list += *whole;
        }
    }
    const std::uint64_t table = result.list.size();
    result.list += ending(places, table, *trailer);
    return result;
}

DividedPlist withRoomForData(std::string_view list, const std::vector<std::uint64_t>& sizes) {
    DividedPlist result;
    if (list.size() < trailerSize) {
        return result;
    }
    const auto trailer = PlistFormat::trailer(list.substr(list.size() - trailerSize), list.size());
    if (!trailer) {
        return result;
    }
    std::vector<std::uint64_t> places(trailer->objects);
    for (std::size_t object = 0; object < places.size(); ++object) {
        places[object] = number(list.substr(trailer->table + object * trailer->offsetSize, trailer->offsetSize));
    }
    std::vector<std::size_t> inOrder(places.size());
    std::iota(inOrder.begin(), inOrder.end(), std::size_t{0});
    std::ranges::sort(inOrder, {}, [&](std::size_t object) { return places[object]; });
    std::string text(magic);
    std::uint64_t written = 0; // before `text`
    for (const std::size_t index : inOrder) {
        const std::string_view rest = list.substr(places[index], trailer->table - places[index]);
        const auto object = PlistFormat::object(rest.substr(0, longestHead));
        if (!object) {
            return {};
        }
        places[index] = written + text.size();
        const std::string_view whole = rest.substr(0, object->size(trailer->refSize));
        const std::uint64_t number =
            object->kind == Kind::Data ? numberOfMark(whole.substr(object->head)) : sizes.size();
        if (number >= sizes.size()) {
            text += whole;
            continue;
        }
        appendDataHead(text, sizes[number]);
        written += text.size() + sizes[number];
        result.texts.push_back(std::exchange(text, {}));
        result.numbers.push_back(number);
    }
    text += ending(places, written + text.size(), *trailer);
    result.texts.push_back(std::move(text));
    return result;
}

} // namespace rb
