#pragma once

#include "platform/Blob.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rb {

// Binary property lists whose data stay outside of memory: the library that reads and writes lists gets one in which
// each data object is but a mark with a number.

// The bytes of a mark.
std::string plistMark(std::uint64_t number);
// The number of a mark; more than any when it is none.
std::uint64_t numberOfMark(std::string_view bytes);

struct MarkedPlist {
    struct Range {
        std::uint64_t offset = 0;
        std::uint64_t size = 0;
    };
    std::string list;
    std::vector<Range> data; // by number, where they are in the file
    std::string fault = {};  // why there is no list
};
// Every data object of the file replaced by a mark. An object that can't be in the file becomes a truth value.
MarkedPlist withMarks(const ByteStore& file);

struct DividedPlist {
    // The list goes texts[0], data numbers[0], texts[1], … and ends with a text.
    std::vector<std::string> texts;
    std::vector<std::size_t> numbers;
};
// A list as withMarks() gives or the library writes, with room for data of these sizes in place of the marks.
DividedPlist withRoomForData(std::string_view list, const std::vector<std::uint64_t>& sizes);

} // namespace rb
