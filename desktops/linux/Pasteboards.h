#pragma once

#include "desktops/linux/SelectionOwner.h"
#include "desktops/linux/SelectionReader.h"
#include "platform/Observers.h"
#include "platform/Pasteboards.h"

#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace rb {

class Log;
class RunLoop;
class XConnection;

// The CLIPBOARD selection. Its changes are counted as the server tells of new owners; PRIMARY, which merely follows
// what is marked, is nobody's copy and left alone.
class LinuxPasteboard final : public Pasteboard {
public:
    LinuxPasteboard(XConnection& connection, RunLoop& loop, Log& log);

    std::int64_t changeCount() const override { return changeCount_; }
    Handle onChange(std::function<void()> changed) override;
    Handle offeredTypes(const std::vector<std::string>& types,
                        std::function<void(std::vector<std::string>)> answer) override;
    Handle readFiles(std::function<void(std::vector<std::string>)> answer) override;
    Handle readString(std::size_t mostBytes, std::function<void(std::optional<std::string>)> answer) override;
    Handle readData(const std::string& type, std::size_t mostBytes, std::function<void(SharedBytes)> answer) override;
    bool write(PasteboardContents contents) override;

    // When the program ends, so that what it holds can still be pasted.
    void handOver() { owner_.handOver(); }

private:
    struct Request;
    using Bits = std::optional<Bytes>;

    void watch();
    void ownerChanged(xcb_window_t owner, xcb_timestamp_t time);
    // Asks for the targets unless they are known, then goes on.
    void withTargets(const std::shared_ptr<Request>& request, std::function<void()> next);
    bool offers(const std::string& target);
    // The first of the targets that is offered; empty for none.
    std::string firstOffered(const std::vector<std::string>& targets);
    void fetch(const std::shared_ptr<Request>& request, const std::string& target, std::size_t most,
               std::function<void(Bits)> answer);
    bool offersType(const std::string& type);

    XConnection& connection_;
    RunLoop& loop_;
    Log& log_;
    SelectionReader reader_;
    SelectionOwner owner_;
    bool watching_ = false;
    Handle events_;
    Observers<> observers_;
    std::int64_t changeCount_ = 1;
    int ownNotifications_ = 0; // of changes that are counted already
    xcb_timestamp_t time_ = XCB_CURRENT_TIME;
    std::optional<std::vector<xcb_atom_t>> targets_; // of the present owner
};

class LinuxPasteboards final : public Pasteboards {
public:
    LinuxPasteboards(XConnection& connection, RunLoop& loop, Log& log)
        : general_(connection, loop, log) {}
    LinuxPasteboard& general() override { return general_; }

private:
    LinuxPasteboard general_;
};

} // namespace rb
