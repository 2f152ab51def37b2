#include "clothesline/FileTransit.h"

#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"

#include <utility>

namespace rb {

bool FileTransit::send(const std::string& path, const std::function<void(FileOperations::Done)>& begin,
                       FileOperations::Done done) {
    const RBPegItemRef card = line_.itemForPath(path);
    if (card && card->inTransit) {
        return false;
    }
    if (card) {
        card->inTransit = true;
    }
    begin(lifetime_.guard(
        [weak = std::weak_ptr<RBPegItem>(card), done = std::move(done)](const std::optional<FileFailure>& failure) {
            if (const RBPegItemRef waiting = weak.lock()) {
                setItemInTransit(*waiting, false);
            }
            done(failure);
        }));
    if (card && card->inTransit) {
        setItemInTransit(*card, true);
    }
    return true;
}

} // namespace rb
