#pragma once

#include "platform/Pasteboards.h"

#include <memory>

namespace rb {

// The system's general pasteboard. It answers at once and doesn't tell of changes. A promised picture goes to the
// system when somebody asks for it; asked too early, the main thread waits for it, since the system takes no later
// answer.
class MacPasteboard final : public Pasteboard {
public:
    MacPasteboard();
    ~MacPasteboard() override;
    MacPasteboard(const MacPasteboard&) = delete;
    MacPasteboard& operator=(const MacPasteboard&) = delete;

    std::int64_t changeCount() const override;
    Handle onChange(std::function<void()> changed) override;
    Handle offeredTypes(const std::vector<std::string>& types,
                        std::function<void(std::vector<std::string>)> answer) override;
    Handle readFiles(std::function<void(std::vector<std::string>)> answer) override;
    Handle readString(std::size_t mostBytes, std::function<void(std::optional<std::string>)> answer) override;
    Handle readData(const std::string& type, std::size_t mostBytes, std::function<void(SharedBytes)> answer) override;
    bool write(PasteboardContents contents) override;

private:
    struct Promise; // of the picture that is offered and not yet there
    std::unique_ptr<Promise> promise_;
};

class MacPasteboards final : public Pasteboards {
public:
    MacPasteboard& general() override { return general_; }

private:
    MacPasteboard general_;
};

} // namespace rb
