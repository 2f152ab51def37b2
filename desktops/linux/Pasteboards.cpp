#include "desktops/linux/Pasteboards.h"

#include "desktops/linux/PasteboardForms.h"
#include "desktops/linux/UriList.h"
#include "desktops/linux/XConnection.h"
#include "platform/Log.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <xcb/xfixes.h>

namespace rb {

namespace {

constexpr const char* clipboard = "CLIPBOARD";
// Password managers mark what they copy with it, as "secret".
constexpr const char* passwordHint = "x-kde-passwordManagerHint";
constexpr std::size_t mostTargetBytes = 262'144; // 65,536 targets
constexpr std::size_t mostListBytes = 4'194'304;
constexpr std::size_t mostHintBytes = 1024;

} // namespace

// What one question of the product needs from the owner, question after question; its handle ends all of it.
struct LinuxPasteboard::Request {
    std::vector<Handle> steps;
    bool dropped = false;

    Handle handle(const std::shared_ptr<Request>& self) const {
        return Handle([self] {
            self->dropped = true;
            self->steps.clear();
        });
    }
};

LinuxPasteboard::LinuxPasteboard(XConnection& connection, RunLoop& loop, Log& log)
    : connection_(connection)
    , loop_(loop)
    , log_(log)
    , reader_(connection, loop)
    , owner_(connection, loop, clipboard) {}

void LinuxPasteboard::watch() {
    if (std::exchange(watching_, true)) {
        return;
    }
    xcb_connection_t* x = connection_.get();
    const xcb_atom_t selection = connection_.atom(clipboard);
    const auto version = xcb_xfixes_query_version(x, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION);
    xcb_xfixes_select_selection_input(x, connection_.root(), selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const XReply<xcb_xfixes_query_version_reply_t> known(xcb_xfixes_query_version_reply(x, version, nullptr));
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(x, &xcb_xfixes_id);
    if (!known || !extension || !extension->present) {
        log_.write("the X server doesn't tell of copies, so none are recorded");
        return;
    }
    const int type = extension->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    events_ = connection_.onEvent([this, type, selection](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) != type) {
            return;
        }
        const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
        if (notify.selection == selection) {
            ownerChanged(notify.owner, notify.selection_timestamp);
        }
    });
    connection_.deliverQueuedEvents();
}

void LinuxPasteboard::ownerChanged(xcb_window_t owner, xcb_timestamp_t time) {
    if (owner == owner_.window() && ownNotifications_ > 0) {
        --ownNotifications_; // what write() has dealt with
        observers_.notify();
        return;
    }
    targets_.reset();
    time_ = time;
    reader_.ownerChanged();
    if (owner == XCB_WINDOW_NONE) {
        return; // gone with what it had: nothing new to read
    }
    ++changeCount_;
    observers_.notify();
}

Handle LinuxPasteboard::onChange(std::function<void()> changed) {
    watch();
    return observers_.add(std::move(changed));
}

void LinuxPasteboard::fetch(const std::shared_ptr<Request>& request, const std::string& target, std::size_t most,
                            std::function<void(Bits)> answer) {
    request->steps.push_back(reader_.read(connection_.atom(clipboard), connection_.atom(target), time_, most,
                                          [request = std::weak_ptr(request), answer = std::move(answer)](Bits bits) {
                                              const auto alive = request.lock();
                                              if (alive && !alive->dropped) {
                                                  answer(std::move(bits));
                                              }
                                          }));
}

void LinuxPasteboard::withTargets(const std::shared_ptr<Request>& request, std::function<void()> next) {
    if (targets_) {
        next();
        return;
    }
    fetch(request, "TARGETS", mostTargetBytes, [this, count = changeCount_, next = std::move(next)](const Bits& bits) {
        std::vector<xcb_atom_t> atoms(bits ? bits->size() / sizeof(xcb_atom_t) : 0);
        if (!atoms.empty()) {
            std::memcpy(atoms.data(), bits->data(), atoms.size() * sizeof(xcb_atom_t));
        }
        if (count == changeCount_) {
            targets_ = std::move(atoms);
        }
        next();
    });
}

