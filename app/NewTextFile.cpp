#include "app/NewTextFile.h"

#include "platform/Log.h"

namespace rb {

void NewTextFile::newTextFile() {
    desktop_.log.write("new text files are not built yet");
}

} // namespace rb
