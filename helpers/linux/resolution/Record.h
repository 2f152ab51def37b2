#pragma once

#include <optional>
#include <string>

// What a mode is taken back to, on the disk while a trial runs. Whoever holds the lock of a record is in charge of it:
// the helper during its trial, then whoever takes the mode back.
namespace rb {

// The folder of the records: this user's alone, made where it isn't there. Nothing when no safe one can be had.
std::optional<std::string> recordFolder();
// A name in the folder that no record has.
std::string newRecordPath(const std::string& folder);

// The record of a trial that runs in this process. Its end releases the lock and leaves the file.
class Record {
public:
    // Never through a link or over a file that is there; written to the disk when it returns. Nothing when it can't.
    static std::optional<Record> create(const std::string& path, const std::string& text);
    Record(Record&& other) noexcept;
    Record& operator=(Record&&) = delete;
    ~Record();

    // The mode needs no taking back any more.
    void remove() const;

private:
    Record(std::string path, int file);
    std::string path_;
    int file_;
};

// The text of a record: an arrangement with the X server that it belongs to.
std::string recordText(const std::string& arrangement);

enum class Restoring {
    Nothing, // there is no such record, or it was of another server and is gone
    Done,    // the mode is back and the record gone
    Failed,  // the server isn't there or refuses, or the file isn't ours; it stays
    Running, // a trial is in charge of it
};
// Connects to the X server and applies the record's arrangement. `waits` for whoever is in charge.
Restoring restoreRecord(const std::string& path, bool waits);

struct RestoringAll {
    int done = 0;
    int failed = 0;
    int running = 0;
};
RestoringAll restoreRecords(const std::string& folder);
// A newer arrangement was chosen: forgets the records of trials that are dead.
void forgetOldRecords(const std::string& folder);

} // namespace rb