bool LinuxPasteboard::offers(const std::string& target) {
    const xcb_atom_t atom = connection_.atom(target);
    return targets_ && atom != XCB_ATOM_NONE && std::find(targets_->begin(), targets_->end(), atom) != targets_->end();
}

std::string LinuxPasteboard::firstOffered(const std::vector<std::string>& targets) {
    const auto found =
        std::find_if(targets.begin(), targets.end(), [this](const std::string& target) { return offers(target); });
    return found == targets.end() ? "" : *found;
}

bool LinuxPasteboard::offersType(const std::string& type) {
    return !firstOffered(targetsOf(type)).empty();
}

Handle LinuxPasteboard::offeredTypes(const std::vector<std::string>& types,
                                     std::function<void(std::vector<std::string>)> answer) {
    const auto request = std::make_shared<Request>();
    withTargets(request, [this, request = std::weak_ptr(request), types, answer = std::move(answer)] {
        const auto alive = request.lock();
        std::vector<std::string> offered;
        std::copy_if(types.begin(), types.end(), std::back_inserter(offered),
                     [this](const std::string& type) { return offersType(type); });
        const bool asked = std::find(types.begin(), types.end(), PasteboardType::Concealed) != types.end();
        if (!alive || !asked || !offers(passwordHint)) {
            answer(offered);
            return;
        }
        // Whatever it says, unless it says nothing; a program that doesn't answer here means it.
        fetch(alive, passwordHint, mostHintBytes, [offered, answer](const Bits& bits) mutable {
            if (!bits || !bits->empty()) {
                offered.emplace_back(PasteboardType::Concealed);
            }
            answer(offered);
        });
    });
    return request->handle(request);
}

Handle LinuxPasteboard::readFiles(std::function<void(std::vector<std::string>)> answer) {
    const auto request = std::make_shared<Request>();
    withTargets(request, [this, request = std::weak_ptr(request), answer = std::move(answer)] {
        const std::string target = firstOffered(targetsOf(PasteboardType::FileUrl));
        const auto alive = request.lock();
        if (!alive || target.empty()) {
            answer({});
            return;
        }
        fetch(alive, target, mostListBytes, [answer](const Bits& bits) {
            answer(bits ? localFilesOf({reinterpret_cast<const char*>(bits->data()), bits->size()})
                        : std::vector<std::string>());
        });
    });
    return request->handle(request);
}

Handle LinuxPasteboard::readString(std::size_t mostBytes, std::function<void(std::optional<std::string>)> answer) {
    const auto request = std::make_shared<Request>();
    withTargets(request, [this, request = std::weak_ptr(request), mostBytes, answer = std::move(answer)] {
        const std::string target = firstOffered(targetsOf(PasteboardType::String));
        const auto alive = request.lock();
        if (!alive || target.empty()) {
            answer(std::nullopt);
            return;
        }
        fetch(alive, target, mostBytes, [target, answer](const Bits& bits) {
            answer(bits ? std::optional(textFrom(target, *bits)) : std::nullopt);
        });
    });
    return request->handle(request);
}

Handle LinuxPasteboard::readData(const std::string& type, std::size_t mostBytes,
                                 std::function<void(SharedBytes)> answer) {
    const auto request = std::make_shared<Request>();
    withTargets(request, [this, request = std::weak_ptr(request), type, mostBytes, answer = std::move(answer)] {
        const std::string target = firstOffered(targetsOf(type));
        const auto alive = request.lock();
        if (!alive || target.empty()) {
            answer(nullptr);
            return;
        }
        fetch(alive, target, mostBytes, [answer](Bits bits) {
            answer(bits && !bits->empty() ? std::make_shared<const Bytes>(std::move(*bits)) : nullptr);
        });
    });
    return request->handle(request);
}

bool LinuxPasteboard::write(PasteboardContents contents) {
    watch();
    auto forms = formsOf(contents, loop_);
    if (forms.empty() || !owner_.take(std::move(forms))) {
        return false;
    }
    ++ownNotifications_;
    ++changeCount_;
    targets_.reset();
    time_ = owner_.time();
    reader_.ownerChanged();
    return true;
}

} // namespace rb
