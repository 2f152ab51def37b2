#include "desktops/linux/PlistGuard.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace rb {

namespace {

constexpr std::string_view magic = "bplist00";
constexpr std::size_t trailerSize = 32;
constexpr std::uint64_t mostObjects = 1'000'000;
constexpr std::uint64_t mostNodes = 4'000'000;
constexpr unsigned mostDepth = 64;
// Times the file's size; archives share almost nothing but short texts.
constexpr std::uint64_t mostGrowth = 4;
constexpr std::uint64_t smallFile = 1U << 24U;

enum Marker : unsigned {
    Fixed = 0,
    Integer = 1,
    Real = 2,
    Date = 3,
    Data = 4,
    Ascii = 5,
    Wide = 6,
    Uid = 8,
    Array = 10,
    Set = 12,
    Dictionary = 13
};

class Plist {
public:
    explicit Plist(std::string_view file)
        : file_(file) {}

    std::string fault() {
        if (file_.size() < magic.size() + trailerSize || !file_.starts_with(magic)) {
            return "no binary property list";
        }
        const std::size_t trailer = file_.size() - trailerSize;
        offsetSize_ = byte(trailer + 6);
        refSize_ = byte(trailer + 7);
        objects_ = number(trailer + 8, 8);
        const std::uint64_t top = number(trailer + 16, 8);
        table_ = number(trailer + 24, 8);
        if (offsetSize_ < 1 || offsetSize_ > 8 || refSize_ < 1 || refSize_ > 8 || objects_ == 0 ||
            objects_ > mostObjects || top >= objects_ || table_ < magic.size() || table_ > trailer ||
            objects_ * offsetSize_ > trailer - table_) {
            return "a wrong trailer";
        }
        visited_.resize(objects_);
        if (!visit(top)) {
            return fault_;
        }
        const std::uint64_t mostBytes = std::max<std::uint64_t>(smallFile, mostGrowth * file_.size());
        return visited_[top].nodes > mostNodes || visited_[top].bytes > mostBytes ? "objects that grow too large" : "";
    }

private:
    struct Visited {
        enum class State : std::uint8_t { New, Open, Done } state = State::New;
        unsigned depth = 1;
        std::uint64_t nodes = 1; // when written out
        std::uint64_t bytes = 0;
    };
    struct Layout {
        std::uint64_t bytes = 0;    // of its own contents
        std::uint64_t children = 0; // references
        std::uint64_t first = 0;    // where they begin
    };

    unsigned byte(std::uint64_t at) const { return static_cast<unsigned char>(file_[at]); }
    std::uint64_t number(std::uint64_t at, unsigned size) const {
        std::uint64_t value = 0;
        for (unsigned index = 0; index < size; ++index) {
            value = value << 8U | byte(at + index);
        }
        return value;
    }

    std::optional<Layout> layout(std::uint64_t object) const {
        const std::uint64_t at = number(table_ + object * offsetSize_, offsetSize_);
        if (at < magic.size() || at >= table_) {
            return std::nullopt;
        }
        const unsigned marker = byte(at) >> 4U;
        const unsigned low = byte(at) & 0xFU;
        std::uint64_t start = at + 1;
        std::uint64_t count = low;
        constexpr unsigned countFollows = 0xF;
        if (low == countFollows && marker >= Data && marker != Uid) {
            if (start >= table_ || byte(start) >> 4U != Integer || (byte(start) & 0xFU) > 3) {
                return std::nullopt;
            }
            const unsigned size = 1U << (byte(start) & 0xFU);
            if (size > table_ - start - 1) {
                return std::nullopt;
            }
            count = number(start + 1, size);
            start += 1 + size;
        }
        if (count > file_.size()) {
            return std::nullopt;
        }
        Layout result;
        switch (marker) {
        case Fixed:
            break;
        case Integer:
            result.bytes = low > 4 ? file_.size() : std::uint64_t{1} << low;
            break;
        case Real:
            result.bytes = low == 2 || low == 3 ? std::uint64_t{1} << low : file_.size();
            break;
        case Date:
            result.bytes = sizeof(double);
            break;
        case Data:
        case Ascii:
            result.bytes = count;
            break;
        case Wide:
            result.bytes = 2 * count;
            break;
        case Uid:
            result.bytes = low + 1;
            break;
        case Array:
        case Set:
            result.children = count;
            break;
        case Dictionary:
            result.children = 2 * count;
            break;
        default:
            return std::nullopt;
        }
        result.first = start;
        return result.bytes + result.children * refSize_ <= table_ - start ? std::optional(result) : std::nullopt;
    }

    bool fail(const char* reason) {
        fault_ = reason;
        return false;
    }

    // By a stack of our own, so that depth costs none of the thread's.
    bool visit(std::uint64_t top) {
        struct Step {
            std::uint64_t object = 0;
            Layout layout = {};
            std::uint64_t next = 0;
        };
        std::vector<Step> path;
        const auto enter = [&](std::uint64_t object) {
            const auto found = layout(object);
            if (!found) {
                return fail("an object outside of the file, or of an unknown kind");
            }
            visited_[object] = {.state = Visited::State::Open, .bytes = found->bytes};
            path.push_back({object, *found, 0});
            return path.size() <= mostDepth || fail("objects nested too deeply");
        };
        if (!enter(top)) {
            return false;
        }
        while (!path.empty()) {
            Step& step = path.back();
            Visited& self = visited_[step.object];
            if (step.next == step.layout.children) {
                self.state = Visited::State::Done;
                path.pop_back();
                continue;
            }
            const std::uint64_t child = number(step.layout.first + step.next * refSize_, refSize_);
            if (child >= objects_) {
                return fail("a reference to nowhere");
            }
            Visited& other = visited_[child];
            if (other.state == Visited::State::Open) {
                return fail("an object that contains itself");
            }
            if (other.state == Visited::State::New) {
                if (!enter(child)) {
                    return false;
                }
                continue; // comes back to this reference when it is done
            }
            ++step.next;
            self.depth = std::max(self.depth, other.depth + 1);
            // Bounded at each step, so that sums can't overflow.
            self.nodes = std::min(mostNodes + 1, self.nodes + other.nodes);
            self.bytes = std::min<std::uint64_t>(std::uint64_t{1} << 62U, self.bytes + other.bytes);
            if (self.depth > mostDepth) {
                return fail("objects nested too deeply");
            }
        }
        return true;
    }

    std::string_view file_;
    unsigned offsetSize_ = 0;
    unsigned refSize_ = 0;
    std::uint64_t objects_ = 0;
    std::uint64_t table_ = 0;
    std::vector<Visited> visited_;
    std::string fault_;
};

} // namespace

std::string plistFault(std::string_view file) {
    return Plist(file).fault();
}

} // namespace rb
