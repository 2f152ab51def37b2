#include "clothesline/FileNames.h"

#include "platform/Files.h"

namespace rb {

namespace {

bool isFree(const Files& files, const std::string& path) {
    const FileFacts facts = files.facts(path);
    return !facts.exists && !facts.isSymbolicLink;
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

std::optional<FileFailure>
placeUnderFreeName(const Files& files, const std::string& folder, const std::string& name,
                   const std::function<std::optional<FileFailure>(const std::string& target)>& place) {
    // Somebody who takes every name under our eyes doesn't keep us for ever.
    constexpr int mostAttempts = 20;
    std::optional<FileFailure> failure;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        failure = place(freePathIn(files, folder, name));
        if (!failure || !failure->targetExists) {
            break;
        }
    }
    return failure;
}

} // namespace rb
