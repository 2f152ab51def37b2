#include "desktops/linux/PlistGuard.h"

#include "desktops/linux/PlistFormat.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace rb {

namespace {

using namespace PlistFormat;

constexpr std::uint64_t mostNodes = 4'000'000;
constexpr unsigned mostDepth = 64;
// Times the file's size; archives share almost nothing but short texts.
constexpr std::uint64_t mostGrowth = 4;
constexpr std::uint64_t smallFile = 1U << 24U;

class Plist {
public:
    explicit Plist(std::string_view file)
        : file_(file) {}

    std::string fault() {
        if (file_.size() < magic.size() + trailerSize || !file_.starts_with(magic)) {
            return "no binary property list";
        }
        const auto trailer = PlistFormat::trailer(file_.substr(file_.size() - trailerSize), file_.size());
        if (!trailer) {
            return "a wrong trailer";
        }
        trailer_ = *trailer;
        const std::uint64_t top = trailer_.top;
        visited_.resize(trailer_.objects);
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
        Object object = {};
        std::uint64_t first = 0; // where its references begin
    };

    std::uint64_t numberAt(std::uint64_t at, unsigned size) const { return number(file_.substr(at, size)); }

    std::optional<Layout> layout(std::uint64_t index) const {
        const std::uint64_t at = numberAt(trailer_.table + index * trailer_.offsetSize, trailer_.offsetSize);
        if (at < magic.size() || at >= trailer_.table) {
            return std::nullopt;
        }
        const std::uint64_t room = trailer_.table - at;
        const auto found = object(file_.substr(at, std::min<std::uint64_t>(room, longestHead)));
        return found && found->size(trailer_.refSize) <= room ? std::optional(Layout{*found, at + found->head})
                                                              : std::nullopt;
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
            visited_[object] = {.state = Visited::State::Open, .bytes = found->object.bytes};
            path.push_back({object, *found, 0});
            return path.size() <= mostDepth || fail("objects nested too deeply");
        };
        if (!enter(top)) {
            return false;
        }
        while (!path.empty()) {
            Step& step = path.back();
            Visited& self = visited_[step.object];
            if (step.next == step.layout.object.children) {
                self.state = Visited::State::Done;
                path.pop_back();
                continue;
            }
            const std::uint64_t child = numberAt(step.layout.first + step.next * trailer_.refSize, trailer_.refSize);
            if (child >= trailer_.objects) {
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
    Trailer trailer_;
    std::vector<Visited> visited_;
    std::string fault_;
};

} // namespace

std::string plistFault(std::string_view file) {
    return Plist(file).fault();
}

} // namespace rb
