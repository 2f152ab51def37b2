#pragma once

#include "tests/clothesline/LineFixture.h"

#include <map>
#include <string>

namespace rb {

inline const std::string desktopFolder = "/Users/rb/Desktop";
inline const std::string picturesFolder = "/Users/rb/Pictures";

// A line on a virtual desktop whose user keeps screenshots in the Pictures folder and was asked about the takeover.
class CaptureTest : public LineTest {
protected:
    CaptureTest() {
        desktop.files().addFolder(picturesFolder);
        desktop.screenshotPreferences().store("location", picturesFolder);
        desktop.userDefaults().setObject("ClotheslineInboxOffered", true);
    }
    ~CaptureTest() override { line.reset(); }

    void start() {
        line->start();
        desktop.advance(0.1);
    }
    std::string inboxFolder() { return desktop.screenshotPreferences().ownFolder(); }
    // The system stores a capture.
    void capture(const std::string& path, Size size = {400, 300}) {
        desktop.files().addImage(path, size);
        desktop.folderWatches().put(path);
    }
    // With the rectangle it was taken from, counted from the top left.
    void captureFrom(const std::string& path, double x, double y, double width, double height) {
        desktop.captureFacts().setRectangle(path, PropertyArray{x, y, width, height});
        capture(path);
    }
    std::multiset<std::string> watched() { return desktop.folderWatches().watched(); }
};

} // namespace rb
