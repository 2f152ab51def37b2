#pragma once

#include <string>

namespace rb {

// A process of its own that takes the mode back from the record on disk when the helper ends without having done so,
// or hangs. It ends with the helper.
class Guardian {
public:
    // Forks; nothing may be connected yet that can't be shared. Check started() before relying on it.
    explicit Guardian(std::string record);
    Guardian(const Guardian&) = delete;
    Guardian& operator=(const Guardian&) = delete;
    // The record is dealt with; the guardian goes.
    ~Guardian();

    bool started() const { return pipe_ >= 0; }
    const std::string& record() const { return record_; }
    // Writes the record, for this user alone and never through a link. False when it can't.
    bool writeRecord(const std::string& text) const;
    void removeRecord() const;

private:
    [[noreturn]] void watch(int pipe) const;

    std::string record_;
    int pipe_ = -1;
};

// A connection to the X server is opened, the record's arrangement applied, the record removed. False when the server
// refuses or isn't there; true when there is no record.
bool restoreRecord(const std::string& record);
// The folder of the records.
std::string recordFolder();
inline constexpr const char* recordPrefix = "rookbay-resolution-";

} // namespace rb
