#pragma once

#include "platform/Bytes.h"
#include "platform/Handle.h"
#include "platform/PromisedBytes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace rb {

// The types that every desktop knows; a desktop translates them into what its programs exchange.
namespace PasteboardType {
inline constexpr const char* String = "public.utf8-plain-text";
inline constexpr const char* Png = "public.png";
inline constexpr const char* Tiff = "public.tiff";
inline constexpr const char* FileUrl = "public.file-url";
// Marks what is not to be kept by anyone; a desktop gives it for its own programs' marks of that meaning too.
inline constexpr const char* Concealed = "org.nspasteboard.ConcealedType";
} // namespace PasteboardType

struct PasteboardData {
    std::string type; // one of PasteboardType
    SharedBytes bytes;
};
// Absolute paths.
struct PasteboardFiles {
    std::vector<std::string> paths;
};
// One file that is also a picture to programs that take pictures.
struct PasteboardPictureFile {
    std::string path; // absolute
    // Null for none. Others are offered the picture while it is being made, and whoever asks then waits for it; when it
    // can't be made they are refused, and it is offered no longer where the system allows that.
    std::shared_ptr<PromisedBytes> png;
};
// A text (UTF-8), one piece of data, files, or a file with its picture.
using PasteboardContents = std::variant<std::string, PasteboardData, PasteboardFiles, PasteboardPictureFile>;

// A place through which programs hand things to one another. Reading may have to ask another program, so answers come
// in a callback: at once, or later, and always within a time limit of the desktop's own; a dropped handle ends the
// reading. What is on the board can change while it is read: compare the change count. Main thread only.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    // Grows with every change of the contents, by whichever program.
    virtual std::int64_t changeCount() const = 0;
    // Told after the count has changed. An empty handle where the system doesn't tell: then ask from time to time.
    virtual Handle onChange(std::function<void()> changed) = 0;

    // Which of these types are offered now. None at all when the other program doesn't answer.
    virtual Handle offeredTypes(const std::vector<std::string>& types,
                                std::function<void(std::vector<std::string>)> answer) = 0;
    // Paths of the file URLs among what is offered, in its order; empty when there are none.
    virtual Handle readFiles(std::function<void(std::vector<std::string>)> answer) = 0;
    // The text as well-formed UTF-8; nothing when there is none or it has more than `mostBytes`.
    virtual Handle readString(std::size_t mostBytes, std::function<void(std::optional<std::string>)> answer) = 0;
    // The data of that type; null when there is none or it has more than `mostBytes`.
    virtual Handle readData(const std::string& type, std::size_t mostBytes,
                            std::function<void(SharedBytes)> answer) = 0;

    // Replaces what is there. False when the system refuses; the count has grown when this returns true.
    virtual bool write(PasteboardContents contents) = 0;
};

class Pasteboards {
public:
    virtual ~Pasteboards() = default;
    // What the user copies and pastes with.
    virtual Pasteboard& general() = 0;
};

} // namespace rb
