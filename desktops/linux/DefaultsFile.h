#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>

namespace rb {

class Log;

// The file of the user defaults: read whole, written whole and atomically. A file that isn't ours to read or to
// replace is left alone, and the settings then live in memory only; each such reason is logged once. Links are
// followed as long as what they lead to belongs to the user. Main thread only.
class DefaultsFile {
public:
    using Changes = std::map<std::string, std::optional<PropertyValue>>;

    // `name`: of the file in the folder.
    DefaultsFile(std::string folder, Log& log, std::string name = "defaults.json");

    // What is stored; empty when there is nothing or nothing readable. A file without valid content is set aside
    // under another name.
    PropertyDictionary load();
    // Stores `values`, which `changes` led to. When somebody else has changed the file since we last saw it, only the
    // changes go into what is there now. Returns the values that hold from now on.
    PropertyDictionary store(const PropertyDictionary& values, const Changes& changes);
    // Nothing that was to be stored so far is in memory only.
    bool isStored() const { return unsaved_.empty(); }

private:
    // Which file it was and in what state, to notice that somebody else wrote it.
    struct Version {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0;
        std::int64_t modified = 0; // nanoseconds
        friend bool operator==(const Version&, const Version&) = default;
    };
    struct Opened;
    struct Place;

    std::optional<Place> place(bool create);
    Opened read(const Place& place);
    bool setAside(const Place& place, const std::string& reason);
    bool write(const Place& place, const std::string& text);
    // Nothing is written from now on.
    void giveUp(const std::string& reason);
    void complain(const std::string& reason);

    std::string folder_;
    std::string name_;
    Log& log_;
    bool memoryOnly_ = false;
    std::string lastComplaint_;
    std::optional<Version> seen_;
    // Changes that couldn't be written so far.
    Changes unsaved_;
};

} // namespace rb
