#pragma once

#include "platform/Observers.h"
#include "platform/Pasteboards.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace rb {

class VirtualRunLoop;

// A pasteboard in memory. The test is the other programs: it copies, and looks at what can be pasted. By default it
// answers at once and doesn't tell of changes, as on macOS; a test may have it otherwise.
class VirtualPasteboard final : public Pasteboard {
public:
    explicit VirtualPasteboard(VirtualRunLoop& loop)
        : loop_(loop) {}

    std::int64_t changeCount() const override { return changeCount_; }
    Handle onChange(std::function<void()> changed) override;
    Handle offeredTypes(const std::vector<std::string>& types,
                        std::function<void(std::vector<std::string>)> answer) override;
    Handle readFiles(std::function<void(std::vector<std::string>)> answer) override;
    Handle readString(std::size_t mostBytes, std::function<void(std::optional<std::string>)> answer) override;
    Handle readData(const std::string& type, std::size_t mostBytes, std::function<void(SharedBytes)> answer) override;
    bool write(PasteboardContents contents) override;

    // What another program copies, part by part; each call is one change.
    struct Copied {
        std::optional<std::string> text = std::nullopt;
        std::map<std::string, Bytes> data = {};
        std::vector<std::string> files = {};
        std::vector<std::string> marks = {}; // further types
    };
    void copy(Copied copied) { replace(std::move(copied), nullptr); }
    void copyText(const std::string& text) { copy({.text = text}); }

    // What can be pasted now; what was promised, once it is there.
    const Copied& contents() const { return contents_; }
    void setTellsChanges(bool tells) { tellsChanges_ = tells; }
    // Each answer then takes that many seconds.
    void setAnswerDelay(double seconds) { answerDelay_ = seconds; }
    void setRefusesWrites(bool refuses) { refusesWrites_ = refuses; }
    // How often contents were read, types aside.
    int reads() const { return reads_; }

private:
    Handle answer(std::function<void()> work);
    void replace(Copied copied, std::shared_ptr<PromisedBytes> promised);
    // Whoever asks for a picture that is still being made waits for it.
    Handle awaitPicture(std::function<void(const SharedBytes&)> answered);

    VirtualRunLoop& loop_;
    Copied contents_;
    std::shared_ptr<PromisedBytes> promised_; // while it is being made
    Handle settled_;
    std::int64_t changeCount_ = 7; // not 0, so that a forgotten start shows
    bool tellsChanges_ = false;
    bool refusesWrites_ = false;
    double answerDelay_ = 0;
    int reads_ = 0;
    Observers<> observers_;
};

class VirtualPasteboards final : public Pasteboards {
public:
    explicit VirtualPasteboards(VirtualRunLoop& loop)
        : general_(loop) {}
    VirtualPasteboard& general() override { return general_; }

private:
    VirtualPasteboard general_;
};

} // namespace rb
