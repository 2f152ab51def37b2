#pragma once

#include "desktops/linux/ScreenshotPrograms.h"
#include "platform/PropertyList.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb {

class Log;

// Sends what other screenshot programs save into our folder and gives them their own settings back. What each program
// had and what it got is in a journal on the disk before the program's settings are touched, so a run that is killed
// at any moment loses nothing: giving back may be repeated by any later run. Main thread only.
class ProgramTakeover {
public:
    // `journal`: the path of the journal's file.
    ProgramTakeover(std::vector<std::unique_ptr<ScreenshotProgram>> programs, std::string journal, Log& log);

    // Programs that aren't installed or can't be read are left alone; doing it twice changes nothing.
    void redirect(const std::string& folder);
    void restore();

private:
    struct Entry {
        ScreenshotProgram::State before;
        ScreenshotProgram::State after;
    };

    bool readJournal();
    bool writeJournal();
    std::optional<Entry> entryOf(const std::string& program) const;
    // True when nothing of ours is left in the program's settings.
    bool giveBack(ScreenshotProgram& program, const Entry& entry);

    std::vector<std::unique_ptr<ScreenshotProgram>> programs_;
    std::string journalPath_;
    Log& log_;
    PropertyDictionary journal_;
};

} // namespace rb
