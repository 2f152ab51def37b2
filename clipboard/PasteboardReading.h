#pragma once

#include "clipboard/ClipItem.h"
#include "platform/Handle.h"
#include "platform/Pasteboards.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// One look at a pasteboard: first whether it may be kept, then files, text and pictures, of which the first kind that
// applies wins. Ends with this object. What changes while it is read gives nothing, since the parts could belong to
// different copies. Main thread only.
class PasteboardReading {
public:
    static constexpr std::size_t mostCharacters = 200'000; // UTF-16 units
    static constexpr std::size_t mostImageBytes = 6'291'456;

    // Types of which any one means that what is on the pasteboard isn't to be recorded.
    static const std::vector<std::string>& privateTypes();

    // The answer comes once, maybe before start() returns; it doesn't destroy this. Nothing when there is nothing to
    // record.
    PasteboardReading(Pasteboard& pasteboard, double now, std::function<void(std::optional<RBClipItem>)> answer);
    PasteboardReading(const PasteboardReading&) = delete;
    PasteboardReading& operator=(const PasteboardReading&) = delete;

    void start();

private:
    void typesCame(const std::vector<std::string>& offered);
    void readText();
    void readImage(std::size_t index);
    void finish(std::optional<RBClipItem> item);
    // An answer that counts only while this lives and the pasteboard hasn't changed.
    template <typename Step>
    auto step(Step next);

    Pasteboard& pasteboard_;
    double now_;
    std::function<void(std::optional<RBClipItem>)> answer_;
    std::int64_t changeCount_;
    std::vector<std::string> offered_;
    std::vector<Handle> requests_; // an answer that comes at once asks on within its request
    Lifetime lifetime_;
};

} // namespace rb
