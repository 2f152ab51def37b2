#include "clothesline/FileNames.h"

#include "platform/Files.h"

#include <memory>
#include <utility>

namespace rb {

namespace {

bool isFree(const Files& files, const std::string& path) {
    const FileFacts facts = files.facts(path);
    return !facts.exists && !facts.isSymbolicLink;
}

// Under way until a name was had.
struct Placing {
    const Files& files;
    std::string folder;
    std::string name;
    std::function<void(const std::string& target, FileOperations::Done placed)> place;
    FileOperations::Done done;
    int attempts = 0;
};

void tryNextName(const std::shared_ptr<Placing>& placing) {
    // Somebody who takes every name under our eyes doesn't keep us for ever.
    constexpr int mostAttempts = 20;
    placing->place(freePathIn(placing->files, placing->folder, placing->name),
                   [placing](const std::optional<FileFailure>& failure) {
                       if (failure && failure->targetExists && ++placing->attempts < mostAttempts) {
                           tryNextName(placing);
                       } else {
                           placing->done(failure);
                       }
                   });
}

} // namespace

std::string freePathIn(const Files& files, const std::string& folder, const std::string& name) {
    const std::size_t dot = name.rfind('.');
    // A leading dot hides a file, a last one ends its name.
    const bool hasExtension = dot != std::string::npos && dot > 0 && dot + 1 < name.size();
    const std::string stem = hasExtension ? name.substr(0, dot) : name;
    const std::string extension = hasExtension ? name.substr(dot) : "";
    std::string path = appendingPathComponent(folder, name);
    for (std::size_t counter = 2; !isFree(files, path); ++counter) {
        std::string numbered = stem;
        numbered.append(" ").append(std::to_string(counter)).append(extension);
        path = appendingPathComponent(folder, numbered);
    }
    return path;
}

void placeUnderFreeName(const Files& files, const std::string& folder, const std::string& name,
                        std::function<void(const std::string& target, FileOperations::Done placed)> place,
                        FileOperations::Done done) {
    tryNextName(std::make_shared<Placing>(Placing{files, folder, name, std::move(place), std::move(done)}));
}

} // namespace rb
