#include "desktops/linux/ProgramTakeover.h"

#include "desktops/linux/DefaultsFormat.h"
#include "desktops/linux/PrivateFile.h"
#include "platform/Log.h"

#include <utility>

namespace rb {

namespace {

PropertyData bytesOf(const std::string& text) {
    return {{text.begin(), text.end()}};
}

ScreenshotProgram::State stateIn(const PropertyDictionary& entry, const char* key) {
    const auto found = entry.find(key);
    const auto* data = found == entry.end() ? nullptr : found->second.get<PropertyData>();
    return data == nullptr ? std::nullopt
                           : ScreenshotProgram::State(std::string(data->bytes.begin(), data->bytes.end()));
}

} // namespace

ProgramTakeover::ProgramTakeover(std::vector<std::unique_ptr<ScreenshotProgram>> programs, std::string journal,
                                 Log& log)
    : programs_(std::move(programs))
    , journalPath_(std::move(journal))
    , log_(log) {}

bool ProgramTakeover::readJournal() {
    journal_.clear();
    const PrivateFile::Reading reading = PrivateFile(journalPath_).read();
    if (!reading.readable) {
        log_.write("cannot read " + journalPath_);
        return false;
    }
    if (!reading.bytes) {
        return true;
    }
    ParsedDefaults parsed = parseDefaults(*reading.bytes);
    if (!parsed.values) {
        log_.write(journalPath_ + " is not valid (" + parsed.error + ")");
        return false;
    }
    journal_ = std::move(*parsed.values);
    return true;
}

bool ProgramTakeover::writeJournal() {
    const PrivateFile file(journalPath_);
    const auto text = writeDefaults(journal_);
    if (journal_.empty() ? file.write(std::nullopt) : text && file.write(*text)) {
        return true;
    }
    log_.write("cannot write " + journalPath_);
    return false;
}

std::optional<ProgramTakeover::Entry> ProgramTakeover::entryOf(const std::string& program) const {
    const auto found = journal_.find(program);
    const auto* entry = found == journal_.end() ? nullptr : found->second.get<PropertyDictionary>();
    if (entry == nullptr) {
        return std::nullopt;
    }
    return Entry{.before = stateIn(*entry, "before"), .after = stateIn(*entry, "after")};
}

bool ProgramTakeover::giveBack(ScreenshotProgram& program, const Entry& entry) {
    const ScreenshotProgram::Reading reading = program.read();
    if (!reading.readable) {
        log_.write("cannot read the settings of " + program.name());
        return false;
    }
    const ScreenshotProgram::State theirs = program.undone(reading.state, entry.before, entry.after);
    if (theirs != reading.state && !program.write(theirs)) {
        log_.write("cannot write the settings of " + program.name());
        return false;
    }
    program.tidy();
    return true;
}

void ProgramTakeover::redirect(const std::string& folder) {
    if (!readJournal()) {
        return;
    }
    for (const auto& program : programs_) {
        if (!program->isInstalled()) {
            continue;
        }
        if (const auto entry = entryOf(program->name())) {
            const ScreenshotProgram::Reading now = program->read();
            if (now.readable && now.state == entry->after && program->redirected(now.state, folder) == now.state) {
                continue;
            }
            // Changed meanwhile: what isn't ours is the user's own from now on.
            if (!giveBack(*program, *entry)) {
                continue;
            }
        }
        const ScreenshotProgram::Reading reading = program->read();
        if (!reading.readable) {
            log_.write("cannot read the settings of " + program->name());
            continue;
        }
        const ScreenshotProgram::State after = program->redirected(reading.state, folder);
        if (after == reading.state) {
            continue;
        }
        PropertyDictionary entry;
        if (reading.state) {
            entry.emplace("before", bytesOf(*reading.state));
        }
        entry.emplace("after", bytesOf(after.value_or("")));
        journal_.insert_or_assign(program->name(), std::move(entry));
        if (!writeJournal()) {
            return;
        }
        if (!program->write(after)) {
            log_.write("cannot write the settings of " + program->name());
        }
    }
}

void ProgramTakeover::restore() {
    PrivateFile(journalPath_).tidy();
    if (!readJournal() || journal_.empty()) {
        return;
    }
    PropertyDictionary left = journal_;
    for (const auto& program : programs_) {
        const auto entry = entryOf(program->name());
        if (entry && giveBack(*program, *entry)) {
            left.erase(program->name());
        }
    }
    journal_ = std::move(left);
    writeJournal();
}

} // namespace rb
