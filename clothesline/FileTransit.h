#pragma once

#include "clothesline/PegItem.h"
#include "platform/FileOperations.h"
#include "platform/Handle.h"

#include <functional>
#include <string>

namespace rb {

class RBClothesline;

// Files on their way from the line to another place, which may take a while. A file's card waits for it, dim, and stays
// until the file has arrived; meanwhile nothing else is done with the file.
class FileTransit {
public:
    explicit FileTransit(RBClothesline& line)
        : line_(line) {}

    // Has `begin` start the change, whose end is told to `done` unless the line has gone by then. False, with nothing
    // begun, for a file that is on its way already.
    bool send(const std::string& path, const std::function<void(FileOperations::Done)>& begin,
              FileOperations::Done done);

private:
    RBClothesline& line_;
    Lifetime lifetime_;
};

} // namespace rb
